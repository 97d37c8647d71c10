#include "integrity/dat_entries.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "platform/run_time_error.h"

namespace velk {
namespace {

constexpr std::size_t kBatch = 16;

struct HashedKey {
    std::uint32_t hash;
    std::u16string_view key;
};

std::uint32_t Pair(const char16_t* units) {
    std::uint32_t pair;
    std::memcpy(&pair, units, sizeof(pair));
    return pair;
}

// Four units a step. The product spreads each half over the other; adding it to the halves, not putting it in
// their place, keeps what came before even where a factor is zero.
std::uint32_t Hash(std::u16string_view key) {
    std::uint32_t low = static_cast<std::uint32_t>(key.size()), high = 0;
    const auto mix = [&](std::uint32_t first, std::uint32_t second) {
        low ^= first;
        high ^= second;
        const auto product = std::uint64_t{low ^ 0x9E3779B9} * (high ^ 0x85EBCA6B);
        low += static_cast<std::uint32_t>(product);
        high += static_cast<std::uint32_t>(product >> 32);
    };
    const char16_t* units = key.data();
    std::size_t left = key.size();
    for (; left >= 4; left -= 4, units += 4) mix(Pair(units), Pair(units + 2));
    if (left >= 2) mix(Pair(units), Pair(units + left - 2));
    if (left == 1) mix(*units, 0);
    mix(0, 0);
    return low ^ high;
}

bool IsLineEnd(std::u16string_view text, std::size_t at) {
    return text[at] == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n';
}

// Where the next "=" stands, or else the line or the text ends.
std::size_t FieldEnd(std::u16string_view text, std::size_t at) {
    while (at < text.size() && text[at] != u'=' && !IsLineEnd(text, at)) ++at;
    return at;
}

std::size_t NextLine(std::u16string_view text, std::size_t at) {
    const auto end = text.find(u"\r\n", at);
    return end == text.npos ? text.size() : end + 2;
}

}  // namespace

void DatEntries::Parse(std::u16string text) {
    if (text.size() >= kFree) throw RuntimeError(Error::OutOfMemory);
    text_ = std::move(text);
    slots_.clear();
    size_ = 0;
    for (std::size_t at = 0; at < text_.size();) at = ParseBatch(at);
}

// The slots of a large index lie outside the processor's caches: those of a whole batch are fetched while
// it is read.
std::size_t DatEntries::ParseBatch(std::size_t at) {
    if ((size_ + kBatch) * 2 > slots_.size()) Grow();
    const auto all = text();
    std::array<HashedKey, kBatch> batch;
    std::size_t count = 0;
    while (count < kBatch && at < all.size()) {
        const auto end = FieldEnd(all, at);
        if (end < all.size() && all[end] == u'=') {
            const auto key = all.substr(at, end - at);
            const auto hash = Hash(key);
            __builtin_prefetch(&slots_[Home(hash)], 1);
            batch[count++] = {hash, key};
        }
        at = NextLine(all, end);
    }
    std::for_each_n(batch.begin(), count, [this](const HashedKey& entry) { Insert(entry.hash, entry.key); });
    return at;
}

void DatEntries::Insert(std::uint32_t hash, std::u16string_view key) {
    Slot& slot = slots_[Locate(hash, key)];
    if (slot.position != kFree) throw RuntimeError(Error::KeyExists);
    slot = {hash, static_cast<std::uint32_t>(key.data() - text_.data())};
    ++size_;
}

void DatEntries::Grow() {
    std::vector<Slot> old(std::max(4 * kBatch, 2 * slots_.size()));
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (slot.position == kFree) continue;
        auto at = Home(slot.hash);
        while (slots_[at].position != kFree) at = After(at);
        slots_[at] = slot;
    }
}

bool DatEntries::Holds(const Slot& slot, std::uint32_t hash, std::u16string_view key) const {
    if (slot.hash != hash) return false;
    const auto line = text().substr(slot.position, key.size() + 1);
    return line.size() > key.size() && line.back() == u'=' && line.starts_with(key);
}

// The slot of the key, or else the free one where it belongs.
std::size_t DatEntries::Locate(std::uint32_t hash, std::u16string_view key) const {
    auto at = Home(hash);
    while (slots_[at].position != kFree && !Holds(slots_[at], hash, key)) at = After(at);
    return at;
}

std::optional<std::u16string_view> DatEntries::Find(std::u16string_view key) const {
    if (size_ == 0 || key.find(u'=') != key.npos) return std::nullopt;
    const Slot& slot = slots_[Locate(Hash(key), key)];
    if (slot.position == kFree) return std::nullopt;
    const auto start = slot.position + key.size() + 1;
    return text().substr(start, FieldEnd(text(), start) - start);
}

}  // namespace velk
