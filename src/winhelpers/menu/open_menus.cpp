#include "winhelpers/menu/open_menus.h"

#include <algorithm>

namespace velk {
namespace {

MENUITEMINFOW Query(UINT mask) noexcept {
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = mask;
    return info;
}

bool SetTypeAndData(HMENU menu, UINT position, UINT type, ULONG_PTR data) noexcept {
    MENUITEMINFOW info = Query(MIIM_FTYPE | MIIM_DATA);
    info.fType = type;
    info.dwItemData = data;
    return SetMenuItemInfoW(menu, position, TRUE, &info);
}

template <class Visit>
void ForEachItem(HMENU menu, Visit visit) noexcept {
    const int count = GetMenuItemCount(menu);
    MENUITEMINFOW info = Query(MIIM_FTYPE | MIIM_DATA | MIIM_ID);
    for (int i = 0; i < count; ++i) {
        const auto position = static_cast<UINT>(i);
        if (GetMenuItemInfoW(menu, position, TRUE, &info)) visit(position, info);
    }
}

void EndOwnerDrawing(HMENU menu, UINT position, const MENUITEMINFOW& now, OpenItem& item, ULONG_PTR data) noexcept {
    item.restored = true;
    SetTypeAndData(menu, position, now.fType & ~UINT{MFT_OWNERDRAW}, data);
}

// Wherever the client moved the items to.
void RestoreByData(const OpenMenu& opened) noexcept {
    ForEachItem(opened.menu, [&](UINT position, const MENUITEMINFOW& now) {
        if (!opened.Holds(now.dwItemData)) return;
        auto& item = *reinterpret_cast<OpenItem*>(now.dwItemData);
        EndOwnerDrawing(opened.menu, position, now, item, item.data);
    });
}

// Items to which the client gave data of its own, which they keep.
void RestoreByIdentifier(OpenMenu& opened) noexcept {
    ForEachItem(opened.menu, [&](UINT position, const MENUITEMINFOW& now) {
        const std::pair known(now.wID, now.dwItemData);
        if (!(now.fType & MFT_OWNERDRAW) || std::ranges::count(opened.clientsOwn, known)) return;
        const auto lost = std::ranges::find_if(
            opened.items, [&](const OpenItem& item) { return !item.restored && item.id == now.wID; });
        if (lost != opened.items.end()) EndOwnerDrawing(opened.menu, position, now, *lost, now.dwItemData);
    });
}

ULONG_PTR TokenOf(const OpenItem& item) noexcept { return reinterpret_cast<ULONG_PTR>(&item); }

}  // namespace

bool OpenMenu::Holds(ULONG_PTR data) const noexcept {
    const auto first = reinterpret_cast<ULONG_PTR>(items.data());
    return data >= first && data - first < items.size() * sizeof(OpenItem) && (data - first) % sizeof(OpenItem) == 0;
}

// The whole text, as of an item that the system draws: readers take mnemonic and accelerator from it.
void OpenMenu::Speak(OpenItem& item, std::wstring_view text) {
    std::wstring& own = texts[static_cast<std::size_t>(&item - items.data())];
    if (own != text) own = text;
    item.spoken = {MSAA_MENU_SIG, static_cast<DWORD>(own.size()), own.data()};
}

// Bitmaps, and what the client draws itself, stay the client's.
bool OpenMenus::IsOursToDraw(const MENUITEMINFOW& item) noexcept {
    const bool hasBitmap = item.hbmpItem || item.hbmpChecked || item.hbmpUnchecked;
    return !(item.fType & (MFT_OWNERDRAW | MFT_BITMAP)) && !hasBitmap;
}

std::optional<MENUITEMINFOW> OpenMenus::Read(HMENU menu, UINT position) {
    for (;;) {
        MENUITEMINFOW info = Query(MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_DATA | MIIM_STRING |
                                   MIIM_BITMAP | MIIM_CHECKMARKS);
        info.dwTypeData = text_.data();
        info.cch = static_cast<UINT>(text_.size());
        if (!GetMenuItemInfoW(menu, position, TRUE, &info)) return std::nullopt;
        if (info.cch + 1 < text_.size()) {
            textLength_ = info.cch;
            return info;
        }
        text_.resize(2 * text_.size());  // it may have been cut
    }
}

OpenMenu& OpenMenus::Begin(HMENU menu) {
    OpenMenu* opened = FindMenu(menu);
    if (opened) {
        Restore(*opened);  // once more in the same loop: the client may have changed it
    } else {
        if (open_ == menus_.size()) menus_.push_back(std::make_unique<OpenMenu>());
        opened = menus_[open_++].get();
    }
    opened->menu = menu;
    opened->widestAccelerator = 0;
    opened->items.clear();
    opened->clientsOwn.clear();
    return *opened;
}

std::optional<MENUITEMINFOW> OpenMenus::Read(const OpenItem& item) {
    const HMENU menu = item.owner->menu;
    const auto isIt = [&](const auto& state) { return state && state->dwItemData == TokenOf(item); };
    auto state = Read(menu, item.position);
    const int count = isIt(state) ? 0 : GetMenuItemCount(menu);
    for (int i = 0; i < count && !isIt(state); ++i) state = Read(menu, static_cast<UINT>(i));
    return isIt(state) ? state : std::nullopt;
}

void OpenMenus::MakeOwnerDrawn(const OpenMenu& opened) noexcept {
    for (const OpenItem& item : opened.items) {
        SetTypeAndData(opened.menu, item.position, item.type | MFT_OWNERDRAW, TokenOf(item));
    }
}

// What the client changed meanwhile stays changed: only the owner-drawing is taken back.
void OpenMenus::Restore(OpenMenu& opened) noexcept {
    RestoreByData(opened);
    if (!std::ranges::all_of(opened.items, &OpenItem::restored)) RestoreByIdentifier(opened);
}

void OpenMenus::EnterLoop() { loops_.push_back(open_); }

void OpenMenus::LeaveLoop() noexcept {
    if (loops_.empty()) return RestoreFrom(0);  // the window was attached meanwhile
    RestoreFrom(loops_.back());
    loops_.pop_back();
}

void OpenMenus::RestoreAll() noexcept {
    RestoreFrom(0);
    loops_.clear();
}

void OpenMenus::RestoreFrom(std::size_t first) noexcept {
    while (open_ > first) Restore(*menus_[--open_]);
}

OpenItem* OpenMenus::FindItem(ULONG_PTR data) const noexcept {
    for (std::size_t i = 0; i < open_; ++i) {
        if (menus_[i]->Holds(data)) return reinterpret_cast<OpenItem*>(data);
    }
    return nullptr;
}

OpenMenu* OpenMenus::FindMenu(HMENU menu) const noexcept {
    for (std::size_t i = 0; i < open_; ++i) {
        if (menus_[i]->menu == menu) return menus_[i].get();
    }
    return nullptr;
}

}  // namespace velk
