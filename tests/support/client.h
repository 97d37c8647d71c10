// Reaches the built library as a client does: through the DLL's own class factory.
#pragma once

#include <memory>
#include <string>

#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "velksprt.h"

namespace velk::test {

std::wstring OwnProgram();

// The exit code of a DISABLED_ test of this program, which runs in a process of its own and may end it in any way.
intptr_t RunAlone(const std::wstring& test);

// In the build folder: the one above a test program's own, unless the environment variable VELK_BUILD names another.
std::wstring BuiltFile(const wchar_t* name);

// The path of the DLL under test, and the module, which stays loaded while a test program runs.
std::wstring LibraryPath();
HMODULE Library();

// An exported entry point.
template <class Function>
Function Export(const char* name, HMODULE module = Library()) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Makes what a manifest declares known to the thread for as long as the result lives.
std::shared_ptr<void> Activated(const std::wstring& manifest);

HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object, HMODULE module = Library());
bool CanUnload(HMODULE module = Library());

ComPtr<IUnknown> CreateUnknown(REFCLSID clsid, HMODULE module = Library());

// CreateObject<_CCRC32>(__uuidof(CCRC32))
template <class Interface>
ComPtr<Interface> CreateObject(REFCLSID clsid, HMODULE module = Library()) {
    return CreateUnknown(clsid, module).template As<Interface>();
}

}  // namespace velk::test
