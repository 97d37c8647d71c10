#pragma once

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "frame/object/helper_object.h"
#include "platform/platform.h"

namespace velk {

// An automation enumerator over a snapshot. Item converts to what the interface hands out by Give(), which adds
// whatever reference the receiver will own.
template <class Interface, class Item, class Given>
class Enumerator final : public HelperObject<Interface> {
  public:
    static HRESULT Make(std::vector<Item> items, std::size_t next, Interface** made) noexcept {
        *made = new (std::nothrow) Enumerator(std::move(items), next);
        return *made ? S_OK : E_OUTOFMEMORY;
    }

    STDMETHODIMP Next(ULONG wanted, Given* items, ULONG* fetched) noexcept override {
        if (!items || (!fetched && wanted != 1)) return E_POINTER;
        const std::size_t count = std::min<std::size_t>(wanted, items_.size() - next_);
        for (std::size_t i = 0; i < count; ++i) items[i] = items_[next_++].Give();
        if (fetched) *fetched = static_cast<ULONG>(count);
        return count == wanted ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG wanted) noexcept override {
        const std::size_t count = std::min<std::size_t>(wanted, items_.size() - next_);
        next_ += count;
        return count == wanted ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() noexcept override {
        next_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(Interface** copy) noexcept override try {
        if (!copy) return E_POINTER;
        *copy = nullptr;
        return Make(items_, next_, copy);
    } catch (...) {
        return E_OUTOFMEMORY;
    }

  private:
    Enumerator(std::vector<Item> items, std::size_t next) noexcept : items_(std::move(items)), next_(next) {}

    std::vector<Item> items_;
    std::size_t next_;
};

}  // namespace velk
