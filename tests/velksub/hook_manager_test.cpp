#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "velksub/hooks_fixture.h"

namespace velk::test {
namespace {

TEST_F(Hooks, SubclassOnceAndRestoreWhenTheLastGoes) {
    const auto first = TestHook::Make(kAlone), second = TestHook::Make(kAfter);
    AddToWindow(first.get());
    const WNDPROC hooked = window.CurrentProcedure();
    EXPECT_NE(own, hooked);
    AddToWindow(first.get());  // once is enough
    AddToWindow(second.get());
    AddToWindow(first.get(), kInner);
    EXPECT_EQ(3u, first->count());
    EXPECT_EQ(2u, second->count());
    RemoveFromWindow(first.get());
    RemoveFromWindow(second.get());
    RemoveFromWindow(second.get());            // not attached any more
    RemoveFromWindow(second.get(), WM_PAINT);  // never was
    EXPECT_EQ(S_OK, Remove(second.get(), 0));  // no window
    EXPECT_EQ(hooked, window.CurrentProcedure());
    RemoveFromWindow(first.get(), kInner);
    ExpectUntouched();
    for (auto* hook : {first.get(), second.get()}) EXPECT_EQ(1u, hook->count());
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
}

TEST_F(Hooks, KnowTheDispatchedMessageAtEveryDepth) {
    std::vector<LONG> seen;
    const auto look = [&] { EXPECT_EQ(S_OK, manager->get_DispatchedMessage(&seen.emplace_back(-1))); };
    const auto note = [&](LONG* response) { return look(), *response = kAlone, S_OK; };
    const auto outer = TestHook::Make(kAlone), inner = TestHook::Make(kAlone);
    outer->respond = inner->respond = note;
    TestWindow other;
    outer->handle = [&](const TestHook::Message& m, LONG* result) {
        if (m.wParam == 0) {
            Send(kInner);
            look();
            SendMessageW(other.get(), kInner, 0, 0);
            look();
            SendMessageW(window.get(), kMessage, 1, 0);  // the hook once more, inside itself
        }
        Send(WM_NULL);  // nobody's
        look();
        return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
    };
    inner->handle = [&](const TestHook::Message&, LONG*) { return look(), E_FAIL; };
    AddToWindow(outer.get());
    AddToWindow(inner.get(), kInner);
    ASSERT_EQ(S_OK, Add(inner.get(), other.handle(), kInner));
    look();
    EXPECT_EQ(7, Send());
    look();
    const LONG o = kMessage, i = kInner;
    EXPECT_EQ((std::vector<LONG>{0, o, i, i, o, i, i, o, o, o, o, 0}), seen);
    EXPECT_EQ("www", log);
}

TEST_F(Hooks, MayPassOnOtherMessagesAndToOtherWindows) {
    const auto inner = Logging('i', kAlone), hook = TestHook::Make(kAlone);
    TestWindow other(WS_OVERLAPPEDWINDOW, [this](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        return message == kMessage ? log += 'o', 8 : std::optional<LRESULT>();
    });
    hook->handle = [&](const TestHook::Message& m, LONG* result) {
        LONG own = 0, others = 0;
        EXPECT_EQ(S_OK, manager->CallPreviousProc(m.window, kInner, 0, 0, &own));
        EXPECT_EQ(S_OK, manager->CallPreviousProc(other.handle(), kMessage, 0, 0, &others));
        return *result = 10 * own + others, S_OK;
    };
    AddToWindow(inner.get(), kInner);
    AddToWindow(hook.get());
    ASSERT_EQ(S_OK, Add(inner.get(), other.handle()));
    EXPECT_EQ(78, Send());
    EXPECT_EQ("wo", log) << "straight to the windows' own procedures";
}

TEST_F(Hooks, MayAttachAndDetachDuringDispatch) {
    const auto a = Logging('a', kAfter), b = Logging('b', kAfter), c = Logging('c', kAfter);
    const struct {
        std::function<void(TestHook*)> action;
        const char* log;                      // of the message during which it happens, and of the next one
        const char* logInResponse = nullptr;  // where it differs
    } cases[] = {
        {[](TestHook*) {}, "xwab xwab"},
        {[&](TestHook*) { RemoveFromWindow(b.get()); }, "xwa xwa"},
        {[&](TestHook*) { RemoveFromWindow(a.get()), RemoveFromWindow(b.get()); }, "xw xw"},
        {[&](TestHook*) { AddToWindow(c.get()); }, "xwab xwabc"},                           // from the next message on
        {[&](TestHook*) { RemoveFromWindow(b.get()), AddToWindow(b.get()); }, "xwa xwab"},  // it stands on top now
        {[&](TestHook* acting) { RemoveFromWindow(acting); }, "xwab wab", "wab wab"},
    };
    for (const auto& each : cases) {
        for (const bool inResponse : {false, true}) {
            const auto acting = TestHook::Make(kAlone);
            bool done = false;
            acting->respond = [&](LONG* response) {
                if (inResponse && !std::exchange(done, true)) each.action(acting.get());
                return *response = kAlone, S_OK;
            };
            acting->handle = [&](const TestHook::Message& m, LONG* result) {
                if (!std::exchange(done, true)) each.action(acting.get());
                log += 'x';
                return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
            };
            for (const auto& hook : {a, b, acting}) AddToWindow(hook.get());
            log.clear();
            EXPECT_EQ(7, Send());
            log += ' ';
            EXPECT_EQ(7, Send());
            EXPECT_EQ(inResponse && each.logInResponse ? each.logInResponse : each.log, log) << inResponse;
            for (const auto& hook : {a, b, c, acting}) RemoveFromWindow(hook.get());
            EXPECT_EQ(1u, acting->count());
            ExpectUntouched();
        }
    }
}

TEST_F(Hooks, LiveOnlyAsLongAsTheWindow) {
    enum When { kOutside, kInResponse, kAloneThenPass, kAfterwards, kLast };
    for (const When when : {kOutside, kInResponse, kAloneThenPass, kAfterwards, kLast}) {
        TestWindow doomed;
        const LONG handle = doomed.handle();
        const auto acting = TestHook::Make(0), other = Logging('b', kAfter);
        acting->respond = [&](LONG* response) {
            if (when == kInResponse) doomed.Destroy();
            return *response = when == kAfterwards ? kAfter : kAlone, S_OK;
        };
        acting->handle = [&](const TestHook::Message& m, LONG* result) {
            doomed.Destroy();
            if (when == kLast) return S_OK;
            return manager->CallPreviousProc(m.window, m.number, m.wParam, m.lParam, result);
        };
        ASSERT_EQ(S_OK, Add(other.get(), handle));
        ASSERT_EQ(S_OK, Add(acting.get(), handle));
        ASSERT_EQ(S_OK, Add(other.get(), handle, WM_NCDESTROY));
        log.clear();
        if (when == kOutside) doomed.Destroy();
        SendMessageW(doomed.get(), kMessage, 0, 0);
        EXPECT_EQ(when == kAfterwards ? "bb" : "b", log) << when;
        for (auto* hook : {acting.get(), other.get()}) EXPECT_EQ(1u, hook->count()) << when;
        EXPECT_EQ(S_OK, Remove(acting.get(), handle));
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, Add(acting.get(), handle));
        EXPECT_EQ(eErrHookManager_InvalidWindowHandle, CallPrevious(handle));
    }
    // What the last one's end brings about does not attach to the window again.
    TestWindow doomed;
    HRESULT again = S_OK;
    const auto other = TestHook::Make(kAfter);
    auto last = TestHook::Make(kAfter);
    last->handle = [end = std::shared_ptr<void>(nullptr, [&, handle = doomed.handle()](void*) {
                        again = Add(other.get(), handle);
                    })](const TestHook::Message&, LONG*) { return S_OK; };
    ASSERT_EQ(S_OK, Add(last.get(), doomed.handle()));
    last = nullptr;
    EXPECT_EQ(S_OK, again) << "it lives as long as it is attached";
    doomed.Destroy();
    EXPECT_EQ(eErrHookManager_InvalidWindowHandle, again);
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
        EXPECT_EQ(each.result, Send(kMessage, reinterpret_cast<LPARAM>(number)));
        EXPECT_EQ(each.log, log) << number;
        EXPECT_EQ(1, *number);
        VirtualFree(number, 0, MEM_RELEASE);
    }
}

TEST_F(Hooks, LeaveNothingBehindAfterManyCycles) {
    const auto first = Logging('a', kAfter), second = Logging('b', kAlone);
    for (int i = 0; i < 10000; ++i) {
        AddToWindow(first.get());
        AddToWindow(second.get(), kInner);
        if (i % 100 == 0) Send();
        RemoveFromWindow(first.get());
        RemoveFromWindow(second.get(), kInner);
    }
    ExpectUntouched();
    for (auto* hook : {first.get(), second.get()}) EXPECT_EQ(1u, hook->count());
    manager = nullptr;
    EXPECT_TRUE(HookLibrary::CanUnload());
}

}  // namespace
}  // namespace velk::test
