#include "containers/value_stack.h"

#include <gtest/gtest.h>

#include "containers/value_stack_model.h"
#include "fuzz/replay.h"

namespace velk::test {
namespace {

TEST(ValueStack, AnswersAsDescribedAfterEveryStep) { Replay(&ValueStackModel, corpus::value_stack, 150, 500); }

}  // namespace
}  // namespace velk::test
