#include "containers/value_stack.h"

#include <gtest/gtest.h>

#include <vector>

#include "containers/farewell.h"
#include "containers/value_stack_model.h"
#include "fuzz/replay.h"

namespace velk::test {
namespace {

TEST(ValueStack, AnswersAsDescribedAfterEveryStep) { Replay(&ValueStackModel, corpus::value_stack, 150, 500); }

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
