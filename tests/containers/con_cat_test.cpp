// CConCat as its clients see it.
#include <gtest/gtest.h>

#include <string>

#include "frame/text.h"
#include "support/client.h"

namespace velk::test {
namespace {

TEST(ConCat, GoesOnFromATextWithPieces) {
    const auto builder = CreateObject<_CConCat>(__uuidof(::CConCat));
    std::wstring expected = L"start";
    EXPECT_EQ(S_OK, builder->put_Text(Bstr(expected).get()));
    for (const std::wstring& piece : {std::wstring(), std::wstring(L"\0x", 2), std::wstring(20000, L'n')}) {
        Bstr argument(piece), text;
        BSTR raw = argument.get();
        EXPECT_EQ(S_OK, builder->Append(&raw));
        expected += piece;
        LONG length = 0;
        EXPECT_EQ(S_OK, builder->get_Text(text.Receive()));
        EXPECT_EQ(S_OK, builder->get_Length(&length));
        EXPECT_EQ(expected, View(text.get()));
        EXPECT_EQ(expected.size(), static_cast<std::size_t>(length));
    }
}

}  // namespace
}  // namespace velk::test
