#include "settings/program_settings.h"

#include <cstring>

#include "platform/handles.h"
#include "platform/numbers.h"
#include "platform/registry.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

constexpr REGSAM kAccess =
    KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY | KEY_CREATE_LINK;

// The text of a stored string value, whose one final NUL does not belong to it.
std::u16string StoredText(std::string_view stored) {
    if (stored.ends_with('\0')) stored.remove_suffix(1);
    return FromAnsi(stored);
}

LONG NumberOr(std::u16string_view text, LONG other) try {
    return LongFromText(Wide(text));
} catch (const RuntimeError&) {  // no number, or beyond a Long
    return other;
}

// Makes what is missing of the key's path. A key that may not be written stays as it is.
void Store(HKEY root, std::wstring_view path, std::wstring_view entry, DWORD type, const char* bytes,
           std::size_t size) {
    RegistryKey key;
    const LSTATUS status = RegCreateKeyExA(root, ToAnsi(path).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, kAccess,
                                           nullptr, key.Receive(), nullptr);
    if (status != ERROR_SUCCESS) return;
    RegSetValueExA(key.get(), ToAnsi(entry).c_str(), 0, type, reinterpret_cast<const BYTE*>(bytes),
                   static_cast<DWORD>(size));
}

}  // namespace

constinit const ClassInfo CProgramSettings::kInfo{
    .name = L"CProgramSettings",
    .clsid = __uuidof(::CProgramSettings),
    .iid = __uuidof(_CProgramSettings),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CProgramSettings::get_MainBranch(BSTR* result) noexcept { return Get(result, mainBranch_); }

STDMETHODIMP CProgramSettings::put_MainBranch(BSTR* Value) noexcept { return Let(Value, mainBranch_); }

STDMETHODIMP CProgramSettings::get_RegBase(BSTR* result) noexcept { return Get(result, regBase_); }

STDMETHODIMP CProgramSettings::put_RegBase(BSTR* Value) noexcept { return Let(Value, regBase_); }

STDMETHODIMP CProgramSettings::get_Program(BSTR* result) noexcept { return Get(result, program_); }

STDMETHODIMP CProgramSettings::put_Program(BSTR* Value) noexcept { return Let(Value, program_); }

STDMETHODIMP CProgramSettings::get_Section(BSTR* result) noexcept { return Get(result, section_); }

STDMETHODIMP CProgramSettings::put_Section(BSTR* Value) noexcept { return Let(Value, section_); }

STDMETHODIMP CProgramSettings::get_RootKey(EnumProgramSettingsRoot* result) noexcept { return Get(result, rootKey_); }

STDMETHODIMP CProgramSettings::put_RootKey(EnumProgramSettingsRoot* Value) noexcept { return Let(Value, rootKey_); }

STDMETHODIMP CProgramSettings::ReadEntry(BSTR* strEntry, BSTR* strDefault, BSTR* result) noexcept {
    return Guard(result, [&] {
        const std::wstring entry = TextOf(Given(strEntry)), other = TextOf(Given(strDefault));
        const Setting setting = GetKeyValue(KeyPath(), entry);
        if (const LONG* number = std::get_if<LONG>(&setting)) return Bstr(DecimalText(*number));
        const auto* text = std::get_if<std::u16string>(&setting);
        return Bstr(text && !text->empty() ? Wide(*text) : other);
    });
}

// Deliberate: the members for numbers report under the names of those for strings.
STDMETHODIMP CProgramSettings::ReadEntryLong(BSTR* strEntry, LONG* lngDefault, LONG* result) noexcept {
    return GuardAs("ReadEntry", result, [&] {
        const std::wstring entry = TextOf(Given(strEntry));
        const LONG other = Given(lngDefault);
        const Setting setting = GetKeyValue(KeyPath(), entry);
        if (const LONG* number = std::get_if<LONG>(&setting)) return *number;
        const auto* text = std::get_if<std::u16string>(&setting);
        return text ? NumberOr(*text, other) : other;
    });
}

STDMETHODIMP CProgramSettings::WriteEntry(BSTR* strEntry, BSTR* strValue) noexcept {
    return Guard([&] { SetKeyValue(KeyPath(), View(Given(strEntry)), View(Given(strValue))); });
}

STDMETHODIMP CProgramSettings::WriteEntryLong(BSTR* strEntry, LONG* lngValue) noexcept {
    return GuardAs("WriteEntry", [&] { SetKeyValue(KeyPath(), View(Given(strEntry)), Given(lngValue)); });
}

std::wstring CProgramSettings::KeyPath() const {
    std::wstring path = mainBranch_ + L'\\' + regBase_ + L'\\' + program_ + L'\\' + section_;
    if (path.back() == L'\\') path.pop_back();
    return path;
}

CProgramSettings::Setting CProgramSettings::GetKeyValue(std::wstring_view path,
                                                        std::wstring_view entry) const noexcept {
    Setting setting;
    Guard([&] {
        const auto value = ReadRegistryValue(Root(), ToAnsi(path), ToAnsi(entry), kAccess);
        if (value && value->type == REG_SZ) setting = StoredText(value->text());
        if (value && value->type == REG_DWORD) setting = value->number();
    });
    return setting;
}

void CProgramSettings::SetKeyValue(std::wstring_view path, std::wstring_view entry,
                                   std::wstring_view text) const noexcept {
    Guard([&] {
        const std::string bytes = ToAnsi(text);
        Store(Root(), path, entry, REG_SZ, bytes.c_str(), bytes.size() + 1);
    });
}

// Deliberate: the size is that of the number's decimal text, not 4. What exceeds the number is stored as zeros.
void CProgramSettings::SetKeyValue(std::wstring_view path, std::wstring_view entry, LONG number) const noexcept {
    Guard([&] {
        char bytes[16] = {};
        std::memcpy(bytes, &number, sizeof number);
        Store(Root(), path, entry, REG_DWORD, bytes, std::to_string(number).size());
    });
}

}  // namespace velk
