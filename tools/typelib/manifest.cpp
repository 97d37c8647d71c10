// Writes the manifest with which a program uses a library without registration: manifest LIBRARY OUTPUT
//
// All of it is read from the library's file, which may be of the other width; the assembly is named after the output.
#include <cstdio>
#include <filesystem>
#include <string>

#include "tools/typelib/failed.h"
#include "tools/typelib/library_file.h"
#include "tools/typelib/text_file.h"
#include "tools/typelib/type_reader.h"

namespace {

using namespace velk;

// The automation marshalers for dual interfaces and for those that are reached through IDispatch alone.
constexpr const wchar_t* kTypeLibraryMarshaler = L"{00020424-0000-0000-C000-000000000046}";
constexpr const wchar_t* kDispatchMarshaler = L"{00020420-0000-0000-C000-000000000046}";

std::wstring Escaped(const std::wstring& text) {
    std::wstring escaped;
    for (const wchar_t c : text) {
        switch (c) {
            case L'&':
                escaped += L"&amp;";
                break;
            case L'<':
                escaped += L"&lt;";
                break;
            case L'"':
                escaped += L"&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::wstring Attribute(const wchar_t* name, const std::wstring& value) {
    return std::wstring(L" ") + name + L"=\"" + Escaped(value) + L'"';
}

std::wstring ComClass(const Type& type, const std::wstring& library, const std::wstring& tlbid) {
    const auto attributes = AttributesOf(type);
    if (attributes->typekind != TKIND_COCLASS || !(attributes->wTypeFlags & TYPEFLAG_FCANCREATE)) return {};
    return L"    <comClass" + Attribute(L"clsid", GuidText(attributes->guid)) +
           Attribute(L"threadingModel", L"Apartment") + Attribute(L"progid", library + L"." + NameOf(type)) +
           Attribute(L"tlbid", tlbid) + Attribute(L"description", DocumentationOf(type, MEMBERID_NIL).help) + L"/>\n";
}

// So that the interfaces can be marshalled between apartments.
std::wstring ProxyStub(const Type& type, const std::wstring& tlbid) {
    const auto attributes = AttributesOf(type);
    if (attributes->typekind != TKIND_DISPATCH) return {};
    const bool dual = (attributes->wTypeFlags & TYPEFLAG_FDUAL) != 0;
    return L"  <comInterfaceExternalProxyStub" + Attribute(L"name", NameOf(type)) +
           Attribute(L"iid", GuidText(attributes->guid)) + Attribute(L"tlbid", tlbid) +
           Attribute(L"proxyStubClsid32", dual ? kTypeLibraryMarshaler : kDispatchMarshaler) + L"/>\n";
}

std::wstring Manifest(const std::filesystem::path& path, const std::wstring& assembly) {
    const TypeLib types = LoadTypes(path.c_str());
    const auto attributes = AttributesOf(types);
    const std::wstring tlbid = GuidText(attributes->guid);
    const std::wstring name = DocumentationOf(types, -1).name;
    const bool narrow = Is32Bit(MachineOf(path).value());
    const std::wstring version =
        std::to_wstring(attributes->wMajorVerNum) + L"." + std::to_wstring(attributes->wMinorVerNum);
    std::wstring text =
        L"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        L"<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">\n"
        L"  <assemblyIdentity" +
        Attribute(L"type", L"win32") + Attribute(L"name", assembly) +
        Attribute(L"version", VersionText(VersionOf(path).value())) +
        Attribute(L"processorArchitecture", narrow ? L"x86" : L"amd64") + L"/>\n  <file" +
        Attribute(L"name", path.filename()) + L">\n";
    for (const Type& type : TypesOf(types)) text += ComClass(type, name, tlbid);
    text += L"    <typelib" + Attribute(L"tlbid", tlbid) + Attribute(L"version", version) + Attribute(L"helpdir", L"") +
            L"/>\n  </file>\n";
    for (const Type& type : TypesOf(types)) text += ProxyStub(type, tlbid);
    return text + L"</assembly>\n";
}

}  // namespace

int main(int count, char** arguments) try {
    if (count != 3) return std::puts("usage: manifest LIBRARY OUTPUT"), 2;
    return WriteUtf8(arguments[2], Manifest(arguments[1], std::filesystem::path(arguments[2]).stem())) ? 0 : 1;
} catch (...) {
    return velk::Failed("manifest");
}
