#include "frame/module/library.h"

#include <vector>

#include "platform/system_errors.h"

// The linker places this symbol at the module's start, which is what its instance handle points to.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace velk::library {
namespace {

ITypeLib* own = nullptr;
ITypeLib* foreign = nullptr;

// Kept for the module's life: loading costs a file mapping, and late-bound clients ask for it at each new interface.
ITypeLib* Load(ITypeLib** kept, const wchar_t* resource) {
    ThrowIfFailed(LoadTypeLibEx((FilePath() + resource).c_str(), REGKIND_NONE, kept));
    return *kept;
}

ITypeLib* ForeignTypeLibrary() {
    static ITypeLib* const loaded = Load(&foreign, L"\\2");
    return loaded;
}

}  // namespace

HINSTANCE Module() noexcept { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

std::wstring FilePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(Module(), path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) throw FromSystemError(GetLastError());
        if (length < path.size()) return path.substr(0, length);
        path.resize(path.size() * 2);
    }
}

std::wstring FileBaseName() {
    const std::wstring path = FilePath();
    const std::size_t name = path.find_last_of(L"\\/") + 1;
    return path.substr(name, path.rfind(L'.') - name);
}

std::span<const std::byte> Resource(WORD number, const wchar_t* kind) noexcept {
    const HRSRC found = FindResourceW(Module(), MAKEINTRESOURCEW(number), kind);
    if (!found) return {};
    return {static_cast<const std::byte*>(LockResource(LoadResource(Module(), found))),
            SizeofResource(Module(), found)};
}

ComPtr<ITypeLib> TypeLibrary() {
    static ITypeLib* const loaded = Load(&own, L"");
    return ComPtr<ITypeLib>(loaded);
}

void ReleaseTypeLibraries() noexcept {
    // By hand on purpose: a destructor would also run when the process ends, where nothing may be released any more.
    for (ITypeLib* const kept : {own, foreign}) {
        if (kept) kept->Release();
    }
}

ComPtr<ITypeInfo> TypeInfo(REFGUID guid) {
    ComPtr<ITypeInfo> info;
    HRESULT found = TypeLibrary()->GetTypeInfoOfGuid(guid, info.Receive());
    if (found == TYPE_E_ELEMENTNOTFOUND) found = ForeignTypeLibrary()->GetTypeInfoOfGuid(guid, info.Receive());
    ThrowIfFailed(found);
    return info;
}

}  // namespace velk::library
