#include "trust/members.h"

#include <gtest/gtest.h>

#include <set>

#include "support/client.h"
#include "tools/type_reader.h"

namespace velk::test {
namespace {

// "CClass.Member" of what cannot be called here, each with the reason.
const std::set<std::wstring> kLeftOut{};

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
    Member member{DocumentationOf(type, function.memid).name, function.memid, static_cast<WORD>(function.invkind), {}};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        if (parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) continue;
        member.parameters.push_back(Resolve(type, parameter.tdesc));
    }
    return member;
}

template <class Function>
Function Exported(HMODULE library, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace

ComPtr<IDispatch> Class::MakeObject() const {
    ComPtr<IClassFactory> factory;
    ComPtr<IDispatch> object;
    Exported<decltype(&DllGetClassObject)>(library, "DllGetClassObject")(clsid, IID_IClassFactory,
                                                                         factory.ReceiveVoid());
    EXPECT_TRUE(factory && factory->CreateInstance(nullptr, IID_IDispatch, object.ReceiveVoid()) == S_OK);
    return object;
}

HMODULE LoadBuilt(const wchar_t* library) { return LoadLibraryW(BuiltFile(library).c_str()); }

bool CanUnload(HMODULE library) { return Exported<decltype(&DllCanUnloadNow)>(library, "DllCanUnloadNow")() == S_OK; }

std::vector<Class> ReadClasses(const wchar_t* library) {
    std::vector<Class> classes;
    for (const Type& coclass : TypesOf(LoadTypes(BuiltFile(library).c_str()))) {
        if (AttributesOf(coclass)->typekind != TKIND_COCLASS) continue;
        Class read{NameOf(coclass), AttributesOf(coclass)->guid, LoadBuilt(library), {}};
        const Type face = OwnMembers(Implemented(coclass, 0));
        for (UINT i = 0; i < AttributesOf(face)->cFuncs; ++i) {
            Member member = ReadMember(face, *FunctionOf(face, i));
            if (!kLeftOut.count(read.name + L"." + member.name)) read.members.push_back(std::move(member));
        }
        classes.push_back(std::move(read));
    }
    return classes;
}

}  // namespace velk::test
