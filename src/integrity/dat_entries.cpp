#include "integrity/dat_entries.h"

#include <utility>

#include "integrity/crc32_engine.h"
#include "platform/run_time_error.h"

namespace velk {
namespace {

std::uint32_t Hash(std::u16string_view key, std::uint32_t before = crc32::kSeed) {
    return crc32::Update(before, key.data(), key.size() * sizeof(char16_t));
}

std::u16string_view UpTo(std::u16string_view text, auto end) { return text.substr(0, text.find(end)); }

}  // namespace

// All entries are read before any gets its slot: the slots of a large file lie outside the processor's caches, and only
// in a loop that does nothing else does it fetch several at a time.
void DatEntries::Parse(std::u16string text) {
    if (text.size() >= kFree) throw RuntimeError(Error::OutOfMemory);
    text_ = std::move(text);
    slots_.clear();
    size_ = 0;
    const std::vector<Slot> entries = EntriesInOrder();
    slots_.resize(2 * entries.size() + 1);
    for (const Slot& entry : entries) {
        Slot& slot = slots_[Locate(entry.hash, [&](std::u16string_view key) { return key == KeyAt(entry.position); })];
        if (slot.position != kFree) throw RuntimeError(Error::KeyExists);
        slot = entry;
        ++size_;
    }
}

std::vector<DatEntries::Slot> DatEntries::EntriesInOrder() const {
    std::vector<Slot> entries;
    for (std::size_t at = 0; at < text_.size();) {
        const auto line = UpTo(text().substr(at), u"\r\n");
        const auto key = UpTo(line, u'=');
        if (key.size() < line.size()) entries.push_back({Hash(key), static_cast<std::uint32_t>(at)});
        at += line.size() + 2;
    }
    return entries;
}

std::u16string_view DatEntries::KeyAt(std::uint32_t position) const { return UpTo(text().substr(position), u'='); }

// The slot of the key, or else the free one where it belongs. `same` is asked about a key only where its hash is.
std::size_t DatEntries::Locate(std::uint32_t hash, auto same) const {
    std::size_t at = std::uint64_t{hash} * slots_.size() >> 32;
    while (slots_[at].position != kFree && (slots_[at].hash != hash || !same(KeyAt(slots_[at].position)))) {
        at = at + 1 == slots_.size() ? 0 : at + 1;
    }
    return at;
}

std::optional<std::u16string_view> DatEntries::Find(std::u16string_view key, std::u16string_view suffix) const {
    if (size_ == 0) return std::nullopt;
    const std::size_t length = key.size() + suffix.size();
    const Slot& slot = slots_[Locate(Hash(suffix, Hash(key)), [&](std::u16string_view known) {
        return known.size() == length && known.starts_with(key) && known.ends_with(suffix);
    })];
    if (slot.position == kFree) return std::nullopt;
    return UpTo(UpTo(text().substr(slot.position + length + 1), u"\r\n"), u'=');
}

}  // namespace velk
