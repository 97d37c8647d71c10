// Writes what a type library promises to its clients as a text that only changes when the promise does:
// dump_typelib LIBRARY OUTPUT. Help texts are left out; they may change at any time.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

#include "frame/variant.h"
#include "tools/text_file.h"
#include "tools/type_reader.h"

namespace {

using namespace velk;

struct Name {
    int value;
    const wchar_t* text;
};

constexpr Name kTypes[] = {
    {VT_I2, L"SHORT"},        {VT_I4, L"LONG"},           {VT_R4, L"FLOAT"},        {VT_R8, L"DOUBLE"},
    {VT_CY, L"CURRENCY"},     {VT_DATE, L"DATE"},         {VT_BSTR, L"BSTR"},       {VT_DISPATCH, L"IDispatch*"},
    {VT_ERROR, L"SCODE"},     {VT_BOOL, L"VARIANT_BOOL"}, {VT_VARIANT, L"VARIANT"}, {VT_UNKNOWN, L"IUnknown*"},
    {VT_UI1, L"BYTE"},        {VT_INT, L"INT"},           {VT_UINT, L"UINT"},       {VT_VOID, L"void"},
    {VT_HRESULT, L"HRESULT"},
};

constexpr Name kKinds[] = {
    {TKIND_ENUM, L"enum"},           {TKIND_RECORD, L"struct"},     {TKIND_MODULE, L"module"},
    {TKIND_INTERFACE, L"interface"}, {TKIND_DISPATCH, L"dispatch"}, {TKIND_COCLASS, L"coclass"},
    {TKIND_ALIAS, L"alias"},         {TKIND_UNION, L"union"},
};

constexpr Name kTypeFlags[] = {
    {TYPEFLAG_FAPPOBJECT, L"appobject"},
    {TYPEFLAG_FCANCREATE, L"creatable"},
    {TYPEFLAG_FLICENSED, L"licensed"},
    {TYPEFLAG_FPREDECLID, L"predeclared"},
    {TYPEFLAG_FHIDDEN, L"hidden"},
    {TYPEFLAG_FCONTROL, L"control"},
    {TYPEFLAG_FDUAL, L"dual"},
    {TYPEFLAG_FNONEXTENSIBLE, L"nonextensible"},
    {TYPEFLAG_FOLEAUTOMATION, L"oleautomation"},
    {TYPEFLAG_FRESTRICTED, L"restricted"},
    {TYPEFLAG_FAGGREGATABLE, L"aggregatable"},
};

constexpr Name kImplementFlags[] = {
    {IMPLTYPEFLAG_FDEFAULT, L"default"}, {IMPLTYPEFLAG_FSOURCE, L"source"}, {IMPLTYPEFLAG_FRESTRICTED, L"restricted"}};

constexpr Name kParameterFlags[] = {
    {PARAMFLAG_FIN, L"in"}, {PARAMFLAG_FOUT, L"out"}, {PARAMFLAG_FOPT, L"optional"}, {PARAMFLAG_FRETVAL, L"retval"}};

constexpr Name kInvokeKinds[] = {{INVOKE_FUNC, L"method"},
                                 {INVOKE_PROPERTYGET, L"get"},
                                 {INVOKE_PROPERTYPUT, L"let"},
                                 {INVOKE_PROPERTYPUTREF, L"set"}};

template <std::size_t Size>
std::wstring TextOf(const Name (&names)[Size], int value) {
    const auto* found = std::find_if(names, names + Size, [value](const Name& name) { return name.value == value; });
    return found == names + Size ? L"?" + std::to_wstring(value) : found->text;
}

template <std::size_t Size>
std::wstring FlagsText(const Name (&names)[Size], int flags) {
    std::wstring text;
    for (const Name& name : names) {
        if (flags & name.value) text += (text.empty() ? L"" : L", ") + std::wstring(name.text);
    }
    return text;
}

std::wstring TypeText(const Type& type, const TYPEDESC& description) {
    if (description.vt == VT_PTR) return TypeText(type, *description.lptdesc) + L"*";
    if (description.vt == VT_SAFEARRAY) return L"SAFEARRAY(" + TypeText(type, *description.lptdesc) + L")";
    if (description.vt != VT_USERDEFINED) return TextOf(kTypes, description.vt);
    Type named;
    ThrowIfFailed(type->GetRefTypeInfo(description.hreftype, named.Receive()));
    return NameOf(named);
}

std::wstring ValueText(VARIANT& value) {
    Variant text;
    ThrowIfFailed(VariantChangeTypeEx(&text, &value, LOCALE_INVARIANT, 0, VT_BSTR));
    const std::wstring quote = value.vt == VT_BSTR ? L"\"" : L"";
    return quote + std::wstring(View(text.bstrVal)) + quote;
}

std::wstring ParameterText(const Type& type, const ELEMDESC& parameter, const std::wstring& name) {
    const PARAMDESC& description = parameter.paramdesc;
    std::wstring text = L"[" + FlagsText(kParameterFlags, description.wParamFlags) + L"] " +
                        TypeText(type, parameter.tdesc) + (name.empty() ? L"" : L" ") + name;
    if (description.wParamFlags & PARAMFLAG_FHASDEFAULT) {
        text += L" = " + ValueText(description.pparamdescex->varDefaultValue);
    }
    return text;
}

// The member's name and its parameters'. The new value of a let has none: clients never name it.
std::vector<std::wstring> NamesOf(const Type& type, const FUNCDESC& function) {
    std::vector<BSTR> raw(static_cast<std::size_t>(function.cParams) + 1);
    UINT count = 0;
    ThrowIfFailed(type->GetNames(function.memid, raw.data(), static_cast<UINT>(raw.size()), &count));
    std::vector<std::wstring> names;
    for (const BSTR name : raw) {
        names.emplace_back(View(name));
        SysFreeString(name);
    }
    if (function.invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) names.back().clear();
    return names;
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
    std::printf("dump_typelib: %ls\n", velk::CaughtFailure().description.c_str());
    return 1;
}
