// CConCat as its clients see it.
#include <gtest/gtest.h>

#include <string>

#include "frame/text.h"
#include "support/client.h"
#include "support/late_bound.h"

namespace velk::test {
namespace {

TEST(ConCat, BuildsATextFromPieces) {
    const auto builder = CreateObject<_CConCat>(__uuidof(::CConCat));
    std::wstring expected;
    for (const std::wstring& piece : {std::wstring(), std::wstring(L"abc"), std::wstring(L"\0x", 2),
                                      std::wstring(20000, L'n'), std::wstring(L"end")}) {
        Bstr argument(piece);
        BSTR raw = argument.get();
        EXPECT_EQ(S_OK, builder->Append(&raw));
        expected += piece;
        Bstr text;
        LONG length = 0;
        EXPECT_EQ(S_OK, builder->get_Text(text.Receive()));
        EXPECT_EQ(S_OK, builder->get_Length(&length));
        EXPECT_EQ(expected, View(text.get()));
        EXPECT_EQ(expected.size(), static_cast<std::size_t>(length));
    }
}

TEST(ConCat, TakesATextAndGoesOnFromIt) {
    const auto builder = CreateObject<IDispatch>(__uuidof(::CConCat));
    const Variant start = Text(L"xy"), piece = Text(L"z");
    EXPECT_EQ(L"", TextOf(Get(builder.get(), L"Text").value));
    EXPECT_EQ(S_OK, Let(builder.get(), L"Text", {start}).result);
    EXPECT_EQ(S_OK, Call(builder.get(), L"Append", {piece}).result);
    EXPECT_EQ(L"xyz", TextOf(Get(builder.get(), L"Text").value));
    EXPECT_EQ(3, Get(builder.get(), L"Length").value.lVal);
    EXPECT_EQ(L"xyz", TextOf(Get(builder.get(), L"Text").value)) << "reading leaves it as it was";
}

}  // namespace
}  // namespace velk::test
