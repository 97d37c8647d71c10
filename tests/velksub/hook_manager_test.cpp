#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "velksub/hooks_fixture.h"

namespace velk::test {
namespace {

TEST_F(Hooks, SubclassOnceAndRestoreWhenTheLastGoes) {
    const WNDPROC own = ProcedureOf(window.get());
    const auto first = TestHook::Make(kAlone), second = TestHook::Make(kAfter);
    AddToWindow(first.get());
    const WNDPROC hooked = ProcedureOf(window.get());
    EXPECT_NE(own, hooked);
    AddToWindow(first.get());  // once is enough
    AddToWindow(second.get());
    AddToWindow(first.get(), kInner);
    EXPECT_EQ(hooked, ProcedureOf(window.get()));
    EXPECT_EQ(3u, first->count());
    EXPECT_EQ(2u, second->count());
    RemoveFromWindow(first.get());
    RemoveFromWindow(second.get());
    RemoveFromWindow(second.get());                      // not attached any more
    RemoveFromWindow(second.get(), WM_PAINT);            // never was
    EXPECT_EQ(S_OK, Remove(second.get(), 0, kMessage));  // no window
    EXPECT_EQ(hooked, ProcedureOf(window.get()));
    RemoveFromWindow(first.get(), kInner);
    EXPECT_EQ(own, ProcedureOf(window.get()));
    EXPECT_EQ(properties, PropertiesOf(window.get()));
    EXPECT_EQ(1u, first->count());
    EXPECT_EQ(1u, second->count());
}

TEST_F(Hooks, RunInTheOrderAndWithTheResultThatTheirResponsesAskFor) {
    struct HookCase {
        LONG response;
        bool passes;
        HRESULT ends;
    };
    struct Case {
        std::vector<HookCase> hooks;  // a, b, ... in attach order, with results 10, 20, ...
        const char* log;
        LRESULT result;
    };
    const HookCase alone{kAlone, false, S_OK}, passing{kAlone, true, S_OK}, after{kAfter, false, S_OK};
    const HookCase failing{kAlone, false, E_FAIL}, passesThenFails{kAlone, true, E_FAIL}, afterFails{kAfter, 0, E_FAIL};
    const Case cases[] = {
        {{alone}, "a", 10},
        {{passing}, "wa", 17},
        {{after}, "wa", 7},
        {{{1, false, S_OK}}, "wa", 7},
        {{{-1, false, S_OK}}, "wa", 7},
        {{after, after, after}, "wabc", 7},
        {{alone, alone}, "b", 20},
        {{passing, passing}, "wab", 37},
        {{alone, after}, "ab", 10},
        {{after, alone}, "b", 20},
        {{after, passing}, "wab", 27},
        {{failing}, "aw", 7},
        {{passesThenFails}, "wa", 7},
        {{afterFails}, "wa", 7},
        {{alone, failing}, "ba", 10},
        {{failing, passing}, "awb", 27},
    };
    for (const Case& c : cases) {
        std::vector<ComPtr<TestHook>> hooks;
        char name = 'a';
        for (const HookCase& h : c.hooks) {
            hooks.push_back(Logging(name, h.response, 10 * (name - 'a' + 1), h.passes, h.ends));
            AddToWindow(hooks.back().get());
            ++name;
        }
        log.clear();
        EXPECT_EQ(c.result, Send()) << c.log;
        EXPECT_EQ(c.log, log);
        for (const auto& hook : hooks) RemoveFromWindow(hook.get());
    }
    const auto speechless = Logging('a', kAlone, 1);
    speechless->respond = [](LONG*) { return E_FAIL; };
    AddToWindow(speechless.get());
    log.clear();
    EXPECT_EQ(7, Send());
    EXPECT_EQ("w", log) << "a hook that cannot say what it wants is passed over";
    RemoveFromWindow(speechless.get());
}

TEST_F(Hooks, SeeTheMessageAndChangeWhatItPointsTo) {
    const auto hook = TestHook::Make(kAfter);
    hook->handle = [this](const TestHook::Message& m, LONG*) {
        EXPECT_EQ(window.handle(), m.window);
        EXPECT_EQ(static_cast<LONG>(kMessage), m.number);
        EXPECT_EQ(-5, m.wParam);
        *static_cast<int*>(LongToPtr(m.lParam)) *= 10;
        return S_OK;
    };
    AddToWindow(hook.get());
    int value = 3;
    EXPECT_EQ(7, SendMessageW(window.get(), kMessage, static_cast<WPARAM>(-5), reinterpret_cast<LPARAM>(&value)));
    EXPECT_EQ(40, value) << "the window's own handling comes first";
    RemoveFromWindow(hook.get());
}

TEST_F(Hooks, KnowTheDispatchedMessageAtEveryDepth) {
    std::vector<LONG> seen;
    const auto note = [&](LONG* response) { return seen.push_back(Dispatched()), *response = kAlone, S_OK; };
    const auto outer = TestHook::Make(kAlone), inner = TestHook::Make(kAlone);
    outer->respond = inner->respond = note;
    TestWindow other;
    outer->handle = [&](const TestHook::Message& m, LONG* result) {
        if (m.wParam == 0) {
            Send(kInner);
            seen.push_back(Dispatched());
            SendMessageW(other.get(), kInner, 0, 0);
            seen.push_back(Dispatched());
            SendMessageW(window.get(), kMessage, 1, 0);  // the hook once more, inside itself
        }
        Send(WM_NULL);  // nobody's
        seen.push_back(Dispatched());
        return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
    };
    inner->handle = [&](const TestHook::Message&, LONG*) { return seen.push_back(Dispatched()), E_FAIL; };
    AddToWindow(outer.get());
    AddToWindow(inner.get(), kInner);
    ASSERT_EQ(S_OK, Add(inner.get(), other.handle(), kInner));
    EXPECT_EQ(0, Dispatched());
    EXPECT_EQ(7, Send());
    EXPECT_EQ(0, Dispatched());
    const LONG o = kMessage, i = kInner;
    EXPECT_EQ((std::vector<LONG>{o, i, i, o, i, i, o, o, o, o}), seen);
    EXPECT_EQ("www", log);
    RemoveFromWindow(outer.get());
    RemoveFromWindow(inner.get(), kInner);
}

TEST_F(Hooks, MayAttachAndDetachDuringDispatch) {
    const auto first = Logging('a', kAfter, 0), second = Logging('b', kAfter, 0), third = Logging('c', kAfter, 0);
    const auto run = [&](const std::function<void()>& action, bool inResponse) {
        const auto acting = TestHook::Make(kAlone);
        bool done = false;
        acting->respond = [&](LONG* response) {
            *response = kAlone;
            if (inResponse && !std::exchange(done, true)) action();
            return S_OK;
        };
        acting->handle = [&](const TestHook::Message& m, LONG* result) {
            if (!std::exchange(done, true)) action();
            log += 'x';
            return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
        };
        AddToWindow(first.get());
        AddToWindow(second.get());
        AddToWindow(acting.get());
        const auto self = [&] { RemoveFromWindow(acting.get()); };
        log.clear();
        EXPECT_EQ(7, Send());
        const std::string once = std::exchange(log, "");
        EXPECT_EQ(7, Send());
        for (const auto* hook : {&first, &second, &third}) RemoveFromWindow(hook->get());
        self();
        EXPECT_EQ(1u, acting->count());
        return once + ' ' + log;
    };
    const auto all = [&] {
        for (const auto* hook : {&first, &second}) RemoveFromWindow(hook->get());
    };
    for (const bool inResponse : {false, true}) {
        EXPECT_EQ("xwab xwab", run([] {}, inResponse));
        EXPECT_EQ("xwa xwa", run([&] { RemoveFromWindow(second.get()); }, inResponse));
        EXPECT_EQ("xw xw", run(all, inResponse));
        EXPECT_EQ("xwab xwabc", run([&] { AddToWindow(third.get()); }, inResponse)) << "from the next message on";
        EXPECT_EQ("xwa xwab", run(
                                  [&] {
                                      RemoveFromWindow(second.get());
                                      AddToWindow(second.get());
                                  },
                                  inResponse))
            << "it stands on top now";
    }
    EXPECT_EQ(properties, PropertiesOf(window.get()));
}

TEST_F(Hooks, LiveOnlyAsLongAsTheWindow) {
    enum class When { Outside, InResponse, AloneThenPass, After, Last };
    for (const When when : {When::Outside, When::InResponse, When::AloneThenPass, When::After, When::Last}) {
        TestWindow doomed;
        const LONG handle = doomed.handle();
        const auto acting = TestHook::Make(when == When::After ? kAfter : kAlone);
        const auto other = Logging('b', kAfter, 0);
        const auto destroy = [&] { doomed.Destroy(); };
        acting->respond = [&](LONG* response) {
            if (when == When::InResponse) destroy();
            return *response = when == When::After ? kAfter : kAlone, S_OK;
        };
        acting->handle = [&](const TestHook::Message& m, LONG* result) {
            destroy();
            if (when == When::Last) return S_OK;
            return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
        };
        ASSERT_EQ(S_OK, Add(other.get(), handle, kMessage));
        ASSERT_EQ(S_OK, Add(acting.get(), handle, kMessage));
        ASSERT_EQ(S_OK, Add(other.get(), handle, WM_NCDESTROY));
        log.clear();
        if (when == When::Outside) {
            destroy();
        } else {
            SendMessageW(doomed.get(), kMessage, 0, 0);
        }
        EXPECT_EQ(when == When::After ? "bb" : "b", log) << static_cast<int>(when);
        EXPECT_EQ(1u, acting->count());
        EXPECT_EQ(1u, other->count());
        EXPECT_EQ(S_OK, Remove(acting.get(), handle, kMessage));
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, Add(acting.get(), handle, kMessage));
        LONG result = -1;
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, manager->CallPreviousProc(handle, kMessage, 0, 0, &result));
    }
    manager = nullptr;
    EXPECT_TRUE(HookLibrary::CanUnload());
}

// A Long carries 32 bits: hooks are spared what they could not use, and pass on what they got without loss.
TEST_F(Hooks, SeeNoPointerThatDoesNotFitALong) {
    if (sizeof(void*) == 4) GTEST_SKIP() << "every pointer fits";
    const auto hook = Logging('a', kAlone, 10, true);
    AddToWindow(hook.get());
    const struct {
        std::uint64_t place;
        const char* log;
        LRESULT result;
    } cases[] = {{0x20000000, "wa", 17}, {0x90000000, "wa", 17}, {0x123000000000, "w", 7}};
    for (const auto& each : cases) {
        void* const place = reinterpret_cast<void*>(static_cast<std::uintptr_t>(each.place));
        auto* const number = static_cast<int*>(VirtualAlloc(place, 4096, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
        ASSERT_EQ(place, number);
        log.clear();
        EXPECT_EQ(each.result, SendMessageW(window.get(), kMessage, 0, reinterpret_cast<LPARAM>(number)));
        EXPECT_EQ(each.log, log) << number;
        EXPECT_EQ(1, *number);
        VirtualFree(number, 0, MEM_RELEASE);
    }
    RemoveFromWindow(hook.get());
}

// The platform answers for the low word of a handle too, with or without a sign.
TEST_F(Hooks, AreNotAttachedToAPartOfAHandle) {
    const auto hook = TestHook::Make(2);
    const LONG low = window.handle() & 0xFFFF;
    for (const LONG part : {low, static_cast<LONG>(low | 0xFFFF0000)}) {
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, Add(hook.get(), part, WM_APP)) << std::hex << part;
    }
    EXPECT_EQ(1u, hook->count());
}

TEST_F(Hooks, LeaveNothingBehindAfterManyCycles) {
    const WNDPROC own = ProcedureOf(window.get());
    const auto first = Logging('a', kAfter, 0), second = Logging('b', kAlone, 0);
    for (int i = 0; i < 10000; ++i) {
        AddToWindow(first.get());
        AddToWindow(second.get(), kInner);
        if (i % 100 == 0) Send();
        RemoveFromWindow(first.get());
        RemoveFromWindow(second.get(), kInner);
    }
    EXPECT_EQ(own, ProcedureOf(window.get()));
    EXPECT_EQ(properties, PropertiesOf(window.get()));
    EXPECT_EQ(1u, first->count());
    EXPECT_EQ(1u, second->count());
    manager = nullptr;
    EXPECT_TRUE(HookLibrary::CanUnload());
}

}  // namespace
}  // namespace velk::test
