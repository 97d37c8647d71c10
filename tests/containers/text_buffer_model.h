// The text buffer as it is described: blanks at its end, and a count of what is in use.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "containers/text_buffer.h"
#include "fuzz/model.h"

namespace velk::test {

class PaddedBuffer {
  public:
    void Append(std::u16string_view piece) {
        if (length_ + piece.size() >= buffer_.size()) buffer_.append(std::max<std::size_t>(piece.size(), 15000), u' ');
        std::ranges::copy(piece, buffer_.begin() + static_cast<std::ptrdiff_t>(length_));
        length_ += piece.size();
    }
    void Assign(std::u16string_view text) {
        buffer_ = text;
        length_ = text.size();
    }
    std::size_t capacity() const { return buffer_.size(); }
    std::size_t length() const { return length_; }
    std::u16string_view Text() const { return std::u16string_view(buffer_).substr(0, length_); }

  private:
    std::u16string buffer_;
    std::size_t length_ = 0;
};

inline void TextBufferModel(Bytes& bytes) {
    // Every piece is cut from this text, so that pieces that are mixed up do not look alike.
    static const std::u16string source = [] {
        std::u16string text;
        for (char16_t unit = 0; unit < 50000; ++unit) text += unit;
        return text;
    }();
    TextBuffer buffer;
    PaddedBuffer padded;
    for (int step = 0; step < 32 && !bytes.empty(); ++step) {
        const std::size_t size = static_cast<std::size_t>(bytes.Next()), start = static_cast<std::size_t>(bytes.Next());
        const std::size_t more[] = {buffer.capacity() - buffer.length(), 15000, 60 * start, 1};
        const auto piece = std::u16string_view(source).substr(8 * start, size < 240 ? size : more[size % 4]);
        const auto put = [&](auto& into) { start % 64 == 9 ? into.Assign(piece) : into.Append(piece); };
        put(buffer);
        put(padded);
        Require(buffer.length() == padded.length() && buffer.capacity() == padded.capacity());
    }
    std::u16string text(buffer.length(), u' ');
    buffer.CopyTo(text.data());
    Require(text == padded.Text());
}

}  // namespace velk::test
