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
    EXPECT_EQ(1, names.Find(u"memberaa1"));
    EXPECT_EQ(2, names.Find(u"MEMBERAAA2"));
    EXPECT_EQ(1000, names.Find(u"GET_Z"));
    // The hash folds "_" and DEL alike, the comparison must not.
    for (const char16_t* other :
         {u"Member", u"MemberA0 ", u"Get\x7FZ", u"MemberA\x10", u"M\u0117mberA0", u"\uFF2DemberA0"}) {
        EXPECT_EQ(NameTable::kUnknown, names.Find(other));
    }
    EXPECT_FALSE(SameName(u"Member", u"MemberA"));
}

}  // namespace
}  // namespace velk
