// What a library on this frame knows about itself: its module, its name and folder, its type library, and who still
// uses it.
#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <string>

#include "platform/com_ptr.h"
#include "platform/platform.h"

namespace velk::library {

// The type library's name; also the first half of each program identifier and the source of run-time errors. The frame
// brings the main library's; another DLL on this frame defines its own Identity beside its class table.
struct Identity {
    const wchar_t* name;
    void (*atUnload)() noexcept;  // gives back what the DLL holds beyond objects; null for nothing
};
extern const Identity kIdentity;

HINSTANCE Module() noexcept;
std::wstring FilePath();
std::wstring FileBaseName();  // file name without folder and extension, "VelkSprt" unless the file was renamed

// What is embedded in this module under a number and a kind; nothing if there is none.
std::span<const std::byte> Resource(WORD number, const wchar_t* kind) noexcept;

// The type library embedded in this module, never the registered one: another version may be registered.
ComPtr<ITypeLib> TypeLibrary();

// Also of an interface that the library implements and another library owns, if that library's description is embedded
// as a second one: the other library may be missing.
ComPtr<ITypeInfo> TypeInfo(REFGUID guid);
void ReleaseTypeLibraries() noexcept;  // when the module is unloaded; nobody may ask for it any more

// One for each thing that keeps the module needed: a live object, a class factory in a client's hands, a server lock.
class Use {
  public:
    Use() noexcept { ++count_; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { --count_; }

    static bool Any() noexcept { return count_ != 0; }
    static void Lock(bool lock) noexcept { lock ? ++count_ : --count_; }

  private:
    static inline std::atomic<LONG> count_ = 0;
};

}  // namespace velk::library
