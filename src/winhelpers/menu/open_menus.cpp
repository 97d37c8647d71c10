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

ULONG_PTR TokenOf(const OpenItem& item) noexcept { return reinterpret_cast<ULONG_PTR>(&item); }

}  // namespace

bool OpenMenu::Holds(ULONG_PTR data) const noexcept {
    const auto first = reinterpret_cast<ULONG_PTR>(items.data());
    return data >= first && data - first < items.size() * sizeof(OpenItem) && (data - first) % sizeof(OpenItem) == 0;
}

// Bitmaps, and what the client draws itself, stay the client's.
bool OpenMenus::IsOursToDraw(const MenuItemState& item) noexcept {
    return !(item.type & (MFT_OWNERDRAW | MFT_BITMAP)) && !item.hasBitmap;
}

std::optional<MenuItemState> OpenMenus::Read(HMENU menu, UINT position) {
    for (;;) {
        MENUITEMINFOW info = Query(MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_DATA | MIIM_STRING |
                                   MIIM_BITMAP | MIIM_CHECKMARKS);
        info.dwTypeData = text_.data();
        info.cch = static_cast<UINT>(text_.size());
        if (!GetMenuItemInfoW(menu, position, TRUE, &info)) return std::nullopt;
        if (info.cch + 1 < text_.size()) {
            textLength_ = info.cch;
            const bool hasBitmap = info.hbmpItem || info.hbmpChecked || info.hbmpUnchecked;
            return MenuItemState{info.fType, info.fState, info.wID, info.hSubMenu, info.dwItemData, hasBitmap};
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

std::optional<MenuItemState> OpenMenus::Read(const OpenItem& item) {
    const HMENU menu = item.owner->menu;
    const auto isIt = [&](const auto& state) { return state && state->data == TokenOf(item); };
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

// Items are known by their data, wherever the client moved them to. What it changed meanwhile stays changed: only the
// owner-drawing is taken away, also from an item to which the client gave data of its own.
void OpenMenus::Restore(OpenMenu& opened) noexcept {
    const int count = GetMenuItemCount(opened.menu);
    MENUITEMINFOW info = Query(MIIM_FTYPE | MIIM_DATA | MIIM_ID);
    const auto forEach = [&](auto restore) {
        for (int i = 0; i < count; ++i) {
            const auto position = static_cast<UINT>(i);
            if (GetMenuItemInfoW(opened.menu, position, TRUE, &info)) restore(position);
        }
    };
    forEach([&](UINT position) {
        if (!opened.Holds(info.dwItemData)) return;
        auto& item = *reinterpret_cast<OpenItem*>(info.dwItemData);
        item.restored = true;
        SetTypeAndData(opened.menu, position, info.fType & ~UINT{MFT_OWNERDRAW}, item.data);
    });
    if (std::ranges::all_of(opened.items, &OpenItem::restored)) return;
    forEach([&](UINT position) {
        const std::pair known(info.wID, info.dwItemData);
        if (!(info.fType & MFT_OWNERDRAW) || std::ranges::count(opened.clientsOwn, known)) return;
        const auto lost = std::ranges::find_if(
            opened.items, [&](const OpenItem& item) { return !item.restored && item.id == info.wID; });
        if (lost == opened.items.end()) return;
        lost->restored = true;
        SetTypeAndData(opened.menu, position, info.fType & ~UINT{MFT_OWNERDRAW}, info.dwItemData);
    });
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

const OpenItem* OpenMenus::FindItem(ULONG_PTR data) const noexcept {
    for (std::size_t i = 0; i < open_; ++i) {
        if (menus_[i]->Holds(data)) return reinterpret_cast<const OpenItem*>(data);
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
