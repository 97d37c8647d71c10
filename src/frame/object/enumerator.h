#pragma once

#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "frame/object/helper_object.h"
#include "platform/platform.h"

namespace velk {

// An automation enumerator over a snapshot, which its clones share. An item's Give stores what the interface hands out,
// with whatever reference the receiver will own; false when there is no memory for it.
template <class Interface, class Item, class Given>
class Enumerator final : public HelperObject<Interface> {
  public:
    static HRESULT Make(std::vector<Item> items, Interface** made) noexcept try {
        *made = new Enumerator(std::make_shared<const std::vector<Item>>(std::move(items)), 0);
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }

    STDMETHODIMP Next(ULONG wanted, Given* items, ULONG* fetched) noexcept override {
        if (!items || (!fetched && wanted != 1)) return E_POINTER;
        ULONG count = 0;
        for (; count < wanted && left() > 0 && (*items_)[next_].Give(items[count]); ++count) ++next_;
        if (fetched) *fetched = count;
        if (count == wanted) return S_OK;
        return count == 0 && left() > 0 ? E_OUTOFMEMORY : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG wanted) noexcept override {
        const std::size_t count = std::min<std::size_t>(wanted, left());
        next_ += count;
        return count == wanted ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() noexcept override {
        next_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(Interface** copy) noexcept override {
        if (!copy) return E_POINTER;
        *copy = new (std::nothrow) Enumerator(items_, next_);
        return *copy ? S_OK : E_OUTOFMEMORY;
    }

  private:
    using Items = std::shared_ptr<const std::vector<Item>>;

    Enumerator(Items items, std::size_t next) noexcept : items_(std::move(items)), next_(next) {}
    std::size_t left() const noexcept { return items_->size() - next_; }

    const Items items_;
    std::size_t next_;
};

}  // namespace velk
