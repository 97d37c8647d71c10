// The menus that are open, whose items were made owner-drawn for that time.
//
// Only an item's type and data change; its text, state and everything else stay with the platform, where the client can
// read and change them. What the client made is kept here and put back when the menu loop ends.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/platform.h"

#include <oleacc.h>

namespace velk {

struct OpenMenu;

// What is kept of one owner-drawn item. Its address is the item's data while the menu is open, and there screen readers
// look for the record that says what they cannot see: it comes first.
struct OpenItem {
    MSAAMENUINFO spoken;
    OpenMenu* owner;
    UINT position;
    UINT id;
    HMENU submenu;
    UINT type;       // as the client made it
    ULONG_PTR data;  // likewise
    int labelWidth = 0;
    bool restored = false;

    bool IsSeparator() const noexcept { return type & MFT_SEPARATOR; }
};

struct OpenMenu {
    HMENU menu = nullptr;
    int widestAccelerator = 0;
    std::vector<OpenItem> items;
    std::vector<std::pair<UINT, ULONG_PTR>> clientsOwn;  // identifier and data of what the client draws itself
    std::vector<std::wstring> texts;                     // the items', for screen readers; the rest keep their memory

    bool Holds(ULONG_PTR data) const noexcept;
    void Speak(OpenItem& item, std::wstring_view text);
};

class OpenMenus {
  public:
    OpenMenus() = default;
    OpenMenus(const OpenMenus&) = delete;
    OpenMenus& operator=(const OpenMenus&) = delete;
    ~OpenMenus() { RestoreAll(); }

    // `measure(item, state)` fills in an item's label width, from text(), and gives its accelerator's width. A menu
    // with items that read from right to left is left to the system.
    template <class Measure>
    void Open(HMENU menu, Measure measure) {
        OpenMenu& opened = Begin(menu);
        const int count = GetMenuItemCount(menu);
        if (std::cmp_less(opened.texts.size(), count)) opened.texts.resize(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            const auto position = static_cast<UINT>(i);
            const auto state = Read(menu, position);
            if (state && state->fType & MFT_OWNERDRAW) opened.clientsOwn.emplace_back(state->wID, state->dwItemData);
            if (!state || !IsOursToDraw(*state)) continue;
            if (state->fType & MFT_RIGHTORDER) return opened.items.clear();
            opened.items.push_back(
                {{}, &opened, position, state->wID, state->hSubMenu, state->fType, state->dwItemData});
            opened.Speak(opened.items.back(), text());
            const int accelerator = measure(opened.items.back(), state->fState);
            if (accelerator > opened.widestAccelerator) opened.widestAccelerator = accelerator;
        }
        MakeOwnerDrawn(opened);
    }
    // A menu loop can run inside another one; each gives back the menus that were opened in it.
    void EnterLoop();
    void LeaveLoop() noexcept;
    void RestoreAll() noexcept;

    bool InLoop() const noexcept { return !loops_.empty(); }
    bool AnyOpen() const noexcept { return open_ != 0; }

    // The item that has this data, and an open menu; null when it is none of ours.
    OpenItem* FindItem(ULONG_PTR data) const noexcept;
    OpenMenu* FindMenu(HMENU menu) const noexcept;

    // All of an item as it is now; nothing when there is none. Its text lies in text() until the next call.
    std::optional<MENUITEMINFOW> Read(HMENU menu, UINT position);
    // The same of an item of ours, wherever the client moved it to.
    std::optional<MENUITEMINFOW> Read(const OpenItem& item);
    std::wstring_view text() const noexcept { return {text_.data(), textLength_}; }

  private:
    OpenMenu& Begin(HMENU menu);
    static bool IsOursToDraw(const MENUITEMINFOW& item) noexcept;
    static void MakeOwnerDrawn(const OpenMenu& opened) noexcept;
    static void Restore(OpenMenu& opened) noexcept;
    void RestoreFrom(std::size_t first) noexcept;

    std::vector<std::unique_ptr<OpenMenu>> menus_;  // those beyond open_ only keep their memory
    std::size_t open_ = 0;
    std::vector<std::size_t> loops_;  // how many menus were open when each of them began
    std::wstring text_ = std::wstring(80, L'\0');
    std::size_t textLength_ = 0;
};

}  // namespace velk
