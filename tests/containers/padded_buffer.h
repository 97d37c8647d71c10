#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace velk::test {

// The buffer as it is described: blanks at its end, and a count of what is in use.
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

}  // namespace velk::test
