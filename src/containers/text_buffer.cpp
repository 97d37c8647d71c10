#include "containers/text_buffer.h"

#include <algorithm>
#include <utility>

namespace velk {
namespace {

constexpr std::size_t kGrowth = 15000;
constexpr std::size_t kLeastChunk = 256;
constexpr std::size_t kMostChunk = 1 << 20;

}  // namespace

TextBuffer::Chunk::Chunk(std::size_t size) : characters(std::make_unique_for_overwrite<char16_t[]>(size)), room(size) {}

void TextBuffer::Chunk::Put(std::u16string_view piece) {
    std::ranges::copy(piece, &characters[used]);
    used += piece.size();
    room -= piece.size();
}

void TextBuffer::Append(std::u16string_view piece) {
    const std::size_t size = piece.size();
    if (chunks_.empty() || size > chunks_.back().room) piece = StartChunk(piece);
    chunks_.back().Put(piece);
    if (length_ + size >= capacity_) capacity_ += std::max(size, kGrowth);
    length_ += size;
}

// Fills the last chunk up and adds one for the rest of the piece, which is the result.
std::u16string_view TextBuffer::StartChunk(std::u16string_view piece) {
    const std::size_t room = chunks_.empty() ? 0 : chunks_.back().room;
    chunks_.emplace_back(std::max(piece.size() - room, std::clamp(length_, kLeastChunk, kMostChunk)));
    if (room != 0) chunks_[chunks_.size() - 2].Put(piece.substr(0, room));
    return piece.substr(room);
}

void TextBuffer::Assign(std::u16string_view text) {
    std::vector<Chunk> chunks;
    chunks.emplace_back(text.size()).Put(text);
    chunks_.swap(chunks);
    length_ = capacity_ = text.size();
}

void TextBuffer::CopyTo(char16_t* to) const {
    for (const Chunk& chunk : chunks_) to = std::copy_n(chunk.characters.get(), chunk.used, to);
}

}  // namespace velk
