#include "sysinfo/identifier_text.h"

#include <gtest/gtest.h>

#include "fuzz/replay.h"
#include "sysinfo/identifier_text_model.h"

namespace velk::test {
namespace {

TEST(IdentifierText, HasNoPaddingAndAnUndividedLastField) {
    Replay(&IdentifierTextModel, corpus::identifier_text, 1000, 20);
    EXPECT_EQ("{0-0-0-00000000}", IdentifierText(0, 0, 0, std::array<std::uint8_t, 8>()));
}

}  // namespace
}  // namespace velk::test
