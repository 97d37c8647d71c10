#include "frame/server/registration.h"

#include <string>
#include <string_view>

#include "frame/module/library.h"
#include "frame/server/class_table.h"
#include "platform/handles.h"
#include "platform/platform.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

enum class Scope { Machine, User };

struct RegistryError {
    LSTATUS status;
};

constexpr const wchar_t* kClassesKey = L"Software\\Classes\\";

HKEY RootOf(Scope scope) noexcept { return scope == Scope::Machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER; }

std::wstring GuidText(REFGUID guid) {
    wchar_t text[39];
    StringFromGUID2(guid, text, ARRAYSIZE(text));
    return text;
}

std::wstring ProgId(const ClassInfo& info) { return std::wstring(library::kIdentity.name) + L"." + info.name; }

void SetValue(Scope scope, const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    RegistryKey opened;
    LSTATUS status = RegCreateKeyExW(RootOf(scope), (kClassesKey + key).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                                     opened.Receive(), nullptr);
    if (status == ERROR_SUCCESS) {
        const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
        status = RegSetValueExW(opened.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()), size);
    }
    if (status != ERROR_SUCCESS) throw RegistryError{status};
}

// Deletes a key with all that is below it. What is not there is no error.
LSTATUS RemoveKey(Scope scope, const std::wstring& key) {
    const LSTATUS status = RegDeleteTreeW(RootOf(scope), (kClassesKey + key).c_str());
    return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

struct LibraryIdentity {
    GUID guid;
    LCID locale;
    SYSKIND system;
    WORD major;
    WORD minor;
};

LibraryIdentity Identity() {
    TLIBATTR* attributes = nullptr;
    const ComPtr<ITypeLib> types = library::TypeLibrary();
    ThrowIfFailed(types->GetLibAttr(&attributes));
    const LibraryIdentity identity{attributes->guid, attributes->lcid, attributes->syskind, attributes->wMajorVerNum,
                                   attributes->wMinorVerNum};
    types->ReleaseTLibAttr(attributes);
    return identity;
}

void WriteClass(Scope scope, const ClassInfo& info, const LibraryIdentity& types) {
    const std::wstring name = ProgId(info);
    const std::wstring guid = GuidText(info.clsid);
    const std::wstring key = L"CLSID\\" + guid;
    SetValue(scope, key, nullptr, name);
    SetValue(scope, key + L"\\InprocServer32", nullptr, library::FilePath());
    SetValue(scope, key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
    SetValue(scope, key + L"\\ProgID", nullptr, name);
    SetValue(scope, key + L"\\Programmable", nullptr, L"");
    SetValue(scope, key + L"\\TypeLib", nullptr, GuidText(types.guid));
    SetValue(scope, key + L"\\VERSION", nullptr, DecimalText(types.major) + L"." + DecimalText(types.minor));
    SetValue(scope, name, nullptr, name);
    SetValue(scope, name + L"\\CLSID", nullptr, guid);
}

void WriteTypeLibrary(Scope scope) {
    std::wstring path = library::FilePath();
    // Named, because an earlier registration's folder would stay otherwise.
    std::wstring helpFolder = path.substr(0, path.rfind(L'\\'));
    const ComPtr<ITypeLib> types = library::TypeLibrary();
    // Called by name: not all platform headers give the two the same type.
    ThrowIfFailed(scope == Scope::Machine ? RegisterTypeLib(types.get(), path.data(), helpFolder.data())
                                          : RegisterTypeLibForUser(types.get(), path.data(), helpFolder.data()));
}

void Write(Scope scope) {
    for (const ClassEntry& entry : Classes()) WriteClass(scope, *entry.info, Identity());
    WriteTypeLibrary(scope);
}

void RemoveTypeLibrary(Scope scope) {
    const auto& [guid, locale, system, major, minor] = Identity();
    // An answer that nothing is registered is as good as success.
    if (scope == Scope::Machine) {
        UnRegisterTypeLib(guid, major, minor, locale, system);
    } else {
        UnRegisterTypeLibForUser(guid, major, minor, locale, system);
    }
}

bool HasKey(Scope scope, const std::wstring& key, REGSAM view = 0) noexcept {
    RegistryKey opened;
    return RegOpenKeyExW(RootOf(scope), (kClassesKey + key).c_str(), 0, KEY_READ | view, opened.Receive()) ==
           ERROR_SUCCESS;
}

// Whether the library of the other width is registered too. On a 32-bit system there is only one view of the registry,
// so this is asked once the class's own key is gone.
bool OtherWidthHas(Scope scope, const std::wstring& key) noexcept {
    return HasKey(scope, key, sizeof(void*) == 4 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY);
}

// Whatever this scope holds goes, but for what both widths share while the other one needs it: names and the
// surrogate's settings. The first key that may not be deleted is the answer.
HRESULT Remove(Scope scope) {
    LSTATUS status = ERROR_SUCCESS;
    const auto remove = [&](const std::wstring& key) {
        const LSTATUS removed = RemoveKey(scope, key);
        if (status == ERROR_SUCCESS) status = removed;
    };
    RemoveTypeLibrary(scope);
    bool shared = false;
    for (const ClassEntry& entry : Classes()) {
        const std::wstring key = L"CLSID\\" + GuidText(entry.info->clsid);
        remove(key);
        if (OtherWidthHas(scope, key)) {
            shared = true;
        } else {
            remove(ProgId(*entry.info));
        }
    }
    if (!shared) remove(L"AppID\\" + GuidText(Identity().guid));
    // A user's part has no such keys from the start. Only an empty one can be deleted this way.
    if (scope == Scope::User) {
        RegDeleteKeyW(RootOf(scope), L"Software\\Classes\\CLSID");
        RegDeleteKeyW(RootOf(scope), L"Software\\Classes\\AppID");
    }
    return HRESULT_FROM_WIN32(status);
}

bool MayWriteForMachine() noexcept {
    RegistryKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Classes", 0, KEY_WRITE, key.Receive()) == ERROR_SUCCESS;
}

// An installer limits its work to one scope; the exports take no arguments, so it says so in the environment.
bool LimitedTo(std::wstring_view scope) noexcept {
    wchar_t value[16];
    const DWORD length = GetEnvironmentVariableW(L"VELKSPRT_SCOPE", value, ARRAYSIZE(value));
    return length < ARRAYSIZE(value) && std::wstring_view(value, length) == scope;
}

Scope ScopeToWrite() noexcept {
    if (LimitedTo(L"machine")) return Scope::Machine;
    return !LimitedTo(L"user") && MayWriteForMachine() ? Scope::Machine : Scope::User;
}

template <class Body>
HRESULT AsResult(Body body) noexcept try {
    return body();
} catch (const RegistryError& error) {
    return HRESULT_FROM_WIN32(error.status);
} catch (...) {
    return SELFREG_E_TYPELIB;
}

}  // namespace

HRESULT RegisterLibrary() noexcept {
    const Scope scope = ScopeToWrite();
    const bool before = HasKey(scope, L"CLSID\\" + GuidText(Classes().front().info->clsid));
    const HRESULT written = AsResult([scope] {
        Write(scope);
        return S_OK;
    });
    // Nothing half registered stays behind; but what was registered before still leads to a library.
    if (FAILED(written) && !before) AsResult([scope] { return Remove(scope); });
    return written;
}

HRESULT UnregisterLibrary() noexcept {
    const HRESULT user = LimitedTo(L"machine") ? S_OK : AsResult([] { return Remove(Scope::User); });
    const HRESULT machine = LimitedTo(L"user") ? S_OK : AsResult([] { return Remove(Scope::Machine); });
    return FAILED(machine) ? machine : user;
}

}  // namespace velk
