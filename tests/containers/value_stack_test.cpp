#include "containers/value_stack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "containers/list_operations.h"

namespace velk::test {
namespace {

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();

// The stack as it is described, one step after the other. 0 is the empty value.
class LiteralStack {
  public:
    int count = 0;
    int growBy = 10;

    void Push(int value) {
        ++count;
        if (!HasSlot()) Resize(std::int64_t{capacity_} + growBy);
        if (!HasSlot()) throw RuntimeError(Error::SubscriptOutOfRange);
        Top() = value;
    }
    int Pop() {
        if (count == 0) return 0;
        const int result = Peak();
        --count;
        const std::int64_t smaller = std::int64_t{capacity_} - growBy;
        if (count < smaller) Resize(smaller);
        return result;
    }
    int Peak() {
        if (count == 0) return 0;
        if (!HasSlot()) throw RuntimeError(Error::SubscriptOutOfRange);
        return Top();
    }
    void Clear() {
        items_.clear();
        capacity_ = count = 0;
    }
    int slots() const { return static_cast<int>(items_.size()); }

  private:
    bool HasSlot() const { return count <= slots(); }
    int& Top() { return items_[static_cast<std::size_t>(count) - 1]; }

    void Resize(std::int64_t capacity) {
        if (capacity > kMost || capacity < kLeast) throw RuntimeError(Error::Overflow);
        capacity_ = static_cast<int>(capacity);
        if (capacity < 1) throw RuntimeError(Error::SubscriptOutOfRange);
        if (capacity > 100'000'000) throw RuntimeError(Error::OutOfMemory);
        items_.resize(static_cast<std::size_t>(capacity));
    }

    std::vector<int> items_;
    int capacity_ = 0;
};

int PeakOf(ValueStack<int>& stack) {
    const int* top = stack.Peak();
    return top ? *top : 0;
}

class ValueStackModel : public testing::TestWithParam<unsigned> {};

TEST_P(ValueStackModel, AnswersAsDescribedAfterEveryStep) {
    std::mt19937 random(GetParam());
    const auto pick = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    LiteralStack literal;
    ValueStack<int> stack;
    const auto setGrowBy = [&](int step) { stack.SetGrowBy(literal.growBy = step); };
    for (int step = 0; step < 20000; ++step) {
        const int wave = step / 500 % 2;  // now it grows, now it shrinks
        const int value = pick(1, 1000);
        if (const int choice = pick(0, 999); choice < 10) {
            setGrowBy(pick(1, 60));
        } else if (choice < 13 && GetParam() % 2) {
            const int odd[] = {0, -1, -9, pick(-100, 100), kMost, kLeast, kMost / 2};
            setGrowBy(odd[pick(0, 6)]);
        } else if (choice == 13) {
            literal.Clear();
            stack.Clear();
        } else if (choice % 10 < 4 + 2 * wave) {
            ASSERT_EQ(Answer([&] { return literal.Push(value), 0; }), Answer([&] { return stack.Push(value), 0; }));
        } else {
            ASSERT_EQ(Answer([&] { return literal.Pop(); }), Answer([&] { return stack.Pop(); })) << "step " << step;
        }
        ASSERT_EQ(literal.count, stack.count()) << "step " << step;
        ASSERT_EQ(literal.slots(), stack.slots()) << "step " << step;
        ASSERT_EQ(Answer([&] { return literal.Peak(); }), Answer([&] { return PeakOf(stack); })) << "step " << step;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ValueStackModel, testing::Range(1u, 9u));

TEST(ValueStack, IsInOrderWhenAValueGoes) {
    std::vector<int> seen;
    {
        ValueStack<Farewell> stack;
        const auto push = [&] {
            stack.Push(FarewellWith([&] {
                seen.push_back(stack.count());
                Answer([&] { return stack.Push(Farewell()), 0; });
            }));
        };
        push();
        stack.Pop();
        push();
        stack.Clear();
        EXPECT_EQ((std::vector{0, 0}), seen);
        EXPECT_EQ(1, stack.count());
        push();
        // A growth by less than nothing takes away the slots from 2 on.
        for (int i = 3; i <= 10; ++i) stack.Push(Farewell());
        stack.SetGrowBy(-9);
        EXPECT_THROW(stack.Push(Farewell()), RuntimeError);
        EXPECT_EQ((std::vector{0, 0, 11}), seen);
        stack.Clear();
        stack.SetGrowBy(10);
        push();
    }
    EXPECT_EQ((std::vector{0, 0, 11, 0}), seen);
}

}  // namespace
}  // namespace velk::test
