#include "integrity/dat_entries.h"

#include <bit>
#include <utility>

#include <emmintrin.h>

#include "integrity/crc32_engine.h"
#include "platform/run_time_error.h"

namespace velk {
namespace {

std::uint32_t Hash(std::u16string_view key, std::uint32_t before = crc32::kSeed) {
    return crc32::Update(before, key.data(), key.size() * sizeof(char16_t));
}

std::u16string_view UpTo(std::u16string_view text, auto end) { return text.substr(0, text.find(end)); }

// The first place of the unit from there on; the text's length if there is none.
std::size_t PlaceOf(char16_t unit, std::u16string_view text, std::size_t from = 0) {
    constexpr std::size_t kAtOnce = sizeof(__m128i) / sizeof(char16_t);
    const __m128i wanted = _mm_set1_epi16(static_cast<short>(unit));
    for (; from + kAtOnce <= text.size(); from += kAtOnce) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + from));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, wanted)));
        if (found != 0) return from + static_cast<std::size_t>(std::countr_zero(found)) / sizeof(char16_t);
    }
    while (from < text.size() && text[from] != unit) ++from;
    return from;
}

std::size_t EndOfLine(std::u16string_view text, std::size_t from) {
    std::size_t at = PlaceOf(u'\r', text, from);
    while (at < text.size() && text.substr(at, 2) != u"\r\n") at = PlaceOf(u'\r', text, at + 1);
    return at;
}

}  // namespace

// All entries are read before any gets its slot: the slots of a large file lie outside the processor's caches, and each
// is asked for some entries ahead.
void DatEntries::Parse(std::u16string text) {
    if (text.size() >= kFree) throw RuntimeError(Error::OutOfMemory);
    text_ = std::move(text);
    slots_.clear();
    size_ = 0;
    constexpr std::size_t kAhead = 16;
    const std::deque<Slot> entries = EntriesInOrder();
    slots_.resize(2 * entries.size() + 1);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const Slot& entry = entries[i];
        if (i + kAhead < entries.size()) __builtin_prefetch(&slots_[PlaceFor(entries[i + kAhead].hash)], 1);
        Slot& slot = slots_[Locate(entry.hash, [&](std::u16string_view key) { return key == KeyAt(entry.position); })];
        if (slot.position != kFree) throw RuntimeError(Error::KeyExists);
        slot = entry;
        ++size_;
    }
}

std::deque<DatEntries::Slot> DatEntries::EntriesInOrder() const {
    std::deque<Slot> entries;
    for (std::size_t start = 0, end = 0; start < text_.size(); start = end + 2) {
        end = EndOfLine(text_, start);
        const auto line = text().substr(start, end - start);
        const std::size_t length = PlaceOf(u'=', line);
        if (length < line.size()) entries.push_back({Hash(line.substr(0, length)), static_cast<std::uint32_t>(start)});
    }
    return entries;
}

std::u16string_view DatEntries::KeyAt(std::uint32_t position) const { return UpTo(text().substr(position), u'='); }

std::size_t DatEntries::PlaceFor(std::uint32_t hash) const { return std::uint64_t{hash} * slots_.size() >> 32; }

// The slot of the key, or else the free one where it belongs. `same` is asked about a key only where its hash is.
std::size_t DatEntries::Locate(std::uint32_t hash, auto same) const {
    std::size_t at = PlaceFor(hash);
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
