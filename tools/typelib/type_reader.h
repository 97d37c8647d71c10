// Reads a type library. The platform's description records give themselves back when they leave their scope.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frame/failure/failure.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/text.h"

namespace velk {

using TypeLib = ComPtr<ITypeLib>;
using Type = ComPtr<ITypeInfo>;

template <class T>
using Record = std::unique_ptr<T, std::function<void(T*)>>;

inline Record<TLIBATTR> AttributesOf(const TypeLib& library) {
    TLIBATTR* record = nullptr;
    ThrowIfFailed(library->GetLibAttr(&record));
    return {record, [library](TLIBATTR* given) { library->ReleaseTLibAttr(given); }};
}

inline Record<TYPEATTR> AttributesOf(const Type& type) {
    TYPEATTR* record = nullptr;
    ThrowIfFailed(type->GetTypeAttr(&record));
    return {record, [type](TYPEATTR* given) { type->ReleaseTypeAttr(given); }};
}

inline Record<FUNCDESC> FunctionOf(const Type& type, UINT index) {
    FUNCDESC* record = nullptr;
    ThrowIfFailed(type->GetFuncDesc(index, &record));
    return {record, [type](FUNCDESC* given) { type->ReleaseFuncDesc(given); }};
}

inline Record<VARDESC> VariableOf(const Type& type, UINT index) {
    VARDESC* record = nullptr;
    ThrowIfFailed(type->GetVarDesc(index, &record));
    return {record, [type](VARDESC* given) { type->ReleaseVarDesc(given); }};
}

struct Documentation {
    std::wstring name;
    std::wstring help;
};

// Of a type's member, or with MEMBERID_NIL of the type; of a library's type by index, or with -1 of the library.
template <class Source>
Documentation DocumentationOf(const ComPtr<Source>& source, LONG id) {
    Bstr name, help;
    ThrowIfFailed(source->GetDocumentation(id, name.Receive(), help.Receive(), nullptr, nullptr));
    return {std::wstring(View(name.get())), std::wstring(View(help.get()))};
}

inline std::wstring NameOf(const Type& type) { return DocumentationOf(type, MEMBERID_NIL).name; }

inline TypeLib LoadTypes(const wchar_t* path) {
    TypeLib library;
    ThrowIfFailed(LoadTypeLibEx(path, REGKIND_NONE, library.Receive()));
    return library;
}

inline std::vector<Type> TypesOf(const TypeLib& library) {
    std::vector<Type> types(library->GetTypeInfoCount());
    for (UINT i = 0; i < types.size(); ++i) ThrowIfFailed(library->GetTypeInfo(i, types[i].Receive()));
    return types;
}

inline std::vector<Type> ClassesOf(const TypeLib& library) {
    std::vector<Type> classes = TypesOf(library);
    std::erase_if(classes, [](const Type& type) { return AttributesOf(type)->typekind != TKIND_COCLASS; });
    return classes;
}

// The type that another one names: an interface of a coclass by index, or with -1 the vtable face of a dual interface.
inline Type Implemented(const Type& type, UINT index) {
    HREFTYPE reference = 0;
    Type named;
    ThrowIfFailed(type->GetRefTypeOfImplType(index, &reference));
    ThrowIfFailed(type->GetRefTypeInfo(reference, named.Receive()));
    return named;
}

// The type with its own members only: a dual interface's dispatch face would also show those it inherits.
inline Type OwnMembers(const Type& type) {
    const auto attributes = AttributesOf(type);
    const bool dual = attributes->typekind == TKIND_DISPATCH && (attributes->wTypeFlags & TYPEFLAG_FDUAL);
    return dual ? Implemented(type, static_cast<UINT>(-1)) : type;
}

inline std::wstring GuidText(REFGUID guid) {
    wchar_t text[39];
    StringFromGUID2(guid, text, ARRAYSIZE(text));
    return text;
}

}  // namespace velk
