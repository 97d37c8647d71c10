#include "settings/name_list.h"

#include <gtest/gtest.h>

#include <string>

#include "support/guarded_buffer.h"

namespace velk {
namespace {

struct Case {
    std::string list;  // with '.' for NUL
    std::string kept, skipped;
};

TEST(NameList, SplitsAtEachNul) {
    const Case cases[] = {
        {"", "", ""},     {"a.bc.", "a,bc,", "a,bc,"},  {"a.cut", "a,", "a,"},       {"cut", "", ""},
        {"..", ",,", ""}, {".a..b.", ",a,,b,", "a,b,"}, {" . x.", " , x,", " , x,"},
    };
    for (const Case& c : cases) {
        // The end of the list is the end of readable memory.
        const test::GuardedBuffer buffer(1);
        const auto bytes = buffer.Last(c.list.size());
        for (std::size_t i = 0; i < c.list.size(); ++i) bytes[i] = c.list[i] == '.' ? '\0' : c.list[i];
        const std::string_view list(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        std::string kept, skipped;
        for (const auto name : SplitNames(list, EmptyNames::Keep)) kept.append(name) += ',';
        for (const auto name : SplitNames(list, EmptyNames::Skip)) skipped.append(name) += ',';
        EXPECT_EQ(c.kept, kept) << c.list;
        EXPECT_EQ(c.skipped, skipped) << c.list;
    }
}

}  // namespace
}  // namespace velk
