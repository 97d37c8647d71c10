#include "containers/text_buffer.h"

#include <utility>

namespace velk {
namespace {

constexpr std::size_t kLeastChunk = 256;
constexpr std::size_t kMostChunk = 1 << 20;

}  // namespace

// Fills the last chunk up and adds one for the rest of the piece, which is the result.
std::u16string_view TextBuffer::StartChunk(std::u16string_view piece) {
    const std::size_t room = room_;
    Chunk& added = chunks_.emplace_back(std::max(piece.size() - room, std::clamp(length_, kLeastChunk, kMostChunk)));
    std::copy_n(piece.data(), room, next_);
    next_ = added.characters.get();
    room_ = added.size;
    return piece.substr(room);
}

void TextBuffer::Assign(std::u16string_view text) {
    std::vector<Chunk> chunks;
    next_ = std::copy_n(text.data(), text.size(), chunks.emplace_back(text.size()).characters.get());
    chunks_.swap(chunks);
    room_ = 0;
    length_ = text.size();
}

void TextBuffer::CopyTo(char16_t* to) const {
    std::size_t left = length_;
    for (const Chunk& chunk : chunks_) {
        const std::size_t used = std::min(chunk.size, left);
        to = std::copy_n(chunk.characters.get(), used, to);
        left -= used;
    }
}

}  // namespace velk
