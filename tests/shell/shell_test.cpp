// What facts cannot say of the shell's classes: the real pointer of the virtual screen over real windows, a real
// compiled help file, and a font whose name is whatever it is told to be.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <string>
#include <thread>

#include "platform/text.h"
#include "support/boxes.h"
#include "support/client.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/test_window.h"

#include <commdlg.h>

namespace velk::test {
namespace {

const std::map<HCURSOR, char> kShapes{{LoadCursorW(nullptr, IDC_ARROW), 'a'},
                                      {LoadCursorW(nullptr, IDC_WAIT), 'w'},
                                      {LoadCursorW(nullptr, IDC_CROSS), 'c'}};

char Shape() { return kShapes.contains(GetCursor()) ? kShapes.at(GetCursor()) : '?'; }

// Moves the pointer over a window, as a user does, and gives what it looks like there.
char Over(HWND window) {
    static int step = 0;
    RECT place{};
    GetWindowRect(window, &place);
    SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW);
    SetCursorPos(place.left + 100 + step++ % 5, place.top + 100);
    MsgWaitForMultipleObjects(0, nullptr, FALSE, 500, QS_MOUSEMOVE);  // on a busy machine the move takes its time
    PumpMessages();
    return Shape();
}

// A window that chooses a cross for itself, wherever the pointer is in it. Asked for it (WM_APP), it gives what the
// pointer looks like over it in its own thread.
std::optional<LRESULT> ChooseCross(HWND window, UINT message, WPARAM, LPARAM) {
    if (message == WM_APP) return Over(window);
    if (message != WM_SETCURSOR) return std::nullopt;
    SetCursor(LoadCursorW(nullptr, IDC_CROSS));
    return TRUE;
}

ComPtr<IDispatch> New() { return CreateObject<IDispatch>(__uuidof(::CHourglass)); }
void Set(const ComPtr<IDispatch>& hourglass, bool value) {
    EXPECT_EQ(S_OK, Let(hourglass.get(), L"Value", {Arg(value)}).result);
    EXPECT_EQ(value ? L"True" : L"False", Fact(hourglass.get(), L"Value"));
}

// 1 0 + -  sets it and takes it away, by a second object; n d: a third object comes and goes, the first one is released
// a c t =  what the pointer is over a window with an arrow, one with a cross, one of another thread, where it is
// o v      moves it over no window of ours, as a cross; what the first object tells of itself
TEST(Hourglass, CoversEveryWindowUntilAnyObjectTakesItAway) {
    const TestWindow arrow, cross{WS_OVERLAPPEDWINDOW, &ChooseCross};
    std::atomic<HWND> other = nullptr;
    const std::jthread thread([&] {
        const TestWindow window(WS_OVERLAPPEDWINDOW, &ChooseCross);
        other = window.get();
        for (MSG message; GetMessageW(&message, nullptr, 0, 0);) DispatchMessageW(&message);
    });
    ASSERT_TRUE(WaitUntil([&] { return other != nullptr; }));
    ComPtr<IDispatch> first = New(), second = New();
    std::string seen;
    const std::map<char, std::function<void()>> actions{
        {'1', [&] { Set(first, true); }},
        {'0', [&] { Set(first, false); }},
        {'+', [&] { Set(second, true); }},
        {'-', [&] { Set(second, false); }},
        {'n', [&] { New() = nullptr; }},
        {'d', [&] { first = nullptr; }},
        {'a', [&] { seen += Over(arrow.get()); }},
        {'c', [&] { seen += Over(cross.get()); }},
        {'t', [&] { seen += static_cast<char>(SendMessageW(other, WM_APP, 0, 0)); }},
        {'=', [&] { seen += Shape(); }},
        {'o', [&] { SetCursor(LoadCursorW(nullptr, IDC_CROSS)), SetCursorPos(1000, 700); }},
        {'v', [&] { seen += Fact(first.get(), L"Value") == L"True" ? 'T' : 'F'; }}};
    for (const char action : std::string("ac1=ac0=ac11+-cv1nc1t0t1cdcn=on=o+=-")) actions.at(action)();
    PostMessageW(other, WM_QUIT, 0, 0);
    EXPECT_EQ("acwwwcaccTcwcwccaw", seen);
}

// With the hook on the way.
TEST(Hourglass, MayLoseItsLastReferenceToTheWindowThatChooses) {
    ComPtr<IDispatch> hourglass = New();
    const TestWindow arrow, window(WS_OVERLAPPEDWINDOW, [&](HWND, UINT message, auto...) -> std::optional<LRESULT> {
        if (message == WM_SETCURSOR) hourglass = nullptr;
        return std::nullopt;
    });
    Over(arrow.get());
    Set(hourglass, true);
    Over(window.get());
    EXPECT_TRUE(CanUnload());
    EXPECT_EQ('a', Over(arrow.get()));
}

TEST(Hourglass, MayBeSetByTheWindowThatChooses) {
    const ComPtr<IDispatch> hourglass = New();
    int asked = 0;
    const TestWindow window(WS_OVERLAPPEDWINDOW, [&](HWND, UINT message, auto...) -> std::optional<LRESULT> {
        if (message == WM_SETCURSOR) Set(hourglass, ++asked < 20);
        return std::nullopt;
    });
    Over(window.get());
    const int before = asked;
    Set(hourglass, true);
    EXPECT_EQ(before + 1, asked) << "asked once";
}

// Where the build could make one.
TEST(CompiledHelp, IsShownByTheEngine) {
    const std::wstring real = BuiltFile(L"tests\\help\\scale.chm");
    if (!std::filesystem::exists(real)) {
        GTEST_SKIP() << "no help file: chmcmd (package fp-utils) was not there when this was built";
    }
    const auto help = CreateObject<IDispatch>(__uuidof(::CHtmlHelp));
    const auto helpWindow = [] { return FindWindowA("HH Parent", nullptr); };
    Let(help.get(), L"HelpFile", {Text(real)});
    EXPECT_EQ(S_OK, Call(help.get(), L"OpenContents").result);
    char title[100] = "";
    GetWindowTextA(helpWindow(), title, sizeof title);
    EXPECT_STREQ("Scale help", title);
    PumpMessages();
    DestroyWindow(helpWindow());
}

// The platform's own font object answers with the name of an installed font that is like the one asked for.
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
