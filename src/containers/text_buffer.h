// A text that grows by appending. Described, it is a buffer padded with blanks that grows by 15000 characters or by the
// piece's length; capacity() tells that buffer's length. The characters lie in chunks instead, each about as long as
// all before it up to a megabyte or two, so that no character is copied twice.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace velk {

class TextBuffer {
  public:
    // Both leave the text as it was when memory runs out.
    void Append(std::u16string_view piece) {
        const std::size_t size = piece.size();
        if (size > room_) piece = StartChunk(piece);
        if (piece.size() > kFew) {
            std::memcpy(next_, piece.data(), piece.size() * sizeof(char16_t));
        } else {
            std::ranges::copy(piece, next_);
        }
        next_ += piece.size();
        room_ -= piece.size();
        length_ += size;
        if (length_ >= capacity_) capacity_ += std::max(size, kGrowth);
    }
    void Assign(std::u16string_view text);
    void CopyTo(char16_t* to) const;

    std::size_t length() const noexcept { return length_; }
    std::size_t capacity() const noexcept { return capacity_; }

  private:
    static constexpr std::size_t kGrowth = 15000;
    static constexpr std::size_t kFew = 12;  // to call a function takes as long

    struct Chunk {
        explicit Chunk(std::size_t length)
            : characters(std::make_unique_for_overwrite<char16_t[]>(length)), size(length) {}

        std::unique_ptr<char16_t[]> characters;
        std::size_t size;
    };
    std::u16string_view StartChunk(std::u16string_view piece);

    std::vector<Chunk> chunks_;
    char16_t* next_ = nullptr;  // in the last chunk, the only one with room
    std::size_t room_ = 0;
    std::size_t length_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace velk
