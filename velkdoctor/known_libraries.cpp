#include "velkdoctor/known_libraries.h"

#include "frame/module/library.h"
#include "shipped.h"
#include "tools/typelib/type_reader.h"

namespace velk {
namespace {

Version ParsedVersion(const wchar_t* text) {
    Version version = 0;
    for (int part = 0; part < 4; ++part) {
        wchar_t* end = nullptr;
        version = version << 16 | wcstoul(text, &end, 10);
        text = *end ? end + 1 : end;
    }
    return version;
}

bool IsCreatable(const Type& type) {
    const auto attributes = AttributesOf(type);
    return attributes->typekind == TKIND_COCLASS && (attributes->wTypeFlags & TYPEFLAG_FCANCREATE);
}

std::vector<IID> InterfacesOf(const Type& type) {
    std::vector<IID> interfaces;
    for (UINT i = 0; i < AttributesOf(type)->cImplTypes; ++i)
        interfaces.push_back(AttributesOf(Implemented(type, i))->guid);
    return interfaces;
}

KnownLibrary Read(const Shipped& shipped, int resource) {
    const TypeLib types = LoadTypes((library::FilePath() + L"\\" + std::to_wstring(resource)).c_str());
    const auto attributes = AttributesOf(types);
    KnownLibrary known{DocumentationOf(types, -1).name,
                       shipped.file,
                       ParsedVersion(shipped.version),
                       attributes->guid,
                       attributes->wMajorVerNum,
                       attributes->wMinorVerNum,
                       {}};
    for (const Type& type : TypesOf(types)) {
        if (!IsCreatable(type)) continue;
        const std::wstring name = NameOf(type);
        known.classes.push_back({name, known.name + L"." + name, AttributesOf(type)->guid, InterfacesOf(type)});
    }
    return known;
}

}  // namespace

std::vector<KnownLibrary> KnownLibraries() {
    std::vector<KnownLibrary> libraries;
    for (const Shipped& shipped : kShipped) {
        libraries.push_back(Read(shipped, static_cast<int>(libraries.size()) + 1));
    }
    return libraries;
}

std::wstring OwnFolder() {
    const std::wstring path = library::FilePath();
    return path.substr(0, path.rfind(L'\\') + 1);
}

}  // namespace velk
