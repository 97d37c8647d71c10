// A last-in, first-out stack whose slots come and go in steps of a settable size. How many slots there are shows only
// in what fails; the values themselves lie in blocks that never move, so that no step costs more than the value it is
// about.
//
// Kept deliberately, since clients see it:
// - The step may be any number. One of 0 or less makes the next growth fail, or takes away slots that hold values;
//   Push has raised the count by then, and with no slot for the top only more slots or Clear help.
// - The number of slots is computed before they are made. So a step that asked for too many is still counted by the
//   steps that follow, until Clear.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "platform/run_time_error.h"

namespace velk {

template <class Value>
class ValueStack {
  public:
    using Number = std::int32_t;

    ValueStack() = default;
    ValueStack(const ValueStack&) = delete;
    ValueStack& operator=(const ValueStack&) = delete;
    // A value's destructor may call back into the stack and may even push.
    ~ValueStack() {
        while (!blocks_.empty()) Clear();
    }

    Number count() const noexcept { return count_; }
    Number slots() const noexcept { return slots_; }
    bool IsFull() const noexcept { return count_ >= slots_; }
    Number growBy() const noexcept { return growBy_; }
    void SetGrowBy(Number step) noexcept { growBy_ = step; }

    void Push(Value value) {
        if (count_ == kMost) throw RuntimeError(Error::Overflow);
        if (++count_ > slots_) Grow();
        MakePlaces();
        Renew(&Top(), std::move(value));
    }

    // An empty stack gives an empty value.
    Value Pop() {
        if (count_ == 0) return Value();
        RequireTop();
        Value top = stored_ == count_ ? TakeLast() : Value();
        --count_;
        const std::int64_t smaller = std::int64_t{capacity_} - growBy_;
        if (count_ < smaller) SetCapacity(smaller);
        return top;
    }

    // Null for an empty value.
    const Value* Peak() {
        if (count_ == 0) return nullptr;
        RequireTop();
        return stored_ == count_ ? &Top() : nullptr;
    }

    // Visits every value from the top; one without a place is empty.
    template <class Visit>
    void ForEach(Visit&& visit) {
        if (count_ > 0) RequireTop();
        const Value none{};
        for (Number at = count_; at > 0; --at) {
            visit(at > stored_ ? none : std::as_const(PlaceOf(at)));
        }
    }

    void Clear() noexcept {
        const auto dropped = std::exchange(blocks_, {});  // destroyed when all is in order
        spare_.reset();
        count_ = capacity_ = slots_ = stored_ = 0;
    }

  private:
    static constexpr Number kMost = std::numeric_limits<Number>::max();
    static constexpr Number kMostSlots = kMost / 16;  // of 16 bytes each, in 32-bit memory
    static constexpr Number kBlock = 128;

    void RequireTop() const {
        if (count_ > slots_) throw RuntimeError(Error::SubscriptOutOfRange);
    }

    void Grow() {
        SetCapacity(std::int64_t{capacity_} + growBy_);
        if (count_ <= slots_) return;
        while (stored_ > slots_) TakeLast();  // one by one: a value's destructor may change the stack
        throw RuntimeError(Error::SubscriptOutOfRange);
    }

    void SetCapacity(std::int64_t slots) {
        if (slots < std::numeric_limits<Number>::min() || slots > kMost) throw RuntimeError(Error::Overflow);
        capacity_ = static_cast<Number>(slots);
        if (capacity_ < 1) throw RuntimeError(Error::SubscriptOutOfRange);
        if (capacity_ > kMostSlots) throw RuntimeError(Error::OutOfMemory);
        slots_ = capacity_;
    }

    Value& PlaceOf(Number position) {
        const auto index = static_cast<std::size_t>(position - 1);
        return blocks_[index / kBlock][index % kBlock];
    }
    Value& Top() { return blocks_.back()[static_cast<std::size_t>((stored_ - 1) % kBlock)]; }

    // Without memory for its place, the Push did not happen.
    void MakePlaces() try {
        for (; stored_ < count_; ++stored_) {
            if (stored_ % kBlock != 0) continue;
            blocks_.push_back(spare_ ? std::move(spare_) : std::make_unique<Value[]>(kBlock));
        }
    } catch (...) {
        --count_;
        throw;
    }

    // What was there holds nothing any more. To exchange it would wait for what was stored there last.
    template <class... From>
    static void Renew(Value* place, From&&... from) {
        std::destroy_at(place);
        std::construct_at(place, std::forward<From>(from)...);
    }

    Value TakeLast() {
        Value last = std::move(Top());
        Renew(&Top());
        if (--stored_ % kBlock == 0) {
            spare_ = std::move(blocks_.back());
            blocks_.pop_back();
        }
        return last;
    }

    Number count_ = 0;
    Number capacity_ = 0;  // as computed
    Number slots_ = 0;     // as made
    Number growBy_ = 10;
    Number stored_ = 0;  // how many have a place in the blocks: as many as count_, or fewer after a Push that failed
    std::vector<std::unique_ptr<Value[]>> blocks_;
    std::unique_ptr<Value[]> spare_;  // the last that was emptied: pushing and popping at its edge allocates nothing
};

}  // namespace velk
