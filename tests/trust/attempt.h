// One call of a member as a client makes it, and all members in turn.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <optional>
#include <string>

#include "support/gdi_objects.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/scratch_folder.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "trust/calm_platform.h"
#include "trust/request.h"

namespace velk::test {

// What calls of every member need: a platform that they cannot harm, the hook library, and a hook to pass to it.
class Surroundings {
  public:
    explicit Surroundings(const wchar_t* library) {
        if (library == kHooks) furtherObjects.push_back(hook_.As<IDispatch>());
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;
    ~Surroundings() {
        furtherObjects.clear();
        EXPECT_EQ(1u, hook_->count());
    }

  private:
    const CalmPlatform calm_;
    const HookLibrary hooks_;
    const ComPtr<TestHook> hook_ = TestHook::Make(2);
};

// What a member might leave behind.
struct Belongings {
    LONG blocks = MallocSpy::Alive();
    std::size_t handles = OpenHandles();
    int drawing = GdiObjects();

    void ExpectNoMore() const {
        const Belongings now;
        EXPECT_EQ(blocks, now.blocks) << "strings, arrays, task memory";
        EXPECT_EQ(handles, now.handles) << "kernel handles";
        EXPECT_EQ(drawing, now.drawing) << "drawing objects";
    }
};

struct Answer {
    HRESULT called = S_OK;
    HRESULT code = S_OK;  // what the member failed with
};

// For objects that hook windows: the member for it has one of two names.
inline void AttachTo(LONG window, IDispatch* object) {
    for (const wchar_t* const attach : {L"Init", L"Attach"}) Call(object, attach, {Arg(window)});
}

// One call with sane arguments; the same ones for the same seed. Objects that hook windows get one, every second time
// before the call.
class Attempt {
  public:
    Attempt(const Class& one, const Member& member, unsigned seed)
        : object_(one.MakeObject()), member_(member), seed_(seed) {
        const bool hooks = static_cast<bool>(object_.As<ISubclass>());
        if (!hooks && one.library == Library()) return;
        PumpMessages();  // what is left of earlier windows would pile up, and each call look through all of it
        realWindow = window_.emplace().handle();
        if (seed % 2) AttachTo(realWindow, object_.get());
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;
    ~Attempt() { realWindow = 0; }

    template <class Before, class After>
    Answer Make(Before before, After after) {
        engine.seed(seed_);
        Client client;
        Request request(member_, client, Arguments::Sane);
        Variant result;
        Raised raised;
        UINT bad = 0;
        before();
        const HRESULT called = request.SendTo(object_.get(), LOCALE_USER_DEFAULT, &result, &raised, &bad);
        after();
        SetErrorInfo(0, nullptr);
        return {called, raised.scode};
    }
    Answer Make() {
        return Make([] {}, [] {});
    }

    IDispatch* object() const noexcept { return object_.get(); }

  private:
    std::optional<TestWindow> window_;  // outlives the object; hooks go with it
    ComPtr<IDispatch> object_;
    const Member& member_;
    unsigned seed_;
};

inline std::string Where(const Class& one, const Member& member) { return Narrow(one.name + L"." + member.name); }

// std::terminate inside a library takes every trace along but this.
inline std::string inHand;
inline void TellWhatEnded(int) {
    std::printf("The process was ended in %s\n", inHand.c_str());
    std::fflush(stdout);
}

// What every class and member is put through.
template <class Trial>
void ForEachMember(const wchar_t* library, Trial trial) {
    std::signal(SIGABRT, TellWhatEnded);
    for (const Class& one : ReadClasses(library)) {
        for (const Member& member : one.members) {
            inHand = Where(one, member);
            SCOPED_TRACE(inHand);
            trial(one, member);
        }
    }
}

// One call of each with some seeds.
inline void AttemptEach(const wchar_t* library, unsigned seeds) {
    ForEachMember(library, [&](const Class& one, const Member& member) {
        for (unsigned seed = 0; seed < seeds; ++seed) Attempt(one, member, seed).Make();
    });
}

}  // namespace velk::test
