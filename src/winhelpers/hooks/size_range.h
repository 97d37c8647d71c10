#pragma once

#include <cstdint>

namespace velk {

// The least and the greatest size in one direction; 0 while there is no such limit. A limit is set for good: it can
// only be replaced by another.
class SizeRange {
  public:
    using Setter = bool (SizeRange::*)(std::int32_t) noexcept;

    std::int32_t least() const noexcept { return least_; }
    std::int32_t most() const noexcept { return most_; }

    // False, and nothing changes, for a value that is no limit or that contradicts the other one.
    bool SetLeast(std::int32_t value) noexcept {
        if (value < 1 || (most_ >= 1 && value > most_)) return false;
        least_ = value;
        return true;
    }
    bool SetMost(std::int32_t value) noexcept {
        if (value < 1 || value < least_) return false;
        most_ = value;
        return true;
    }

    // Into the system's own limits.
    template <class Number>
    void Apply(Number& least, Number& most) const noexcept {
        if (least_ > 0) least = least_;
        if (most_ > 0) most = most_;
    }

  private:
    std::int32_t least_ = 0;
    std::int32_t most_ = 0;
};

}  // namespace velk
