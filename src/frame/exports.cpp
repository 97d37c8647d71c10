// The library's four entry points.
#include "frame/class_factory.h"
#include "frame/registration.h"

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** factory) {
    return velk::GetClassFactory(clsid, iid, factory);
}

STDAPI DllCanUnloadNow() { return velk::library::Use::Any() ? S_FALSE : S_OK; }

STDAPI DllRegisterServer() { return velk::RegisterLibrary(); }

STDAPI DllUnregisterServer() { return velk::UnregisterLibrary(); }
