// Writes what a type library promises to its clients as a text that only changes when the promise does:
// dump_typelib LIBRARY OUTPUT. Help texts are left out; they may change at any time.
#include <cstdio>
#include <string>

#include "tools/typelib/failed.h"
#include "tools/typelib/text_file.h"
#include "tools/typelib/type_text.h"

namespace {

using namespace velk;

std::wstring ParameterText(const Type& type, const ELEMDESC& parameter, const std::wstring& name) {
    const PARAMDESC& description = parameter.paramdesc;
    std::wstring text = L"[" + FlagsText(kParameterFlags, description.wParamFlags) + L"] " +
                        TypeText(type, parameter.tdesc) + (name.empty() ? L"" : L" ") + name;
    if (description.wParamFlags & PARAMFLAG_FHASDEFAULT) {
        text += L" = " + ValueText(description.pparamdescex->varDefaultValue);
    }
    return text;
}

std::wstring FunctionText(const Type& type, const FUNCDESC& function) {
    const std::vector<std::wstring> names = NamesOf(type, function);
    std::wstring text = L"    " + std::to_wstring(function.memid);
    if (function.funckind != FUNC_DISPATCH) text += L" slot " + std::to_wstring(function.oVft / sizeof(void*));
    text += L" " + TextOf(kInvokeKinds, function.invkind) + L" " + TypeText(type, function.elemdescFunc.tdesc) + L" " +
            names[0] + L"(";
    for (SHORT i = 0; i < function.cParams; ++i) {
        text += (i ? L", " : L"") + ParameterText(type, function.lprgelemdescParam[i], names[i + 1]);
    }
    text += L")";
    return function.wFuncFlags ? text + L" flags " + std::to_wstring(function.wFuncFlags) : text;
}

std::wstring VariableText(const Type& type, const VARDESC& variable) {
    const std::wstring name = L"    " + DocumentationOf(type, variable.memid).name;
    if (variable.varkind == VAR_CONST) return name + L" = " + ValueText(*variable.lpvarValue);
    return name + L" " + std::to_wstring(variable.memid) + L" " + TypeText(type, variable.elemdescVar.tdesc);
}

std::wstring ImplementedText(const Type& type, UINT index) {
    INT flags = 0;
    ThrowIfFailed(type->GetImplTypeFlags(index, &flags));
    const std::wstring names = FlagsText(kImplementFlags, flags);
    return L"    " + (names.empty() ? L"" : L"[" + names + L"] ") + NameOf(Implemented(type, index));
}

std::wstring TypeText(const Type& named) {
    const auto described = AttributesOf(named);
    std::wstring text = L"\n" + TextOf(kKinds, described->typekind) + L" " + NameOf(named);
    if (described->guid != GUID_NULL) text += L" " + GuidText(described->guid);
    const Type type = OwnMembers(named);
    const auto attributes = AttributesOf(type);
    text += L" [" + FlagsText(kTypeFlags, described->wTypeFlags | attributes->wTypeFlags) + L"]\n";
    for (UINT i = 0; i < attributes->cImplTypes; ++i) text += ImplementedText(type, i) + L"\n";
    for (UINT i = 0; i < attributes->cVars; ++i) text += VariableText(type, *VariableOf(type, i)) + L"\n";
    for (UINT i = 0; i < attributes->cFuncs; ++i) text += FunctionText(type, *FunctionOf(type, i)) + L"\n";
    return text;
}

std::wstring LibraryText(const TypeLib& library) {
    const auto attributes = AttributesOf(library);
    std::wstring text = L"library " + DocumentationOf(library, -1).name + L" " + GuidText(attributes->guid) +
                        L" version " + std::to_wstring(attributes->wMajorVerNum) + L"." +
                        std::to_wstring(attributes->wMinorVerNum) + L" locale " + std::to_wstring(attributes->lcid) +
                        L"\n";
    for (const Type& type : TypesOf(library)) text += TypeText(type);
    return text;
}

}  // namespace

int main(int count, char** arguments) try {
    if (count != 3) return std::puts("usage: dump_typelib LIBRARY OUTPUT"), 2;
    const std::wstring path(arguments[1], arguments[1] + std::char_traits<char>::length(arguments[1]));
    return velk::WriteUtf8(arguments[2], LibraryText(LoadTypes(path.c_str()))) ? 0 : 1;
} catch (...) {
    return velk::Failed("dump_typelib");
}
