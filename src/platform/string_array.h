// Owns an automation array of strings, which a member can give as its result.
#pragma once

#include <new>
#include <utility>

#include "platform/platform.h"
#include "platform/text.h"

namespace velk {

class StringArray {
  public:
    // The strings are null, the empty text, at first.
    StringArray(ULONG count, LONG firstIndex) {
        SAFEARRAYBOUND bounds{count, firstIndex};
        array_ = SafeArrayCreate(VT_BSTR, 1, &bounds);
        if (!array_) throw std::bad_alloc();
    }
    StringArray(StringArray&& other) noexcept : array_(other.Detach()) {}
    StringArray& operator=(StringArray&&) = delete;
    ~StringArray() {
        if (array_) SafeArrayDestroy(array_);
    }

    // Once for each; the offset counts from 0, whatever the first index is.
    void Put(ULONG offset, Bstr text) noexcept { static_cast<BSTR*>(array_->pvData)[offset] = text.Detach(); }

    SAFEARRAY* Detach() noexcept { return std::exchange(array_, nullptr); }

  private:
    SAFEARRAY* array_;
};

}  // namespace velk
