#include "support/import_patch.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "support/client.h"

namespace velk::test {
namespace {

template <class T>
T* At(HMODULE module, DWORD offset) {
    return reinterpret_cast<T*>(reinterpret_cast<std::byte*>(module) + offset);
}

const IMAGE_OPTIONAL_HEADER& HeaderOf(HMODULE module) {
    return At<IMAGE_NT_HEADERS>(module, At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew)->OptionalHeader;
}

void** FindSlot(HMODULE module, std::string_view function) {
    const auto& imports = HeaderOf(module).DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
    for (; imports.Size && library->Name; ++library) {
        const auto* name = At<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
        for (auto* slot = At<void*>(module, library->FirstThunk); name->u1.AddressOfData; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
            const auto* imported = At<IMAGE_IMPORT_BY_NAME>(module, static_cast<DWORD>(name->u1.AddressOfData));
            if (function == reinterpret_cast<const char*>(imported->Name)) return slot;
        }
    }
    return nullptr;
}

// What a module binds at its first use comes from the GetProcAddress that it imports: each name's place here is patched
// as an import's is. It stays in that import for good.
std::map<std::string, void*>& Late() {
    static std::map<std::string, void*> late;
    return late;
}
void* const kOfThePlatform = &Late();  // stands for what the platform finds

FARPROC WINAPI FindLate(HMODULE module, LPCSTR name) {
    const auto found = IS_INTRESOURCE(name) ? Late().end() : Late().find(name);
    const bool patched = found != Late().end() && found->second != kOfThePlatform;
    return patched ? reinterpret_cast<FARPROC>(found->second) : GetProcAddress(module, name);
}

bool Names(HMODULE module, std::string_view function) {
    const std::string_view image(At<char>(module, 0), HeaderOf(module).SizeOfImage);
    return image.find(std::string(function) + '\0') != image.npos;
}

}  // namespace

void* WriteInto(void** slot, void* value) {
    DWORD before = 0;
    VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &before);
    void* const previous = std::exchange(*slot, value);
    VirtualProtect(slot, sizeof(*slot), before, &before);
    return previous;
}

ImportPatch::ImportPatch(HMODULE module, const char* function, void* replacement) : slot_(FindSlot(module, function)) {
    void** const find = slot_ || !Names(module, function) ? nullptr : FindSlot(module, "GetProcAddress");
    EXPECT_TRUE(slot_ || find || module != Library()) << function << " is not used";
    if (find) {
        WriteInto(find, reinterpret_cast<void*>(&FindLate));
        slot_ = &Late().try_emplace(function, kOfThePlatform).first->second;
    }
    if (slot_) original_ = WriteInto(slot_, replacement);
}

ImportPatch::~ImportPatch() {
    if (slot_) WriteInto(slot_, original_);
}

}  // namespace velk::test
