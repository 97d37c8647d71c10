// The one table of creatable classes. Class factories, registration and the registration-free manifest only read it.
#pragma once

#include <span>

#include "frame/failure/report.h"
#include "frame/object/automation_object.h"
#include "platform/com_ptr.h"

namespace velk {

struct ClassEntry {
    const ClassInfo* info;
    IDispatch* (*make)();  // a new object with one reference; throws only when memory runs out
};

std::span<const ClassEntry> Classes() noexcept;

// Objects whose creation has steps that can fail do them in OnCreate. A failure there is shown and never raised, since
// the creator could not catch it: the object exists all the same, with whatever was set up.
template <class Object>
IDispatch* Make() {
    ComPtr<Object> made = ComPtr<Object>::Attach(new Object);
    if constexpr (requires { made->OnCreate(); }) {
        try {
            made->OnCreate();
        } catch (...) {
            ReportInitialisationFailure(CaughtFailure(), Object::kInfo.creationFailed);
        }
    }
    return made.Detach();
}

template <class Object>
constexpr ClassEntry EntryOf() noexcept {
    return {&Object::kInfo, &Make<Object>};
}

}  // namespace velk
