// The library's four entry points, and what happens when the module goes.
#include "frame/dispatch/call_plan.h"
#include "frame/module/runtime_threads.h"
#include "frame/server/class_factory.h"
#include "frame/server/registration.h"

// The thread that asks is the one whose calls the objects will take.
STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** factory) {
    if (factory) *factory = nullptr;
    if (!velk::PrepareThread()) return E_OUTOFMEMORY;
    return velk::GetClassFactory(clsid, iid, factory);
}

STDAPI DllCanUnloadNow() { return velk::library::Use::Any() ? S_FALSE : S_OK; }

STDAPI DllRegisterServer() { return velk::RegisterLibrary(); }

STDAPI DllUnregisterServer() { return velk::UnregisterLibrary(); }

// At the end of the process nothing is released: the other threads have been stopped wherever they were.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_DETACH && !processEnds) {
        if (velk::library::kIdentity.atUnload) velk::library::kIdentity.atUnload();
        velk::KeptPlan::ReleaseAll();
        velk::library::ReleaseTypeLibraries();
        velk::ReleaseRuntime();
    }
    return TRUE;
}
