#include "integrity/dat_entries.h"

#include <gtest/gtest.h>

#include "fuzz/replay.h"
#include "integrity/dat_entries_model.h"

namespace velk::test {
namespace {

TEST(DatEntries, AgreeWithTheRulesReadLiterally) {
    Replay(&DatEntriesModel, corpus::dat_entries, 10000, 16);
    Replay(&DatEntriesModel, {}, 400, 400);
}

}  // namespace
}  // namespace velk::test
