#include "frame/dispatch/name_table.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace velk {
namespace {

constexpr char16_t Fold(char16_t c) noexcept { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c | 0x20) : c; }

// Folds every character the same way, letters or not: that is cheap, and the comparison settles the rest.
constexpr std::uint32_t Mix(std::uint32_t hash, char16_t c) noexcept { return std::rotl(hash, 5) ^ (c | 0x20u); }

}  // namespace

bool SameName(std::u16string_view one, std::u16string_view other) noexcept {
    if (one.size() != other.size()) return false;
    // Most callers write a name as the type library does.
    if (std::memcmp(one.data(), other.data(), one.size() * sizeof(char16_t)) == 0) return true;
    return std::equal(one.begin(), one.end(), other.begin(),
                      [](char16_t a, char16_t b) { return a == b || Fold(a) == Fold(b); });
}

void NameTable::Add(std::u16string_view name, std::int32_t id) {
    std::uint32_t hash = 0;
    for (const char16_t c : name) hash = Mix(hash, c);
    if (2 * (used_ + 1) > slots_.size()) Grow();
    Place({std::u16string(name), hash, id});
    ++used_;
}

void NameTable::Place(Entry entry) {
    std::size_t at = entry.hash & (slots_.size() - 1);
    while (slots_[at].id != kUnknown) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = std::move(entry);
}

void NameTable::Grow() {
    std::vector<Entry> old = std::exchange(slots_, std::vector<Entry>(2 * slots_.size()));
    for (Entry& entry : old) {
        if (entry.id != kUnknown) Place(std::move(entry));
    }
}

std::int32_t NameTable::Find(const char16_t* name) const noexcept {
    std::uint32_t hash = 0;
    const char16_t* end = name;
    for (; *end; ++end) hash = Mix(hash, *end);
    const std::u16string_view wanted(name, static_cast<std::size_t>(end - name));
    for (std::size_t at = hash & (slots_.size() - 1); slots_[at].id != kUnknown; at = (at + 1) & (slots_.size() - 1)) {
        if (slots_[at].hash == hash && SameName(slots_[at].name, wanted)) return slots_[at].id;
    }
    return kUnknown;
}

}  // namespace velk
