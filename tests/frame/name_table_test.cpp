#include "frame/dispatch/name_table.h"

#include <gtest/gtest.h>

namespace velk {
namespace {

TEST(NameTable, FindsEveryNameInAnyCaseAndNothingElse) {
    NameTable names;
    const auto name = [](int i) {
        return u"Member" + std::u16string(1 + i % 7, u'A' + i / 7 % 26) + char16_t(u'0' + i % 10);
    };
    for (int i = 0; i < 200; ++i) names.Add(name(i), i);
    names.Add(u"Get_Z", 1000);
    for (int i = 0; i < 200; ++i) EXPECT_EQ(i, names.Find(name(i).c_str()));
    const std::pair<const char16_t*, std::int32_t> cases[] = {
        {u"memberaa1", 1},
        {u"MEMBERAAA2", 2},
        {u"Member", NameTable::kUnknown},
        {u"MemberA0 ", NameTable::kUnknown},
        {u"GET_Z", 1000},
        {u"Get\x7FZ", NameTable::kUnknown},  // the hash folds "_" and DEL alike, the comparison must not
        {u"MemberA\x10", NameTable::kUnknown},
        {u"M\u0117mberA0", NameTable::kUnknown},
        {u"\uFF2DemberA0", NameTable::kUnknown}};
    for (const auto& [text, id] : cases) EXPECT_EQ(id, names.Find(text));
}

}  // namespace
}  // namespace velk
