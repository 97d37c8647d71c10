// Where the registry says that a class lives.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace velk {

enum class Holder { User, Machine, OtherUser };

struct Registration {
    Holder holder;
    bool ownWidth;      // seen by programs of this program's width
    std::wstring file;  // as registered, without quotation marks
};

inline constexpr REGSAM kOtherView = sizeof(void*) == 4 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;

inline constexpr const wchar_t* kClassesKey = L"Software\\Classes\\";

// A string value (null: the key's own); nothing when it is missing or no text.
std::optional<std::wstring> ReadText(HKEY root, const std::wstring& path, const wchar_t* name, REGSAM view = 0);

// Makes the key if it is missing.
LSTATUS WriteText(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& text, REGSAM view = 0);

// All that this user may see. Other users' parts of the registry are there while they are logged on, and only for
// administrators.
std::vector<Registration> RegistrationsOf(REFCLSID clsid);

// The class that the platform finds for a name.
std::optional<CLSID> ClassNamed(const std::wstring& progId);

// Has a library register itself.
HRESULT RegisterLibraryFile(const std::wstring& path);

// Whether this process has administrative rights: the platform then passes over what is registered for one user.
bool IsElevated();

}  // namespace velk
