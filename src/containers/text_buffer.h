// A text that grows by appending. The characters lie in chunks, each about as long as all before it up to a megabyte or
// two, so that no character is copied twice.
#pragma once

#include <algorithm>
#include <cstddef>
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
        next_ = piece.size() > kFew
                    ? std::copy_n(piece.data(), piece.size(), next_)  // a call of the platform's routine
                    : std::ranges::copy(piece, next_).out;
        room_ -= piece.size();
        length_ += size;
    }
    void Assign(std::u16string_view text);
    void CopyTo(char16_t* to) const;

    std::size_t length() const noexcept { return length_; }

  private:
    static constexpr std::size_t kFew = 12;  // take as long as the call of a function

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
};

}  // namespace velk
