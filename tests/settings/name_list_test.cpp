#include "settings/name_list.h"

#include <gtest/gtest.h>

#include <string>

namespace velk {
namespace {

TEST(NameList, SplitsAtEachNul) {
    const std::string cases[][3] = {// the list with '.' for NUL, its names, those that are not empty
                                    {"", "", ""},          {"a.bc.", "a,bc,", "a,bc,"},
                                    {"a.cut", "a,", "a,"}, {"cut", "", ""},
                                    {"..", ",,", ""},      {".a..b.", ",a,,b,", "a,b,"}};
    for (const auto& [shown, kept, skipped] : cases) {
        std::string list = shown, names, nonEmpty;
        for (char& c : list) c = c == '.' ? '\0' : c;
        for (const auto name : SplitNames(list, EmptyNames::Keep)) names.append(name) += ',';
        for (const auto name : SplitNames(list, EmptyNames::Skip)) nonEmpty.append(name) += ',';
        EXPECT_EQ(kept, names) << shown;
        EXPECT_EQ(skipped, nonEmpty) << shown;
    }
}

}  // namespace
}  // namespace velk
