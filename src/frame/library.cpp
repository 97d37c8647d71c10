#include "frame/library.h"

#include <vector>

#include "frame/failure.h"

// The linker places this symbol at the module's start, which is what its instance handle points to.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace velk::library {
namespace {

ITypeLib* kept = nullptr;

ITypeLib* LoadOwnTypeLibrary() {
    ThrowIfFailed(LoadTypeLibEx(FilePath().c_str(), REGKIND_NONE, &kept));
    return kept;
}

}  // namespace

HINSTANCE Module() noexcept { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

std::wstring FilePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(Module(), path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) return path.substr(0, length);
        path.resize(path.size() * 2);
    }
}

std::wstring FileBaseName() {
    const std::wstring path = FilePath();
    const std::size_t name = path.find_last_of(L"\\/") + 1;
    return path.substr(name, path.rfind(L'.') - name);
}

// Kept for the module's life: loading costs a file mapping, and late-bound clients ask for it at each new interface.
ComPtr<ITypeLib> TypeLibrary() {
    static ITypeLib* const loaded = LoadOwnTypeLibrary();
    return ComPtr<ITypeLib>(loaded);
}

void ReleaseTypeLibrary() noexcept {
    if (kept) kept->Release();
}

ComPtr<ITypeInfo> TypeInfo(REFGUID guid) {
    ComPtr<ITypeInfo> info;
    ThrowIfFailed(TypeLibrary()->GetTypeInfoOfGuid(guid, info.Receive()));
    return info;
}

}  // namespace velk::library
