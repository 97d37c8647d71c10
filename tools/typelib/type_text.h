// Types, values and flags of a type library in words.
#pragma once

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "platform/variant.h"
#include "tools/typelib/type_reader.h"

namespace velk {

struct NamedValue {
    int value;
    const wchar_t* text;
};

inline constexpr NamedValue kTypes[] = {
    {VT_I2, L"SHORT"},        {VT_I4, L"LONG"},           {VT_R4, L"FLOAT"},        {VT_R8, L"DOUBLE"},
    {VT_CY, L"CURRENCY"},     {VT_DATE, L"DATE"},         {VT_BSTR, L"BSTR"},       {VT_DISPATCH, L"IDispatch*"},
    {VT_ERROR, L"SCODE"},     {VT_BOOL, L"VARIANT_BOOL"}, {VT_VARIANT, L"VARIANT"}, {VT_UNKNOWN, L"IUnknown*"},
    {VT_UI1, L"BYTE"},        {VT_INT, L"INT"},           {VT_UINT, L"UINT"},       {VT_VOID, L"void"},
    {VT_HRESULT, L"HRESULT"}, {VT_I8, L"LONGLONG"},
};

inline constexpr NamedValue kKinds[] = {
    {TKIND_ENUM, L"enum"},           {TKIND_RECORD, L"struct"},     {TKIND_MODULE, L"module"},
    {TKIND_INTERFACE, L"interface"}, {TKIND_DISPATCH, L"dispatch"}, {TKIND_COCLASS, L"coclass"},
    {TKIND_ALIAS, L"alias"},         {TKIND_UNION, L"union"},
};

inline constexpr NamedValue kTypeFlags[] = {
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

inline constexpr NamedValue kImplementFlags[] = {
    {IMPLTYPEFLAG_FDEFAULT, L"default"}, {IMPLTYPEFLAG_FSOURCE, L"source"}, {IMPLTYPEFLAG_FRESTRICTED, L"restricted"}};

inline constexpr NamedValue kParameterFlags[] = {
    {PARAMFLAG_FIN, L"in"}, {PARAMFLAG_FOUT, L"out"}, {PARAMFLAG_FOPT, L"optional"}, {PARAMFLAG_FRETVAL, L"retval"}};

inline constexpr NamedValue kInvokeKinds[] = {{INVOKE_FUNC, L"method"},
                                              {INVOKE_PROPERTYGET, L"get"},
                                              {INVOKE_PROPERTYPUT, L"let"},
                                              {INVOKE_PROPERTYPUTREF, L"set"}};

template <std::size_t Size>
std::wstring TextOf(const NamedValue (&names)[Size], int value) {
    const auto* found =
        std::find_if(names, names + Size, [value](const NamedValue& name) { return name.value == value; });
    return found == names + Size ? L"?" + std::to_wstring(value) : found->text;
}

template <std::size_t Size>
std::wstring FlagsText(const NamedValue (&names)[Size], int flags) {
    std::wstring text;
    for (const NamedValue& name : names) {
        if (flags & name.value) text += (text.empty() ? L"" : L", ") + std::wstring(name.text);
    }
    return text;
}

inline std::wstring TypeText(const Type& type, const TYPEDESC& description) {
    if (description.vt == VT_PTR) return TypeText(type, *description.lptdesc) + L"*";
    if (description.vt == VT_SAFEARRAY) return L"SAFEARRAY(" + TypeText(type, *description.lptdesc) + L")";
    if (description.vt != VT_USERDEFINED) return TextOf(kTypes, description.vt);
    Type named;
    ThrowIfFailed(type->GetRefTypeInfo(description.hreftype, named.Receive()));
    return NameOf(named);
}

inline std::wstring ValueText(VARIANT& value) {
    Variant text;
    ThrowIfFailed(VariantChangeTypeEx(&text, &value, LOCALE_INVARIANT, 0, VT_BSTR));
    const std::wstring quote = value.vt == VT_BSTR ? L"\"" : L"";
    return quote + std::wstring(View(text.bstrVal)) + quote;
}

// The member's name and its parameters'. The new value of a let has none: clients never name it.
inline std::vector<std::wstring> NamesOf(const Type& type, const FUNCDESC& function) {
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

}  // namespace velk
