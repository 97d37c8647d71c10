#include "platform/text.h"

#include <algorithm>
#include <new>
#include <type_traits>

#include "platform/run_time_error.h"

namespace velk {
namespace {

// The conversion calls count in int.
int CheckedLength(std::size_t length) {
    if (length > static_cast<std::size_t>(INT_MAX)) throw RuntimeError(Error::OutOfMemory);
    return static_cast<int>(length);
}

// Nearly all names, paths and keys, and most files. Every ANSI code page holds these characters as they are.
bool IsAscii(const auto& text) noexcept {
    using Unit = std::make_unsigned_t<std::remove_cvref_t<decltype(text[0])>>;  // as narrow as can be: it is vectorised
    Unit all = 0;
    for (const auto character : text) all |= static_cast<Unit>(character);
    return all < 0x80;
}

}  // namespace

Bstr::Bstr(std::wstring_view text)
    : string_(SysAllocStringLen(text.data(), static_cast<UINT>(CheckedLength(text.size())))) {
    if (!string_) throw std::bad_alloc();
}

std::string_view TrimNulls(std::string_view text) noexcept { return text.substr(0, text.find('\0')); }

std::string ToAnsi(std::wstring_view text) {
    const int length = CheckedLength(text.size());
    if (length == 0) return {};
    if (IsAscii(text)) return {text.begin(), text.end()};
    std::string bytes(
        static_cast<std::size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    return bytes;
}

std::string ToAnsiArgument(std::wstring_view text) {
    if (HasNul(text)) throw RuntimeError(Error::InvalidProcedureCall);
    return ToAnsi(text);
}

bool AppendAscii(std::u16string* text, std::string_view bytes) {
    if (!IsAscii(bytes)) return false;
    const std::size_t before = text->size();
    text->resize(before + bytes.size());
    std::copy(bytes.begin(), bytes.end(), text->begin() + static_cast<std::ptrdiff_t>(before));
    return true;
}

bool CopyAscii(char* bytes, std::wstring_view text) noexcept {
    wchar_t all = 0;  // one pass: it is vectorised
    for (const wchar_t character : text) {
        all |= character;
        *bytes++ = static_cast<char>(character);
    }
    return all < 0x80;
}

std::u16string FromAnsi(std::string_view bytes) {
    const int length = CheckedLength(bytes.size());
    // No ANSI code page gives more UTF-16 units than it has bytes, so one pass suffices.
    std::u16string text(bytes.begin(), bytes.end());
    if (IsAscii(bytes)) return text;
    const int converted =
        MultiByteToWideChar(CP_ACP, 0, bytes.data(), length, reinterpret_cast<wchar_t*>(text.data()), length);
    text.resize(static_cast<std::size_t>(converted));
    return text;
}

Bstr FromAnsiBuffer(std::string_view buffer) { return Bstr(Wide(FromAnsi(TrimNulls(buffer)))); }

}  // namespace velk
