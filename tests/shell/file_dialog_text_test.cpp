#include "shell/file_dialog_text.h"

#include <gtest/gtest.h>

#include "platform/run_time_error.h"

namespace velk::file_dialog {
namespace {

using namespace std::string_literals;

TEST(FileDialogText, AFilterIsAListOfTexts) {
    EXPECT_EQ(u"A\0a\0B\0b\0\0"s, FilterList(u"A|a|B|b"));
    EXPECT_EQ(u"\0\0"s, FilterList(u""));
    EXPECT_EQ(u"\0A\0\0\0\0"s, FilterList(u"|A||"));
}

TEST(FileDialogText, PaddingFillsUpToTheSizeAndNoFurther) {
    EXPECT_EQ(u"ab\0\0"s, Padded(u"ab", 4));
    EXPECT_EQ(u"ab"s, Padded(u"ab", 2));
    EXPECT_EQ(u""s, Padded(u"", 0));
    EXPECT_EQ(32767u, Padded(u"ab", 32767).size());
    const std::pair<std::u16string, std::int16_t> tooLong[] = {
        {u"abc", 2}, {u"a", 0}, {u"", -1}, {u"a", -32768}, {std::u16string(40000, u'x'), 32767}};
    for (const auto& [text, size] : tooLong) {
        try {
            Padded(text, size);
            ADD_FAILURE() << size;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(5, error.number());
        }
    }
}

TEST(FileDialogText, TrimmingEndsAtTheFirstPairOfNuls) {
    const std::pair<std::u16string, std::u16string> cases[] = {
        {u""s, u""},
        {u"abc"s, u""},
        {u"abc\0"s, u""},
        {u"abc\0\0"s, u""},  // the pair ends the buffer
        {u"abc\0\0\0"s, u"abc"},
        {u"\0\0"s, u""},
        {u"\0\0\0"s, u""},
        {u"\0"s, u""},
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
    EXPECT_EQ("d\0a\0b\0\0"s, left("d\0a\0b\0\0"s, "longer\0"s));   // several names
    EXPECT_EQ("d\0a\0b\0\0"s, left("d\0a\0b\0\0"s, "d a b\0\0"s));  // the same ones again
    EXPECT_EQ("full"s, left("full"s, "long"s));
    EXPECT_EQ(""s, left(""s, ""s));
}

}  // namespace
}  // namespace velk::file_dialog
