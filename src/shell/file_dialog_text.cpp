#include "shell/file_dialog_text.h"

#include <algorithm>

#include "platform/run_time_error.h"

namespace velk::file_dialog {

std::u16string FilterList(std::u16string_view filter) {
    std::u16string list(filter);
    std::replace(list.begin(), list.end(), u'|', u'\0');
    return list.append(2, u'\0');
}

std::u16string Padded(std::u16string_view text, std::int16_t size) {
    if (size < 0 || text.size() > static_cast<std::size_t>(size)) throw RuntimeError(Error::InvalidProcedureCall);
    std::u16string padded(text);
    padded.resize(static_cast<std::size_t>(size));
    return padded;
}

std::u16string TrimNulls(std::u16string_view buffer) {
    constexpr std::u16string_view kPair(u"\0\0", 2);
    const std::size_t end = buffer.substr(0, buffer.size() - 1).find(kPair);  // of an empty one: all of it
    if (end == std::u16string_view::npos) return {};
    std::u16string text(buffer.substr(0, end));
    std::replace(text.begin(), text.end(), u'\0', u' ');
    return text;
}

void DropRemains(std::string& buffer, std::string_view before) {
    const std::size_t end = buffer.find('\0');
    if (end == std::string::npos || buffer == before ||
        std::string_view(buffer).substr(end + 1) != before.substr(end + 1))
        return;
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(end), buffer.end(), '\0');
}

}  // namespace velk::file_dialog
