// Which icon belongs to which menu item: an image of the client's list, or a picture.
#pragma once

#include <algorithm>
#include <memory>
#include <unordered_map>
#include <utility>

#include "platform/com_ptr.h"
#include "platform/drawing_handles.h"
#include "winhelpers/menu/image_list.h"
#include "winhelpers/menu/menu_layout.h"
#include "winhelpers/support/mem_dc.h"

namespace velk {

// Drawing a bitmap picture copies it once: while it is selected for drawing nobody else could use it.
class MenuPicture {
  public:
    // Error 13 for an object that is no picture.
    explicit MenuPicture(IUnknown* object);

    bool IsEmpty() const noexcept { return kind_ != PICTYPE_BITMAP && kind_ != PICTYPE_ICON && !IsMetafile(); }
    ComPtr<IPictureDisp> object() const noexcept { return picture_.As<IPictureDisp>(); }
    Size size() const noexcept { return size_; }                             // pixels
    void Draw(HDC context, const Box& place, COLORREF mask) const noexcept;  // no mask: CLR_INVALID

  private:
    bool IsMetafile() const noexcept { return kind_ == PICTYPE_METAFILE || kind_ == PICTYPE_ENHMETAFILE; }
    void DrawBitmap(HDC context, const Box& place, COLORREF mask) const noexcept;
    void Render(HDC context, const Box& place) const noexcept;

    ComPtr<IPicture> picture_;
    SHORT kind_ = PICTYPE_UNINITIALIZED;
    HANDLE handle_ = nullptr;
    Size size_;
    cMemDC bits_;
};

struct MenuIcon {
    static constexpr LONG kNoImage = -1;

    LONG image = kNoImage;
    std::unique_ptr<MenuPicture> picture;  // or this

    bool IsNone() const noexcept { return image == kNoImage && !picture; }
};

// The icons by command identifier or by submenu handle. What is taken out is destroyed when the table is consistent
// again: releasing a picture can run the client's code.
template <class Key>
class IconTable {
  public:
    const MenuIcon* Find(Key key) const noexcept {
        const auto found = icons_.find(key);
        return found == icons_.end() ? nullptr : &found->second;
    }
    LONG Image(Key key) const noexcept {
        const MenuIcon* const icon = Find(key);
        return icon ? icon->image : MenuIcon::kNoImage;
    }
    ComPtr<IPictureDisp> Picture(Key key) const noexcept {
        const MenuIcon* const icon = Find(key);
        return icon && icon->picture ? icon->picture->object() : nullptr;
    }

    // Each replaces whatever the item had; no image and no picture remove it.
    void SetImage(Key key, LONG image) { Set(key, {image, nullptr}); }
    void SetPicture(Key key, IUnknown* object) {
        auto picture = object ? std::make_unique<MenuPicture>(object) : nullptr;
        if (picture && picture->IsEmpty()) picture = nullptr;
        Set(key, {MenuIcon::kNoImage, std::move(picture)});
    }
    void Clear() noexcept { const Icons removed = std::exchange(icons_, {}); }

    template <class Predicate>
    void RemoveIf(Predicate predicate) noexcept {
        const auto matches = [&](const auto& entry) { return predicate(entry.first); };
        for (auto found = icons_.begin(); (found = std::ranges::find_if(icons_, matches)) != icons_.end();) {
            const auto removed = icons_.extract(found);
        }
    }

  private:
    using Icons = std::unordered_map<Key, MenuIcon>;

    void Set(Key key, MenuIcon icon) {
        if (icon.IsNone()) {
            const auto removed = icons_.extract(key);
        } else {
            std::swap(icons_[key], icon);
        }
    }

    Icons icons_;
};

struct MenuIcons {
    ImageList list;
    COLORREF mask = CLR_INVALID;  // the transparent colour of bitmap pictures
    IconTable<UINT> commands;
    IconTable<HMENU> submenus;

    const MenuIcon* Find(UINT command, HMENU submenu) const noexcept {
        return submenu ? submenus.Find(submenu) : commands.Find(command);
    }

    // Pixels; what the list says, else the system's small icons, in their size for that many dots per inch.
    Size CellSize(int density) const noexcept;

    // How large an icon is drawn, and drawing it there.
    Size DrawnSize(const MenuIcon& icon, const MenuLayout& layout) const noexcept;
    void Draw(const MenuIcon& icon, HDC context, const Box& place) const noexcept;
};

}  // namespace velk
