#include "containers/text_buffer.h"

#include <gtest/gtest.h>

#include "containers/text_buffer_model.h"
#include "fuzz/replay.h"

namespace velk::test {
namespace {

TEST(TextBuffer, HoldsWhatTheDescribedBufferHolds) { Replay(&TextBufferModel, corpus::text_buffer, 400, 64); }

}  // namespace
}  // namespace velk::test
