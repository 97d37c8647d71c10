#include "shell/file_dialog_text.h"

#include <gtest/gtest.h>

namespace velk::file_dialog {
namespace {

using namespace std::string_literals;

TEST(FileDialogText, TrimmingEndsAtTheFirstPairOfNuls) {
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u""s, u""},
        {u"abc"s, u""},
        {u"abc\0"s, u""},
        {u"abc\0\0"s, u""},  // the pair ends the buffer
        {u"abc\0\0\0"s, u"abc"},
        {u"\0\0"s, u""},
        {u"\0\0\0"s, u""},
        {u"dir\0a\0b\0\0xyz\0\0\0"s, u"dir a b"},
        {u"\0a\0\0\0"s, u" a"},
        {u"a\0b\0c"s, u""},
    };
    for (const auto& [buffer, text] : cases) EXPECT_EQ(text, TrimNulls(buffer)) << buffer.size();
}

TEST(FileDialogText, OnlyWhatStoodThereBeforeCountsAsRemains) {
    const auto left = [](std::string buffer, std::string before) {
        DropRemains(buffer, before);
        return buffer;
    };
    EXPECT_EQ("b\0\0\0\0\0"s, left("b\0nger"s, "longer"s));
    EXPECT_EQ("a b\0\0\0\0\0"s, left("a b\0\"b\"\0"s, "\"a\"\"\"b\"\0"s));
    EXPECT_EQ("d\0a\0b\0\0"s, left("d\0a\0b\0\0"s, "longer\0"s));     // several names
    EXPECT_EQ("d\0a\0b\0\0"s, left("d\0a\0b\0\0"s, "d\0a\0b\0\0"s));  // the same ones again
    EXPECT_EQ("full"s, left("full"s, "long"s));
    EXPECT_EQ(""s, left(""s, ""s));
}

}  // namespace
}  // namespace velk::file_dialog
