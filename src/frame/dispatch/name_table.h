// Member names of one interface, found without regard to case. Type library names are plain ASCII, so only ASCII
// letters are folded; no other character can match.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velk {

bool SameName(std::u16string_view one, std::u16string_view other) noexcept;

class NameTable {
  public:
    static constexpr std::int32_t kUnknown = -1;

    void Add(std::u16string_view name, std::int32_t id);
    std::int32_t Find(const char16_t* name) const noexcept;

  private:
    struct Entry {
        std::u16string name;
        std::uint32_t hash = 0;
        std::int32_t id = kUnknown;
    };
    void Place(Entry entry);
    void Grow();

    std::vector<Entry> slots_ = std::vector<Entry>(16);  // a power of two, at most half full
    std::size_t used_ = 0;
};

}  // namespace velk
