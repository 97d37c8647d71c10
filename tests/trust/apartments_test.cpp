// Objects that live in another apartment, used through the platform's proxies.
#include <gtest/gtest.h>

#include <optional>

#include "support/client.h"
#include "support/event_sink.h"
#include "support/late_bound.h"
#include "support/test_window.h"
#include "trust/members.h"

namespace velk::test {
namespace {

ComPtr<IStream> Packed(IDispatch* object) {
    ComPtr<IStream> stream;
    EXPECT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(IID_IDispatch, object, stream.Receive()));
    return stream;
}
ComPtr<IDispatch> Unpacked(ComPtr<IStream> stream) {
    ComPtr<IDispatch> object;
    EXPECT_EQ(S_OK, CoGetInterfaceAndReleaseStream(stream.Detach(), IID_IDispatch, object.ReceiveVoid()));
    return object;
}

// A thread with an apartment and a message loop of its own, in which one object lives.
class Apartment {
  public:
    explicit Apartment(REFCLSID clsid, IDispatch* sink = nullptr, DWORD model = COINIT_APARTMENTTHREADED)
        : clsid_(clsid), model_(model), sink_(sink ? Packed(sink) : nullptr) {
        thread_ = CreateThread(nullptr, 0, &Run, this, 0, &id_);
        Wait(ready_);
        object_ = Unpacked(std::move(packed_));
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        object_ = nullptr;
        PostThreadMessageW(id_, WM_QUIT, 0, 0);
        Wait(thread_);
        CloseHandle(thread_);
        CloseHandle(ready_);
    }

    IDispatch* object() const noexcept { return object_.get(); }
    DWORD thread() const noexcept { return id_; }

  private:
    // Calls that come in meanwhile are served.
    static void Wait(HANDLE handle) {
        DWORD index = 0;
        EXPECT_EQ(S_OK, CoWaitForMultipleHandles(0, 20'000, 1, &handle, &index));
    }
    static DWORD WINAPI Run(void* raw) {
        auto& self = *static_cast<Apartment*>(raw);
        CoInitializeEx(nullptr, self.model_);
        {
            const auto object = CreateObject<IDispatch>(self.clsid_);
            ComPtr<IDispatch> sink;
            if (self.sink_) sink = Unpacked(std::move(self.sink_));
            const std::optional<Connection> connection =
                sink ? std::optional<Connection>(std::in_place, object.get(), __uuidof(__CCRC32), sink.get())
                     : std::nullopt;
            self.packed_ = Packed(object.get());
            MSG message;
            PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);  // makes the queue
            SetEvent(self.ready_);
            while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
        }
        CoUninitialize();
        return 0;
    }

    const CLSID clsid_;
    const DWORD model_;
    ComPtr<IStream> sink_, packed_;
    HANDLE ready_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD id_ = 0;
    HANDLE thread_ = nullptr;
    ComPtr<IDispatch> object_;
};

TEST(Apartments, ResultsAndChangedArgumentsComeThrough) {
    const Apartment list(__uuidof(CLinkedList)), builder(__uuidof(CConCat)), crc(__uuidof(CCRC32));
    for (const LONG value : {7L, 8L, 9L}) EXPECT_EQ(S_OK, Call(list.object(), L"Add", {Arg(value)}).result);
    EXPECT_EQ(3, Get(list.object(), L"Count").value.lVal);
    EXPECT_EQ(8, Get(list.object(), L"Item", {Arg(2L)}).value.lVal);
    for (const wchar_t* const text : {L"one ", L"", L"two"}) {
        const Variant piece = Text(text);
        EXPECT_EQ(S_OK, Call(builder.object(), L"Append", {piece}).result);
    }
    EXPECT_EQ(L"one two", TextOf(Get(builder.object(), L"Text").value));
    const Variant digits = Text(L"123456789");
    EXPECT_EQ(-873187034, Call(crc.object(), L"GetCRCFromStringAscii", {digits}).value.lVal);
}

TEST(Apartments, FailuresArriveAsTheyDoWithoutAProxy) {
    struct Case {
        CLSID clsid;
        const wchar_t* member;
    };
    const Case cases[] = {{__uuidof(CDatFile), L"GetHumanReadable"},
                          {__uuidof(CStack), L"Pop"},
                          {__uuidof(CLinkedList), L"MoveFirst"},
                          {__uuidof(CLinkedList), L"Find"},
                          {__uuidof(CHtmlHelp), L"OpenContents"}};
    int failures = 0;
    for (const Case& c : cases) {
        const Outcome direct = Call(CreateObject<IDispatch>(c.clsid).get(), c.member);
        const Apartment elsewhere(c.clsid);
        const Outcome remote = Call(elsewhere.object(), c.member);
        EXPECT_EQ(direct.result, remote.result) << std::hex << remote.result;
        EXPECT_EQ(direct.code, remote.code) << std::hex << remote.code;
        EXPECT_EQ(direct.source, remote.source);
        EXPECT_EQ(direct.description, remote.description);
        failures += FAILED(direct.result);
    }
    EXPECT_GE(failures, 3);
}

TEST(Apartments, EventsArriveOnTheSinksOwnThread) {
    const auto sink = EventSink::Make();
    DWORD calledOn = 0;
    sink->onEvent = [&](VARIANT*) { calledOn = GetCurrentThreadId(); };
    {
        const Apartment crc(__uuidof(CCRC32), sink.get());
        const Variant digits = Text(L"123456789");
        EXPECT_EQ(-873187034, Call(crc.object(), L"GetCRCFromStringAscii", {digits}).value.lVal);
        EXPECT_NE(crc.thread(), GetCurrentThreadId());
    }
    EXPECT_EQ(10u, sink->events.size());
    EXPECT_EQ(GetCurrentThreadId(), calledOn);
    for (int i = 0; i < 100 && sink->count() != 1; ++i) PumpMessages();
    EXPECT_EQ(1u, sink->count());
}

#ifndef NDEBUG
struct ForeignGet {
    IDispatch* object;
    const wchar_t* member;
    HRESULT code;

    static DWORD WINAPI Run(void* raw) {
        auto& self = *static_cast<ForeignGet*>(raw);
        self.code = Call(self.object, self.member).code;
        return 0;
    }
};

HRESULT CodeOnAnotherThread(IDispatch* object, const wchar_t* member) {
    ForeignGet get{object, member, S_OK};
    const HANDLE thread = CreateThread(nullptr, 0, &ForeignGet::Run, &get, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return get.code;
}

// Only a debug build looks.
TEST(Apartments, AnObjectIsNotUsedOnAnotherThreadWithoutAProxy) {
    const auto list = CreateObject<IDispatch>(__uuidof(CLinkedList));
    EXPECT_EQ(RPC_E_WRONG_THREAD, CodeOnAnotherThread(list.get(), L"Count"));
    EXPECT_EQ(S_OK, Get(list.get(), L"Count").result);
    EXPECT_EQ(RPC_E_WRONG_THREAD, CodeOnAnotherThread(CreateObject<IDispatch>(__uuidof(CStack)).get(), L"Pop"));
    const auto manager = ReadClasses(kHooks)[0].MakeObject();  // the one object that serves every thread
    EXPECT_EQ(S_OK, CodeOnAnotherThread(manager.get(), L"DispatchedMessage"));
}
#endif

}  // namespace
}  // namespace velk::test
