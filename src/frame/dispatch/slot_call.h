// Calls a vtable slot with arguments known only at run time.
#pragma once

#include "frame/dispatch/convention.h"
#include "platform/platform.h"

namespace velk {

// The arguments of one call, laid down one after the other in the member's order.
class SlotCall {
  public:
    // A pointer, as every argument by reference is one.
    void AddPointer(const void* pointer) noexcept { words_[count_++] = reinterpret_cast<convention::Word>(pointer); }

    // A value of this type, which `value` holds. It stays where it is until the call has ended.
    void AddValue(const VARIANT& value, VARTYPE type) noexcept {
        if (count_ < convention::kInRegisters && convention::IsFloating(type)) floating_ |= 1u << count_;
        count_ += convention::LayOut(value, type, words_ + count_);
    }

    // `result`, if not null, goes last as the pointer to where the member stores its result.
    HRESULT Run(IDispatch* object, unsigned slot, void* result) noexcept;

  private:
    unsigned floating_ = 0;  // of those that go into registers, which are floating-point values
    std::size_t count_ = 0;
    convention::Word words_[convention::kMaxWords];
};

}  // namespace velk
