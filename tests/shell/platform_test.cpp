// What the platform does to the shell's classes where it may depart from its documentation.
#include "platform/text.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"

#include <commdlg.h>

namespace velk::test {
namespace {

TEST(ShellPlatform, ShowsProperties) {
    const ScratchFolder folder;
    const auto shell = CreateObject<IDispatch>(__uuidof(::CShellExecute));
    const HRESULT shown = Call(shell.get(), L"ShowProperties", {Text(folder.Write(L"shown.txt", ""))}).code;
    EXPECT_EQ(Departs("ShellExecuteEx, properties") ? static_cast<HRESULT>(0x80044678) : S_OK, shown);
}

// The platform's font object answers with the name of an installed font that is like the one asked for. Here it gives
// whatever it is told to.
std::wstring fontName;
HRESULT WINAPI GetName(IFont*, BSTR* name) { return *name = Bstr(fontName).Detach(), S_OK; }

TEST(ShellPlatform, AFontsNameMayHave33BytesAndNoMore) {
    ReportRecorder recorder(Library());
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
    EXPECT_EQ(L"Show: Error: 9. Subscript out of range|", recorder.Shown());
}

}  // namespace
}  // namespace velk::test
