#pragma once

#include <utility>

#include "platform/platform.h"

namespace velk {

// Owns one reference to a COM object.
template <class T>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}
    explicit ComPtr(T* object) noexcept : object_(object) {
        if (object_) object_->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.object_) {}
    ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPtr() {
        if (object_) object_->Release();
    }

    // Takes over a reference that the caller already owns.
    static ComPtr Attach(T* object) noexcept {
        ComPtr taken;
        taken.object_ = object;
        return taken;
    }
    T* Detach() noexcept { return std::exchange(object_, nullptr); }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    // For a call that fills in an owned reference. Whatever was held is released first.
    T** Receive() noexcept {
        *this = nullptr;
        return &object_;
    }
    void** ReceiveVoid() noexcept { return reinterpret_cast<void**>(Receive()); }

    // The same object seen through another interface; empty when it has none.
    template <class U>
    ComPtr<U> As(REFIID iid = __uuidof(U)) const noexcept {
        ComPtr<U> other;
        if (object_) object_->QueryInterface(iid, other.ReceiveVoid());
        return other;
    }

  private:
    T* object_ = nullptr;
};

}  // namespace velk
