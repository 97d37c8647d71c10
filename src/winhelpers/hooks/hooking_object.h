#pragma once

#include <exception>
#include <span>

#include "frame/object/automation_object.h"
#include "winhelpers/hooks/hook_client.h"
#include "winhelpers/hooks/hook_members.h"

namespace velk {

// The base of the classes that hook windows. The object has an ISubclass beside its own interface, as a part with an
// IDispatch of its own: a late-bound call finds the members of the interface that it was made on. ISubclass2 has none.
template <class Interface>
class HookingObject : public AutomationObject<Interface>, public HookHandler {
  public:
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) noexcept override {
        const bool ofHook = iid == __uuidof(ISubclass) || iid == __uuidof(ISubclass2);
        return ofHook ? S_OK : AutomationObject<Interface>::InterfaceSupportsErrorInfo(iid);
    }

  protected:
    using AutomationObject<Interface>::AutomationObject;
    ~HookingObject() override { Disconnect(); }

    void* ExtraInterface(REFIID iid) noexcept override {
        if (iid == __uuidof(ISubclass2)) return static_cast<ISubclass2*>(&part_);
        return iid == __uuidof(ISubclass) ? static_cast<ISubclass*>(&part_) : nullptr;
    }

    void AddHook(LONG window, LONG message) { hooks_.Add(Attached(), window, message); }

    // Each hook is tried; the first failure is thrown at the end.
    void RemoveHooks(LONG window, std::span<const LONG> messages) {
        std::exception_ptr failure;
        for (const LONG message : messages) {
            try {
                hooks_.Remove(Attached(), window, message);
            } catch (...) {
                if (!failure) failure = std::current_exception();
            }
        }
        if (failure) std::rethrow_exception(failure);
    }

    // For a class's destructor: a hook that cannot be removed calls nothing any more.
    void EndHooks(LONG window, std::span<const LONG> messages) noexcept {
        Succeeds([&] { RemoveHooks(window, messages); });
        Disconnect();
    }

    // For what may fail without anybody being told.
    template <class Body>
    static bool Succeeds(Body&& body) noexcept try {
        body();
        return true;
    } catch (...) {
        return false;
    }

    HookClient hooks_;

  private:
    ISubclass* Attached() {
        if (!attached_) {
            attached_ = ComPtr<AttachedHook>::Attach(new AttachedHook);
            attached_->Connect(this);
        }
        return attached_.get();
    }
    void Disconnect() noexcept {
        if (attached_) attached_->Connect(nullptr);
    }

    HookPart part_{*static_cast<Interface*>(this), *this};
    ComPtr<AttachedHook> attached_;
};

}  // namespace velk
