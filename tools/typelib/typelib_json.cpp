// Writes a type library as JSON, help texts included, for the reference: typelib_json LIBRARY OUTPUT.
#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "tools/typelib/failed.h"
#include "tools/typelib/text_file.h"
#include "tools/typelib/type_text.h"

namespace {

using namespace velk;

std::wstring Quoted(const std::wstring& text) {
    std::wstring quoted = L"\"";
    for (const wchar_t c : text) {
        if (c == L'"' || c == L'\\') quoted += L'\\';
        if (c >= L' ') {
            quoted += c;
        } else {
            wchar_t escape[7];
            std::swprintf(escape, std::size(escape), L"\\u%04x", static_cast<unsigned>(c));
            quoted += escape;
        }
    }
    return quoted + L"\"";
}

std::wstring Number(long value) { return std::to_wstring(value); }

std::wstring Field(const wchar_t* name, const std::wstring& json) { return Quoted(name) + L": " + json; }

std::wstring Joined(const std::vector<std::wstring>& items, const wchar_t* separator) {
    std::wstring text;
    for (const std::wstring& item : items) text += (text.empty() ? L"" : separator) + item;
    return text;
}

std::wstring List(const std::vector<std::wstring>& items) { return L"[" + Joined(items, L",\n") + L"]"; }
std::wstring Object(const std::vector<std::wstring>& fields) { return L"{" + Joined(fields, L", ") + L"}"; }

std::vector<std::wstring> Described(const std::wstring& name, const std::wstring& help, DWORD context) {
    return {Field(L"name", Quoted(name)), Field(L"help", Quoted(help)), Field(L"context", Number(context))};
}

template <class Source>
std::vector<std::wstring> DocumentationFields(const ComPtr<Source>& source, LONG id) {
    Bstr name, help;
    DWORD context = 0;
    ThrowIfFailed(source->GetDocumentation(id, name.Receive(), help.Receive(), &context, nullptr));
    return Described(std::wstring(View(name.get())), std::wstring(View(help.get())), context);
}

std::wstring ParameterObject(const Type& type, const ELEMDESC& parameter, const std::wstring& name) {
    const PARAMDESC& description = parameter.paramdesc;
    std::vector<std::wstring> fields = {Field(L"name", Quoted(name)),
                                        Field(L"type", Quoted(TypeText(type, parameter.tdesc))),
                                        Field(L"flags", Quoted(FlagsText(kParameterFlags, description.wParamFlags)))};
    if (description.wParamFlags & PARAMFLAG_FHASDEFAULT) {
        fields.push_back(Field(L"default", Quoted(ValueText(description.pparamdescex->varDefaultValue))));
    }
    return Object(fields);
}

std::wstring FunctionObject(const Type& type, const FUNCDESC& function) {
    std::vector<std::wstring> fields = DocumentationFields(type, function.memid);
    const std::vector<std::wstring> names = NamesOf(type, function);
    std::vector<std::wstring> parameters;
    for (SHORT i = 0; i < function.cParams; ++i) {
        parameters.push_back(ParameterObject(type, function.lprgelemdescParam[i], names[i + 1]));
    }
    fields.push_back(Field(L"id", Number(function.memid)));
    fields.push_back(Field(L"kind", Quoted(TextOf(kInvokeKinds, function.invkind))));
    if (function.funckind != FUNC_DISPATCH) {
        fields.push_back(Field(L"slot", Number(function.oVft / static_cast<long>(sizeof(void*)))));
    }
    fields.push_back(Field(L"parameters", List(parameters)));
    return Object(fields);
}

std::wstring VariableObject(const Type& type, const VARDESC& variable) {
    std::vector<std::wstring> fields = DocumentationFields(type, variable.memid);
    if (variable.varkind == VAR_CONST) fields.push_back(Field(L"value", ValueText(*variable.lpvarValue)));
    return Object(fields);
}

std::wstring ImplementedObject(const Type& type, UINT index) {
    INT flags = 0;
    ThrowIfFailed(type->GetImplTypeFlags(index, &flags));
    return Object({Field(L"name", Quoted(NameOf(Implemented(type, index)))),
                   Field(L"flags", Quoted(FlagsText(kImplementFlags, flags)))});
}

std::wstring TypeObject(const Type& named) {
    const auto described = AttributesOf(named);
    const Type type = OwnMembers(named);
    const auto attributes = AttributesOf(type);
    std::vector<std::wstring> implemented, constants, members;
    for (UINT i = 0; i < attributes->cImplTypes; ++i) implemented.push_back(ImplementedObject(type, i));
    for (UINT i = 0; i < attributes->cVars; ++i) constants.push_back(VariableObject(type, *VariableOf(type, i)));
    for (UINT i = 0; i < attributes->cFuncs; ++i) members.push_back(FunctionObject(type, *FunctionOf(type, i)));
    std::vector<std::wstring> fields = DocumentationFields(named, MEMBERID_NIL);
    fields.push_back(Field(L"kind", Quoted(TextOf(kKinds, described->typekind))));
    fields.push_back(Field(L"guid", Quoted(GuidText(described->guid))));
    fields.push_back(Field(L"implements", List(implemented)));
    fields.push_back(Field(L"constants", List(constants)));
    fields.push_back(Field(L"members", List(members)));
    return Object(fields);
}

std::wstring LibraryObject(const TypeLib& library) {
    const auto attributes = AttributesOf(library);
    std::vector<std::wstring> types;
    for (const Type& type : TypesOf(library)) types.push_back(TypeObject(type));
    std::vector<std::wstring> fields = DocumentationFields(library, -1);
    fields.push_back(Field(L"guid", Quoted(GuidText(attributes->guid))));
    fields.push_back(Field(L"version", Quoted(std::to_wstring(attributes->wMajorVerNum) + L"." +
                                              std::to_wstring(attributes->wMinorVerNum))));
    fields.push_back(Field(L"types", List(types)));
    return Object(fields) + L"\n";
}

}  // namespace

int main(int count, char** arguments) try {
    if (count != 3) return std::puts("usage: typelib_json LIBRARY OUTPUT"), 2;
    const std::wstring path(arguments[1], arguments[1] + std::char_traits<char>::length(arguments[1]));
    return velk::WriteUtf8(arguments[2], LibraryObject(LoadTypes(path.c_str()))) ? 0 : 1;
} catch (...) {
    return velk::Failed("typelib_json");
}
