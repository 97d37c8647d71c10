// The platform's font object answers with the name of an installed font that is like the one asked for. Here it gives
// whatever it is told to.
#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/boxes.h"
#include "support/fake.h"
#include "support/late_bound.h"

#include <commdlg.h>

namespace velk::test {
namespace {

std::wstring fontName;
HRESULT WINAPI GetName(IFont*, BSTR* name) { return *name = Bstr(fontName).Detach(), S_OK; }

TEST(FontDialog, TakesANameOf33BytesAndNoMore) {
    std::wstring shown;
    const Boxes boxes([&](HWND, LPCWSTR text, LPCWSTR, UINT) { shown += text; });
    const auto dialog = CreateObject<IDispatch>(__uuidof(::CFontDialog));
    const auto font = ComPtr<IDispatch>(Get(dialog.get(), L"Font").value.pdispVal).As<IFont>(IID_IFont);
    void** const slot = *reinterpret_cast<void***>(font.get()) + 3;  // the first one behind IUnknown's
    void* const original = WriteInto(slot, reinterpret_cast<void*>(&GetName));
    std::string faces;
    const Fake choose("ChooseFontA", &ChooseFontA, [&](CHOOSEFONTA* record) {
        faces += &record->lpLogFont->lfFaceName[0] + std::string("|");
        return FALSE;
    });
    for (const int length : {0, 32, 33, 34}) fontName.assign(length, L'F'), Call(dialog.get(), L"Show");
    WriteInto(slot, original);
    EXPECT_EQ('|' + std::string(32, 'F') + '|' + std::string(33, 'F') + '|', faces);
    EXPECT_EQ(L"Error: 9. Subscript out of range", shown);
}

}  // namespace
}  // namespace velk::test
