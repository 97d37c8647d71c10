// The stack as it is described, one step after the other. 0 is the empty value.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "containers/value_stack.h"
#include "fuzz/model.h"

namespace velk::test {

class LiteralStack {
  public:
    int count = 0;
    int growBy = 10;

    void Push(int value) {
        if (++count > slots()) Resize(std::int64_t{capacity_} + growBy);
        Top() = value;
    }
    int Pop() {
        const int result = Peak();
        if (count == 0) return 0;
        --count;
        const std::int64_t smaller = std::int64_t{capacity_} - growBy;
        if (count < smaller) Resize(smaller);
        return result;
    }
    int Peak() { return count == 0 ? 0 : Top(); }
    void Clear() {
        items_.clear();
        capacity_ = count = 0;
    }
    int slots() const { return static_cast<int>(items_.size()); }

  private:
    int& Top() {
        if (count > slots()) throw RuntimeError(Error::SubscriptOutOfRange);
        return items_[static_cast<std::size_t>(count) - 1];
    }
    void Resize(std::int64_t capacity) {
        if (capacity != static_cast<std::int32_t>(capacity)) throw RuntimeError(Error::Overflow);
        capacity_ = static_cast<int>(capacity);
        if (capacity < 1) throw RuntimeError(Error::SubscriptOutOfRange);
        if (capacity > 100'000'000) throw RuntimeError(Error::OutOfMemory);
        items_.resize(static_cast<std::size_t>(capacity));
    }

    std::vector<int> items_;
    int capacity_ = 0;
};

inline void ValueStackModel(Bytes& bytes) {
    constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
    LiteralStack literal;
    ValueStack<int> stack;
    const bool hasOddSteps = bytes.Next() % 2;
    for (int value = 0; !bytes.empty();) {
        const int operation = bytes.Next() % 16, many = bytes.Next() % 80;
        const int odd[] = {0, -1, -9, many - 40, kMost, kLeast, kMost / 2};
        if (operation < 2) {
            stack.SetGrowBy(literal.growBy = operation == 1 && hasOddSteps ? odd[many % 7] : 1 + many % 60);
        } else if (operation == 2) {
            literal.Clear();
            stack.Clear();
        } else {
            for (int i = 0; i < many; ++i) {
                ++value;
                const bool isPush = operation < 9;
                Require(Answer([&] { return isPush ? literal.Push(value), 0 : literal.Pop(); }) ==
                        Answer([&] { return isPush ? stack.Push(value), 0 : stack.Pop(); }));
                Require(literal.count == stack.count() && literal.slots() == stack.slots());
                const auto top = [&] { return stack.Peak() ? *stack.Peak() : 0; };
                Require(Answer([&] { return literal.Peak(); }) == Answer(top));
            }
        }
    }
}

}  // namespace velk::test
