// The entries of a parameter file, found by key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk {

// A line (ended by CR LF; the last may do without) that holds "=" is an entry: the key before the first "=",
// the value up to the second one or the end of the line. What follows a second "=" is dropped deliberately.
// Nothing is trimmed, keys and values may be empty, other lines are ignored.
class DatEntries {
  public:
    DatEntries() = default;
    // What Find returns is a view into the text, which a move may relocate.
    DatEntries(const DatEntries&) = delete;
    DatEntries& operator=(const DatEntries&) = delete;

    // Replaces everything. A duplicate key throws RuntimeError(Error::KeyExists); deliberately the entries before it
    // stay.
    void Parse(std::u16string text);
    // The value of the key that these two make up, valid until the next Parse.
    std::optional<std::u16string_view> Find(std::u16string_view key, std::u16string_view suffix = {}) const;
    std::size_t size() const { return size_; }
    std::u16string_view text() const { return text_; }

  private:
    static constexpr std::uint32_t kFree = UINT32_MAX;
    // An entry is known by where its line starts; the text tells the lengths. A slot costs eight bytes.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t position = kFree;
    };

    std::deque<Slot> EntriesInOrder() const;
    std::u16string_view KeyAt(std::uint32_t position) const;
    std::size_t PlaceFor(std::uint32_t hash) const;
    std::size_t Locate(std::uint32_t hash, auto same) const;

    std::u16string text_;
    std::vector<Slot> slots_;  // open addressing with linear probing, at most half full
    std::size_t size_ = 0;
};

}  // namespace velk
