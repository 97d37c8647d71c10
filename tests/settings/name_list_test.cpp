#include <gtest/gtest.h>

#include "fuzz/replay.h"
#include "settings/name_list_model.h"

namespace velk::test {
namespace {

TEST(NameList, SplitsAtEachNul) {
    Replay(&NameListModel, corpus::name_list, 2000, 12);
    EXPECT_EQ((std::vector<std::string_view>{"a", "", "bc"}),
              SplitNames(std::string_view("a\0\0bc\0cut", 9), EmptyNames::Keep));
}

}  // namespace
}  // namespace velk::test
