#pragma once

#include <string>

#include "fuzz/model.h"
#include "shell/file_dialog_text.h"

namespace velk::test {

// One character after the other, as the rule is told: up to the first pair of NULs that something follows.
inline std::u16string LiterallyTrimmed(const std::u16string& buffer) {
    std::u16string text;
    for (std::size_t i = 0; i + 2 < buffer.size(); ++i) {
        if (buffer[i] == 0 && buffer[i + 1] == 0) return text;
        text += buffer[i] ? buffer[i] : u' ';
    }
    return {};
}

// Only the end of a longer name goes; the text before the first NUL and the length stay.
inline void CheckRemains(const std::string& answer) {
    std::string before = answer, after = answer;
    file_dialog::DropRemains(after, before);
    Require(after == answer);
    const std::size_t end = answer.find('\0');
    if (end == answer.npos) return;
    before[end] = 'x';
    file_dialog::DropRemains(after, before + 'y');
    Require(after == answer);
    file_dialog::DropRemains(after, before);
    Require(after == answer.substr(0, end) + std::string(answer.size() - end, '\0'));
}

inline void FileDialogTextModel(Bytes& bytes) {
    const int size = bytes.Next() % 32 - 8;
    const std::u16string text = bytes.Rest(std::u16string_view(u"ab|\0\0\0\uD7FE", 7));
    const int length = static_cast<int>(text.size());
    Require(file_dialog::TrimNulls(text) == LiterallyTrimmed(text));
    CheckRemains(std::string(text.begin(), text.end()));
    std::u16string padded, list;
    const auto pad = [&] { padded = file_dialog::Padded(text, static_cast<std::int16_t>(size)); };
    Require(Answer(pad) == (length > size ? -1005 : 0));
    Require(length > size || padded == text + std::u16string(static_cast<std::size_t>(size - length), u'\0'));
    for (const char16_t unit : text) list += unit == u'|' ? u'\0' : unit;
    Require(file_dialog::FilterList(text) == list + std::u16string(2, u'\0'));
}

}  // namespace velk::test
