// The text buffer against a text of the standard library's.
#pragma once

#include <string>
#include <string_view>

#include "containers/text_buffer.h"
#include "fuzz/model.h"

namespace velk::test {

inline void TextBufferModel(Bytes& bytes) {
    // Every piece is cut from this text, so that pieces that are mixed up do not look alike.
    static const std::u16string source = [] {
        std::u16string text;
        for (char16_t unit = 0; unit < 50000; ++unit) text += unit;
        return text;
    }();
    TextBuffer buffer;
    std::u16string expected;
    for (int step = 0; step < 32 && !bytes.empty(); ++step) {
        const std::size_t size = static_cast<std::size_t>(bytes.Next()), start = static_cast<std::size_t>(bytes.Next());
        const std::size_t more[] = {expected.size(), 15000, 60 * start, 1};
        const auto piece = std::u16string_view(source).substr(8 * start, size < 240 ? size : more[size % 4]);
        if (start % 64 == 9) {
            buffer.Assign(piece), expected = piece;
        } else {
            buffer.Append(piece), expected += piece;
        }
        Require(buffer.length() == expected.size());
    }
    std::u16string text(buffer.length(), u' ');
    buffer.CopyTo(text.data());
    Require(text == expected);
}

}  // namespace velk::test
