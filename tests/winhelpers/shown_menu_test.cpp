// cIconMenu in the system's own menu loops: keys, screen readers, and what goes while a menu is open.
#include <optional>
#include <string_view>

#include "support/departures.h"
#include "support/gdi_objects.h"
#include "winhelpers/menu_fixture.h"

#include <oleacc.h>

namespace velk::test {
namespace {

using namespace std::string_view_literals;

// A real menu loop. Does one step each time that it waits for input; then closes it.
class ShownMenu : public IconMenuTest {
  protected:
    ShownMenu() { EXPECT_EQ(S_OK, Attach(window_.get())); }
    UINT Show(const std::vector<std::function<void()>>& steps) {
        std::size_t next = 0;
        window_.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != WM_ENTERIDLE) return std::nullopt;
            if (next == steps.size()) return EndMenu(), 0;
            steps[next++]();
            PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);  // so that it waits once more
            return 0;
        };
        ShowWindow(window_.get(), SW_SHOW);
        const auto command = TrackPopupMenu(menu, TPM_RETURNCMD, 5, 5, 0, window_.get(), nullptr);
        window_.handler = nullptr;
        PumpMessages();
        return static_cast<UINT>(command);
    }
    std::vector<ItemOfMenu> Unlit() const {
        auto items = ItemsOf(menu);
        for (ItemOfMenu& item : items) item.state &= ~UINT{MFS_HILITE};
        return items;
    }
    std::function<void()> Press(UINT key) const {
        return [=, this] { PostMessageW(window_.get(), WM_KEYDOWN, key, 1); };
    }

    const std::vector<ItemOfMenu> before = Unlit();
};

// The same keys in the system's own menu and in a drawn one.
TEST_F(ShownMenu, AnswersKeysAsTheSystemsOwn) {
    const struct {
        std::vector<UINT> keys;
        UINT command;
        bool isLetter = false;  // of an item without a mnemonic
    } cases[] = {
        {{'O'}, CommandAt(kOpen)},
        {{VK_DOWN, 'K'}, CommandAt(kChecked)},
        {{'F'}, CommandAt(kDefault)},
        {{'D'}, 0},  // disabled
        {{'Q'}, 0},
        {{'X'}, CommandAt(kLong), true},
        {{'M', 'I'}, 300},
        {{'M', VK_RETURN}, 300},
        {{'M', VK_LEFT, VK_HOME, VK_RETURN}, CommandAt(kOpen)},
        {{'M', VK_ESCAPE, VK_HOME, VK_RETURN}, CommandAt(kOpen)},
        {{VK_ESCAPE, VK_RETURN}, 0},
        {{VK_DOWN, VK_DOWN, VK_RETURN}, CommandAt(kSave)},
        {{VK_DOWN, VK_DOWN, VK_DOWN, VK_RETURN}, CommandAt(kChecked)},  // past the separator
        {{VK_UP, VK_RETURN}, CommandAt(kLong)},
        {{VK_END, VK_RETURN}, CommandAt(kLong)},
        {{VK_END, VK_DOWN, VK_RETURN}, CommandAt(kOpen)},
        {{VK_END, VK_HOME, VK_RETURN}, CommandAt(kOpen)},
        {{VK_HOME, VK_RIGHT, VK_RETURN}, CommandAt(kDefault)},  // in the second column
    };
    for (const bool drawn : {false, true}) {
        drawn ? Attach(window_.get()) : icons_->Detach();
        for (const auto& [keys, command, isLetter] : cases) {
            std::vector<std::function<void()>> steps;
            for (const UINT key : keys) steps.push_back(Press(key));
            EXPECT_EQ(!drawn && isLetter && Departs("TrackPopupMenu, letters") ? 0 : command, Show(steps))
                << drawn << ", " << &keys - &cases[0].keys;
        }
        EXPECT_EQ(before, Unlit());
    }
}

TEST_F(ShownMenu, MayLoseItsIconsOrItsWindow) {
    Show({Press('M'), Press('I')});
    EXPECT_EQ(Departs("TrackPopupMenu"), (ItemsOf(menu)[kMore].state & MFS_HILITE) != 0);
    Show({[&] { icons_->Detach(); }, Press(VK_DOWN)});
    EXPECT_EQ(before, Unlit());
    std::string drawn;
    const HMENU more = before[kMore].submenu;
    Show({[&] { Attach(window_.get()); }, Press('M'), [&] { drawn = Drawn(more); }});
    EXPECT_EQ("d", drawn) << "attached in the middle of a loop";
    EXPECT_EQ(".", Drawn(more));
    Show({[&] { icons_->ClearIcons(); }, [&] { window_.Destroy(), EndMenu(); }});
    EXPECT_EQ(before, Unlit());
    EXPECT_EQ(0, AttachedTo());
}

// As a screen reader gets it, which runs in another process: from the popup's window through its menu to the record.
std::wstring Spoken(UINT position) {
    const HWND popup = FindWindowW(L"#32768", nullptr);
    const auto shown = reinterpret_cast<HMENU>(SendMessageW(popup, MN_GETHMENU, 0, 0));
    MSAAMENUINFO record{};
    const auto* const data = reinterpret_cast<const void*>(ItemsOf(shown).at(position).data);
    if (!ReadProcessMemory(GetCurrentProcess(), data, &record, sizeof record, nullptr)) return L"unreadable";
    if (record.dwMSAASignature != MSAA_MENU_SIG) return L"no record";
    std::wstring text(record.cchWText + 1, L'?');
    ReadProcessMemory(GetCurrentProcess(), record.pszWText, text.data(), 2 * text.size(), nullptr);
    return text;
}

TEST_F(ShownMenu, IsReadAloud) {
    std::wstring texts;
    const auto speak = [&](UINT position) { texts += Spoken(position); };
    Show({[&] {
        for (const UINT position : {kOpen, kSave, kLine, kMore}) speak(position);
        EXPECT_EQ(L"unreadable", Spoken(kOwn)) << "the client's own data";
        Rename(menu, kOpen, L"&Open a file with a longer name");
        RedrawWindow(FindWindowW(L"#32768", nullptr), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        speak(kOpen);
    }});
    EXPECT_EQ(L"&Open...\tCtrl+O\0\u0160ave \u6F22\0\0&More\0&Open a file with a longer name\0"sv, texts);
    EXPECT_EQ(12345u, ItemsOf(menu)[kOpen].data);
}

TEST_F(ShownMenu, LeavesNoDrawingObjectsAfterManyOpenings) {
    for (int i = 0; i < 3; ++i) Show({Press(VK_DOWN)});
    const int objects = GdiObjects();
    for (int i = 0; i < 100; ++i) Show({Press(VK_DOWN)});
    EXPECT_EQ(objects, GdiObjects());
    icons_->Detach();
    icons_ = nullptr;
    EXPECT_LT(GdiObjects(), objects);
}

}  // namespace
}  // namespace velk::test
