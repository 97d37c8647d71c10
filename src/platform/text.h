#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/platform.h"

namespace velk {

// Owns a counted automation string. A null string is the empty text.
class Bstr {
  public:
    Bstr() noexcept = default;
    explicit Bstr(std::wstring_view text);
    Bstr(Bstr&& other) noexcept : string_(other.Detach()) {}
    Bstr& operator=(Bstr other) noexcept {
        std::swap(string_, other.string_);
        return *this;
    }
    ~Bstr() {  // on purpose, and only where there is one: most are empty by then
        if (string_) SysFreeString(string_);
    }

    BSTR get() const noexcept { return string_; }
    BSTR Detach() noexcept { return std::exchange(string_, nullptr); }
    BSTR* Receive() noexcept {
        *this = Bstr();
        return &string_;
    }

  private:
    BSTR string_ = nullptr;
};

// The characters of a counted string, embedded NULs included; a null string is the empty text. Only as long as nobody
// else can change the string. Its length in bytes stands before the first character.
inline std::wstring_view View(BSTR text) noexcept {
    if (!text) return L"";
    return {text, reinterpret_cast<const DWORD*>(text)[-1] / sizeof(wchar_t)};
}

// A copy: what a member reads of a by-reference argument after the client's code may have run, as it does while a
// report is shown, is no longer what was given.
inline std::wstring TextOf(BSTR text) { return std::wstring(View(text)); }

// Such a text is refused where the platform reads up to the first NUL: it would act on something else than what the
// client sees.
inline bool HasNul(std::wstring_view text) noexcept { return text.find(L'\0') != text.npos; }

// The same UTF-16 text as the plain units see it.
inline std::u16string_view Utf16(std::wstring_view text) noexcept {
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}
inline std::wstring_view Wide(std::u16string_view text) noexcept {
    return {reinterpret_cast<const wchar_t*>(text.data()), text.size()};
}

// The text before its first NUL: what is left of a fixed buffer that a platform call filled.
std::string_view TrimNulls(std::string_view text) noexcept;

// Conversions through the system's ANSI code page. Characters that it lacks become what the platform's default
// conversion gives, as a rule "?".
std::string ToAnsi(std::wstring_view text);
std::u16string FromAnsi(std::string_view bytes);
bool AppendAscii(std::u16string* text, std::string_view bytes);  // false, and nothing appended, if they are not

// A byte for each character. False, and the bytes are not to be used, if one of them needs more than seven bits.
bool CopyAscii(char* bytes, std::wstring_view text) noexcept;

// The bytes for a platform call that reads up to the first NUL. Error 5 for a text with a NUL.
std::string ToAnsiArgument(std::wstring_view text);

// The automation string for what a platform call left in a fixed ANSI buffer: the text before its first NUL.
Bstr FromAnsiBuffer(std::string_view buffer);

}  // namespace velk
