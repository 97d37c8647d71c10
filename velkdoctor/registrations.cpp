#include "velkdoctor/registrations.h"

#include <sddl.h>

#include "platform/handles.h"
#include "platform/system_library.h"
#include "tools/typelib/type_reader.h"

namespace velk {
namespace {

struct LocalTextTraits : NullIsNone<wchar_t*> {
    static void Close(Handle handle) noexcept { LocalFree(handle); }
};
using LocalText = UniqueHandle<LocalTextTraits>;

template <class T>
std::vector<BYTE> TokenFact(TOKEN_INFORMATION_CLASS fact) {
    HANDLE opened = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened)) return {};
    const FileHandle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.get(), fact, nullptr, 0, &size);
    std::vector<BYTE> bytes(size < sizeof(T) ? sizeof(T) : size);
    if (!GetTokenInformation(token.get(), fact, bytes.data(), static_cast<DWORD>(bytes.size()), &size)) return {};
    return bytes;
}

std::wstring OwnSid() {
    const std::vector<BYTE> user = TokenFact<TOKEN_USER>(TokenUser);
    LocalText text;
    if (user.empty()) return {};
    const bool told =
        ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, text.Receive());
    return told ? text.get() : L"";
}

// The users whose part of the registry is loaded. Each also has a part that ends in "_Classes": the same keys once
// more.
std::vector<std::wstring> OtherUsers() {
    std::vector<std::wstring> users;
    const std::wstring own = OwnSid();
    wchar_t name[256];
    for (DWORD i = 0; RegEnumKeyW(HKEY_USERS, i, name, ARRAYSIZE(name)) == ERROR_SUCCESS; ++i) {
        const std::wstring user = name;
        if (user != own && !user.ends_with(L"_Classes")) users.push_back(user);
    }
    return users;
}

std::wstring WithoutQuotes(const std::wstring& path) {
    const bool quoted = path.size() > 1 && path.front() == L'"' && path.back() == L'"';
    return quoted ? path.substr(1, path.size() - 2) : path;
}

void AddRegistration(HKEY root, const std::wstring& path, Holder holder, std::vector<Registration>& found) {
    for (const bool ownWidth : {true, false}) {
        const auto file = ReadText(root, path, nullptr, ownWidth ? 0 : kOtherView);
        if (file) found.push_back({holder, ownWidth, WithoutQuotes(*file)});
    }
}

}  // namespace

std::optional<std::wstring> ReadText(HKEY root, const std::wstring& path, const wchar_t* name, REGSAM view) {
    RegistryKey key;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, key.Receive())) return std::nullopt;
    std::wstring text(MAX_PATH, L'\0');
    DWORD size = 0;
    LSTATUS status = ERROR_MORE_DATA;
    while (status == ERROR_MORE_DATA) {
        size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        status = RegGetValueW(key.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
        if (status == ERROR_MORE_DATA) text.resize(text.size() * 2);
    }
    if (status != ERROR_SUCCESS) return std::nullopt;
    return text.c_str();
}

LSTATUS WriteText(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& text, REGSAM view) {
    RegistryKey key;
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    const LSTATUS made =
        RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_WRITE | view, nullptr, key.Receive(), nullptr);
    return made ? made : RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), bytes);
}

std::vector<Registration> RegistrationsOf(REFCLSID clsid) {
    std::vector<Registration> found;
    const std::wstring path = kClassesKey + (L"CLSID\\" + GuidText(clsid)) + L"\\InprocServer32";
    AddRegistration(HKEY_CURRENT_USER, path, Holder::User, found);
    AddRegistration(HKEY_LOCAL_MACHINE, path, Holder::Machine, found);
    for (std::wstring user : OtherUsers()) {
        user.append(L"\\").append(path);
        AddRegistration(HKEY_USERS, user, Holder::OtherUser, found);
    }
    return found;
}

std::optional<CLSID> ClassNamed(const std::wstring& progId) {
    CLSID clsid;
    return SUCCEEDED(CLSIDFromProgID(progId.c_str(), &clsid)) ? std::optional(clsid) : std::nullopt;
}

HRESULT RegisterLibraryFile(const std::wstring& path) {
    const ModuleHandle library(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!library) return HRESULT_FROM_WIN32(GetLastError());
    const auto registers = FindFunction<HRESULT STDAPICALLTYPE()>(library.get(), "DllRegisterServer");
    return registers ? registers() : E_NOINTERFACE;
}

bool IsElevated() {
    const std::vector<BYTE> fact = TokenFact<TOKEN_ELEVATION>(TokenElevation);
    return !fact.empty() && reinterpret_cast<const TOKEN_ELEVATION*>(fact.data())->TokenIsElevated;
}

}  // namespace velk
