// Objects that live in another apartment or process, used through the platform's proxies.
#include <gtest/gtest.h>

#include <list>

#include "support/departures.h"
#include "support/event_sink.h"
#include "trust/attempt.h"
#include "velkdoctor/surrogate.h"

namespace velk::test {
namespace {

constexpr LONG kSumOfDigits = -873187034;  // of "123456789"

// A thread with an apartment and a message loop of its own, in which one object lives.
class Apartment {
  public:
    explicit Apartment(REFCLSID clsid) : clsid_(clsid) {
        thread_ = CreateThread(nullptr, 0, &Run, this, 0, &id_);
        Wait(ready_);
        EXPECT_EQ(S_OK, CoGetInterfaceAndReleaseStream(packed_.Detach(), IID_IDispatch, object_.ReceiveVoid()));
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

    const ComPtr<IDispatch>& object() const noexcept { return object_; }

  private:
    // Calls that come in meanwhile are served.
    static void Wait(HANDLE handle) {
        DWORD index = 0;
        EXPECT_EQ(S_OK, CoWaitForMultipleHandles(0, 20'000, 1, &handle, &index));
    }
    static DWORD WINAPI Run(void* raw) {
        auto& self = *static_cast<Apartment*>(raw);
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        {
            const auto object = CreateObject<IDispatch>(self.clsid_);
            EXPECT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(IID_IDispatch, object.get(), self.packed_.Receive()));
        }
        MSG message;
        PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);  // makes the queue
        SetEvent(self.ready_);
        while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
        CoUninitialize();
        return 0;
    }

    const CLSID clsid_;
    ComPtr<IStream> packed_;
    HANDLE ready_ = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DWORD id_ = 0;
    HANDLE thread_ = nullptr;
    ComPtr<IDispatch> object_;
};

// The library registered for the platform's surrogate process, which inherits this environment.
class Surrogate {
  public:
    Surrogate() {
        EXPECT_EQ(S_OK, Export<decltype(&DllRegisterServer)>("DllRegisterServer")());
        EXPECT_EQ(0, SwitchSurrogate(library_, true).status);
    }
    Surrogate(const Surrogate&) = delete;
    Surrogate& operator=(const Surrogate&) = delete;
    ~Surrogate() {
        EXPECT_EQ(0, SwitchSurrogate(library_, false).status);
        EXPECT_EQ(S_OK, Export<decltype(&DllUnregisterServer)>("DllUnregisterServer")());
    }

    ComPtr<IDispatch> Create(REFCLSID clsid) const {
        ComPtr<IDispatch> object;
        EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch, object.ReceiveVoid()));
        return object;
    }

  private:
    static KnownLibrary Known() {
        KnownLibrary known{L"VelkSupport", L"VelkSprt.dll", {}, __uuidof(CCRC32), {}};
        for (const Class& one : ReadClasses(kMain)) known.classes.push_back({one.name, {}, one.clsid});
        return known;
    }

    const KnownLibrary library_ = Known();
};

enum class Home { Thread, Process };

class Elsewhere : public testing::TestWithParam<Home> {
  protected:
    void SetUp() override {
        if (GetParam() == Home::Thread) return;
        if (sizeof(void*) == 8 && Departs("DllSurrogate")) GTEST_SKIP() << "there is a 32-bit surrogate only";
        surrogate_.emplace();
    }
    ComPtr<IDispatch> Create(REFCLSID clsid) {
        return surrogate_ ? surrogate_->Create(clsid) : apartments_.emplace_back(clsid).object();
    }

  private:
    std::optional<Surrogate> surrogate_;
    std::list<Apartment> apartments_;
};

INSTANTIATE_TEST_SUITE_P(Both, Elsewhere, testing::Values(Home::Thread, Home::Process),
                         [](const auto& given) { return given.param == Home::Thread ? "Thread" : "Process"; });

TEST_P(Elsewhere, ResultsAndChangedArgumentsComeThrough) {
    const auto list = Create(__uuidof(CLinkedList)), builder = Create(__uuidof(CConCat)),
               crc = Create(__uuidof(CCRC32)), stack = Create(__uuidof(CStack));
    for (const LONG value : {7L, 8L, 9L}) EXPECT_EQ(S_OK, Call(list.get(), L"Add", {Arg(value)}).result);
    EXPECT_EQ(3, Get(list.get(), L"Count").value.lVal);
    EXPECT_EQ(8, Get(list.get(), L"Item", {Arg(2L)}).value.lVal);
    for (const wchar_t* const text : {L"one ", L"", L"two"}) {
        const Variant piece = Text(text);
        EXPECT_EQ(S_OK, Call(builder.get(), L"Append", {piece}).result);
    }
    EXPECT_EQ(L"one two", TextOf(Get(builder.get(), L"Text").value));
    const Variant digits = Text(L"123456789");
    EXPECT_EQ(kSumOfDigits, Call(crc.get(), L"GetCRCFromStringAscii", {digits}).value.lVal);
}

TEST_P(Elsewhere, FailuresArriveAsTheyDoWithoutAProxy) {
    struct Case {
        CLSID clsid;
        const wchar_t* member;
        const wchar_t* argument = nullptr;
    };
    const Case cases[] = {{__uuidof(CDatFile), L"Initialize", L"C:\\none.dat"},
                          {__uuidof(CDatFile), L"GetHumanReadable"},
                          {__uuidof(CIniFile), L"Init", L""},
                          {__uuidof(CStack), L"Push"},
                          {__uuidof(CLinkedList), L"MoveFirst", L"too many"}};
    for (const Case& c : cases) {
        const auto call = [&](const ComPtr<IDispatch>& object) {
            if (!c.argument) return Call(object.get(), c.member);
            const Variant argument = Text(c.argument);
            return Call(object.get(), c.member, {argument});
        };
        const Outcome direct = call(CreateObject<IDispatch>(c.clsid)), remote = call(Create(c.clsid));
        EXPECT_TRUE(FAILED(direct.result)) << c.member;
        EXPECT_EQ(direct.result, remote.result) << std::hex << remote.result;
        EXPECT_EQ(direct.code, remote.code) << std::hex << remote.code;
        EXPECT_EQ(direct.source, remote.source);
        EXPECT_EQ(direct.description, remote.description);
    }
}

// With a sink that calls the source from inside the event, and fails.
TEST_P(Elsewhere, EventsArriveOnTheSinksOwnThread) {
    const auto sink = EventSink::Make();
    sink->answer = E_UNEXPECTED;
    {
        const auto crc = Create(__uuidof(CCRC32));
        const Variant digits = Text(L"123456789"), none = Text(L"");
        Connection connection(crc.get(), __uuidof(__CCRC32), sink.get());
        ASSERT_EQ(S_OK, connection.result());
        const DWORD thread = GetCurrentThreadId();
        sink->onEvent = [&, inside = false](VARIANT*) mutable {
            EXPECT_EQ(thread, GetCurrentThreadId());
            if (inside) return;
            inside = true;
            EXPECT_EQ(kSumOfDigits, Call(crc.get(), L"GetCRCFromStringAscii", {digits}).value.lVal);
        };
        EXPECT_EQ(kSumOfDigits, Call(crc.get(), L"GetCRCFromStringAscii", {digits}).value.lVal);
        ASSERT_EQ(20u, sink->events.size());
        EXPECT_EQ(0.0, sink->events.front().value);
        EXPECT_EQ(1.0, sink->events.back().value);
    }
    for (const ULONGLONG start = GetTickCount64(); sink->count() != 1 && GetTickCount64() - start < 5000;)
        PumpMessages();
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
