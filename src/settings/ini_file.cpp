#include "settings/ini_file.h"

#include "platform/files.h"
#include "platform/safe_array.h"
#include "platform/string_array.h"
#include "platform/text.h"
#include "platform/whole_numbers.h"
#include "settings/ini_file_errors.idl.h"
#include "settings/name_list.h"

namespace velk {
namespace {

constexpr ClassError kInvalidFileName(eErrIniFile_InvalidFileName, L"Invalid file name");
constexpr ClassError kFileNotFound(eErrIniFile_FileNotFound, L"File not found");
constexpr ClassError kNotInitialized(eErrIniFile_NotInitialized, L"Object not properly initialized");
constexpr ClassError kInvalidSection(eErrIniFile_InvalidSection, L"Invalid section");
constexpr ClassError kInvalidKey(eErrIniFile_InvalidKey, L"Invalid key");
constexpr ClassError kComponentFailure(eErrIniFile_ComponentFailure, L"CIniFile component failure");

constexpr std::size_t kValueSize = 255;
constexpr std::size_t kListSize = 8192;

// Without a final separator, except at a drive's root.
std::wstring LibraryFolder() {
    const std::wstring path = library::FilePath();
    const std::size_t separator = path.rfind(L'\\');
    const bool atRoot = separator != path.npos && separator > 0 && path[separator - 1] == L':';
    return path.substr(0, atRoot ? separator + 1 : separator);
}

// By a search: a folder exists too, and a pattern if anything matches it.
bool IniFileExists(const std::string& name) {
    const NoDiskPrompts quiet;
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA(name.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return false;
    if (!FindClose(search)) throw kComponentFailure;
    return true;
}

// The profile functions take names of up to MAX_PATH, the end included, and look for a bare name in the Windows folder.
// Not all versions survive a longer one.
void RequireUsable(const std::string& file) {
    const bool isBare = file.find_first_of("\\/:") == file.npos;
    const DWORD length = isBare ? GetWindowsDirectoryA(nullptr, 0) + 1 + static_cast<DWORD>(file.size())
                                : GetFullPathNameA(file.c_str(), 0, nullptr, nullptr);
    if (length == 0 || length > MAX_PATH) throw kComponentFailure;
}

// A text in the ANSI code page as the profile functions take it. They count in 16 bits, and not all versions survive
// more.
const char* Passable(const std::string& text) {
    constexpr std::size_t kMost = 32766;
    if (text.size() > kMost) throw kComponentFailure;
    return text.c_str();
}

// The platform would stop at an embedded NUL and change another section or key than the one named.
bool IsName(BSTR text) noexcept { return SysStringLen(text) > 0 && !HasNul(View(text)); }

void RequireSection(BSTR section) {
    if (!IsName(section)) throw kInvalidSection;
}

void RequireKey(BSTR key) {
    if (!IsName(key)) throw kInvalidKey;
}

// Writes, and flushes the copy of the file that the platform may hold. A null key names the section, a null value
// removes what is named.
bool WriteThrough(const char* section, const char* key, const char* value, const std::string& file) noexcept {
    const NoDiskPrompts quiet;
    const bool written = WritePrivateProfileStringA(section, key, value, file.c_str()) != FALSE;
    WritePrivateProfileStringA(nullptr, nullptr, nullptr, file.c_str());
    return written;
}

// The names of a section's keys, or with a null section those of the sections.
std::string ListNames(const char* section, const std::string& file) {
    std::string list(kListSize, ' ');
    list.resize(GetPrivateProfileStringA(section, nullptr, "", list.data(), kListSize, file.c_str()));
    return list;
}

void Erase(SAFEARRAY*& array) {
    if (!MayBeReplaced(array)) throw kComponentFailure;
    ThrowIfFailed(SafeArrayDestroy(array));
    array = nullptr;
}

// Puts the names of a list into an unallocated array, which it stays if there are none.
LONG Fill(SAFEARRAY*& array, const std::string& list, EmptyNames emptyNames) {
    const auto names = SplitNames(list, emptyNames);
    const LONG count = static_cast<LONG>(names.size());
    if (count == 0) return 0;
    StringArray made(static_cast<ULONG>(count), 1);
    ULONG offset = 0;
    for (const std::string_view name : names) made.Put(offset++, Bstr(Wide(FromAnsi(name))));
    array = made.Detach();
    return count;
}

}  // namespace

constinit const ClassInfo CIniFile::kInfo{
    .name = L"CIniFile",
    .clsid = __uuidof(::CIniFile),
    .iid = __uuidof(_CIniFile),
    .policy = FailurePolicy::ComponentFailure,
    .componentFailure = eErrIniFile_ComponentFailure,
    .creationFailed = L"An error has occured in Velk.CIniFile.Class_Initialize ",
};

// Deliberate: at a drive's root the name gets two separators.
void CIniFile::OnCreate() { fileName_ = LibraryFolder() + L"\\MyFileSettings.ini"; }

STDMETHODIMP CIniFile::Init(BSTR* Filename) noexcept {
    return Guard([&] { SetFileName(View(Given(Filename))); });
}

STDMETHODIMP CIniFile::put_Filename(BSTR* Value) noexcept {
    return Guard([&] { SetFileName(View(Given(Value))); });
}

STDMETHODIMP CIniFile::get_Filename(BSTR* result) noexcept { return Get(result, fileName_); }

STDMETHODIMP CIniFile::GetNumericValue(BSTR* Section, BSTR* Key, SHORT* result) noexcept {
    return Guard(result, [&] {
        const std::string file = ExistingFile();
        return ToInteger(static_cast<INT>(GetPrivateProfileIntA(Passable(ToAnsi(View(Given(Section)))),
                                                                Passable(ToAnsi(View(Given(Key)))), -1, file.c_str())));
    });
}

STDMETHODIMP CIniFile::GetStringValue(BSTR* Section, BSTR* Key, BSTR* result) noexcept {
    return Guard(result, [&] {
        const std::string file = ExistingFile();
        char value[kValueSize] = {};
        const bool found =
            GetPrivateProfileStringA(Passable(ToAnsi(View(Given(Section)))), Passable(ToAnsi(View(Given(Key)))), "",
                                     value, kValueSize, file.c_str()) != 0;
        return FromAnsiBuffer({value, found ? kValueSize : 0});
    });
}

STDMETHODIMP CIniFile::EnumerateAllKeys(BSTR* Section, SAFEARRAY** Key, LONG* result) noexcept {
    return Guard(result, [&] {
        const BSTR section = Given(Section);
        SAFEARRAY*& keys = Given(Key);
        const std::string file = ExistingFile();
        RequireSection(section);
        Erase(keys);
        return Fill(keys, ListNames(Passable(ToAnsi(View(section))), file), EmptyNames::Keep);
    });
}

STDMETHODIMP CIniFile::EnumerateAllSections(SAFEARRAY** Sections, LONG* result) noexcept {
    return Guard(result, [&] {
        SAFEARRAY*& sections = Given(Sections);
        const std::string file = ExistingFile();
        Erase(sections);
        return Fill(sections, ListNames(nullptr, file), EmptyNames::Skip);
    });
}

STDMETHODIMP CIniFile::SaveNumericValue(BSTR* Section, BSTR* Key, SHORT* iData) noexcept {
    return Guard([&] { Save(Given(Section), Given(Key), std::to_string(Given(iData))); });
}

STDMETHODIMP CIniFile::SaveStringValue(BSTR* Section, BSTR* Key, BSTR* sText) noexcept {
    return Guard([&] { Save(Given(Section), Given(Key), ToAnsi(View(Given(sText)))); });
}

STDMETHODIMP CIniFile::DeleteKey(BSTR Section, BSTR* Key, VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] {
        const BSTR key = Given(Key);
        const std::string file = ExistingFile();
        RequireSection(Section);
        RequireKey(key);
        return WriteThrough(Passable(ToAnsi(View(Section))), Passable(ToAnsi(View(key))), nullptr, file);
    });
}

STDMETHODIMP CIniFile::DeleteSection(BSTR Section, VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] {
        const std::string file = ExistingFile();
        RequireSection(Section);
        return WriteThrough(Passable(ToAnsi(View(Section))), nullptr, nullptr, file);
    });
}

void CIniFile::SetFileName(std::wstring_view name) {
    if (name.empty()) throw kInvalidFileName;
    fileName_ = name;
}

std::string CIniFile::InitialisedFile() const {
    if (fileName_.empty()) throw kNotInitialized;
    return ToAnsi(fileName_);
}

std::string CIniFile::ExistingFile() const {
    std::string file = InitialisedFile();
    if (!IniFileExists(file)) throw kFileNotFound;
    RequireUsable(file);
    return file;
}

// Deliberate: makes a missing file, and does not tell of a failed write.
void CIniFile::Save(BSTR section, BSTR key, const std::string& text) const {
    const std::string file = InitialisedFile();
    RequireSection(section);
    RequireKey(key);
    RequireUsable(file);
    WriteThrough(Passable(ToAnsi(View(section))), Passable(ToAnsi(View(key))), Passable(text), file);
}

}  // namespace velk
