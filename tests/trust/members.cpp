#include "trust/members.h"

#include <gtest/gtest.h>

#include <map>

#include "support/client.h"
#include "tools/typelib/type_reader.h"

namespace velk::test {
namespace {

Taken Resolve(const Type& type, const TYPEDESC& description) {
    if (description.vt == VT_PTR) {
        const Taken target = Resolve(type, *description.lptdesc);
        return {target.type, target.type != VT_DISPATCH || description.lptdesc->vt != VT_USERDEFINED};
    }
    if (description.vt == VT_SAFEARRAY) return {static_cast<VARTYPE>(VT_ARRAY | description.lptdesc->vt), false};
    if (description.vt != VT_USERDEFINED) return {description.vt, false};
    Type named;
    ThrowIfFailed(type->GetRefTypeInfo(description.hreftype, named.Receive()));
    const auto attributes = AttributesOf(named);
    if (attributes->typekind == TKIND_ALIAS) return Resolve(named, attributes->tdescAlias);
    return {static_cast<VARTYPE>(attributes->typekind == TKIND_ENUM ? VT_I4 : VT_DISPATCH), false};
}

Member ReadMember(const Type& type, const FUNCDESC& function) {
    Member member{DocumentationOf(type, function.memid).name,
                  function.memid,
                  static_cast<WORD>(function.invkind),
                  static_cast<ULONG_PTR>(function.oVft),
                  {},
                  {}};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const bool isPointer = parameter.tdesc.vt == VT_PTR || parameter.tdesc.vt == VT_SAFEARRAY;
        member.words.push_back(isPointer ? kPointer : Resolve(type, parameter.tdesc).type);
        if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) continue;
        member.parameters.push_back(Resolve(type, parameter.tdesc));
    }
    return member;
}

}  // namespace

ComPtr<IDispatch> Class::MakeObject() const {
    ComPtr<IClassFactory> factory;
    ComPtr<IDispatch> object;
    Export<decltype(&DllGetClassObject)>("DllGetClassObject", library)(clsid, IID_IClassFactory, factory.ReceiveVoid());
    EXPECT_TRUE(factory && factory->CreateInstance(nullptr, IID_IDispatch, object.ReceiveVoid()) == S_OK);
    return object;
}

HMODULE LoadBuilt(const wchar_t* library) { return LoadLibraryW(BuiltFile(library).c_str()); }

bool CanUnload(HMODULE library) { return Export<decltype(&DllCanUnloadNow)>("DllCanUnloadNow", library)() == S_OK; }

const std::vector<Class>& ReadClasses(const wchar_t* library) {
    static std::map<std::wstring, std::vector<Class>> read;
    std::vector<Class>& classes = read[library];
    if (!classes.empty()) return classes;
    for (const Type& coclass : TypesOf(LoadTypes(BuiltFile(library).c_str()))) {
        if (AttributesOf(coclass)->typekind != TKIND_COCLASS) continue;
        const Type face = OwnMembers(Implemented(coclass, 0));
        Class made{NameOf(coclass), AttributesOf(coclass)->guid, LoadBuilt(library), {}};
        for (UINT i = 0; i < AttributesOf(face)->cFuncs; ++i) {
            made.members.push_back(ReadMember(face, *FunctionOf(face, i)));
        }
        classes.push_back(std::move(made));
    }
    return classes;
}

}  // namespace velk::test
