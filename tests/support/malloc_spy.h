#pragma once

#include <atomic>

#include "frame/object/helper_object.h"

namespace velk::test {

// Counts the strings, arrays and blocks of task memory that were made since it was first asked and are still there.
// Exact only with OANOCACHE=1 in the environment. It stays for good: the platform does not let go of a spy before the
// last block is freed.
class MallocSpy final : public HelperObject<IMallocSpy> {
  public:
    static LONG Alive() {
        static auto* const spy = new MallocSpy;
        [[maybe_unused]] static const HRESULT registered = CoRegisterMallocSpy(spy);
        return spy->alive_;
    }

    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T size) noexcept override { return size; }
    STDMETHODIMP_(void*) PostAlloc(void* block) noexcept override {
        if (block) ++alive_;
        return block;
    }
    STDMETHODIMP_(void*) PreFree(void* block, BOOL spied) noexcept override {
        if (block && spied) --alive_;
        return block;
    }
    STDMETHODIMP_(void) PostFree(BOOL) noexcept override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* block, SIZE_T size, void** same, BOOL) noexcept override {
        isNew_ = !block;
        *same = block;
        return size;
    }
    STDMETHODIMP_(void*) PostRealloc(void* block, BOOL) noexcept override {
        if (block && isNew_) ++alive_;
        return block;
    }
    STDMETHODIMP_(void*) PreGetSize(void* block, BOOL) noexcept override { return block; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T size, BOOL) noexcept override { return size; }
    STDMETHODIMP_(void*) PreDidAlloc(void* block, BOOL) noexcept override { return block; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int answer) noexcept override { return answer; }
    STDMETHODIMP_(void) PreHeapMinimize() noexcept override {}
    STDMETHODIMP_(void) PostHeapMinimize() noexcept override {}

  private:
    std::atomic<LONG> alive_ = 0;
    bool isNew_ = false;
};

}  // namespace velk::test
