// Objects that live in another apartment or process, used through the platform's proxies.
#include <thread>

#include "support/departures.h"
#include "support/dialog_driver.h"
#include "support/event_sink.h"
#include "trust/harness.h"
#include "velkdoctor/surrogate.h"

namespace velk::test {
namespace {

// A thread with an apartment and a message loop of its own, in which one object lives.
class Apartment {
  public:
    explicit Apartment(REFCLSID clsid) : clsid_(clsid), thread_(CreateThread(nullptr, 0, &Run, this, 0, &id_)) {
        Wait(ready_.get());
        EXPECT_EQ(S_OK, CoGetInterfaceAndReleaseStream(packed_.Detach(), IID_IDispatch, object_.ReceiveVoid()));
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        object_ = nullptr;
        PostThreadMessageW(id_, WM_QUIT, 0, 0);
        Wait(thread_.get());
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
        EXPECT_EQ(S_OK, CoMarshalInterThreadInterfaceInStream(IID_IDispatch, CreateObject<IDispatch>(self.clsid_).get(),
                                                              self.packed_.Receive()));
        MSG message;
        PeekMessageW(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);  // makes the queue
        SetEvent(self.ready_.get());
        while (GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
        CoUninitialize();
        return 0;
    }

    const CLSID clsid_;
    ComPtr<IStream> packed_;
    const FileHandle ready_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    DWORD id_ = 0;
    const FileHandle thread_;
    ComPtr<IDispatch> object_;
};

// The library registered for the platform's surrogate process, which inherits this environment.
class Surrogate {
  public:
    Surrogate() {
        library_.guid = __uuidof(CCRC32);
        for (const Class& one : ReadClasses(kMain)) library_.classes.push_back({one.name, {}, one.clsid, {}});
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
    KnownLibrary library_{};
};

class Elsewhere : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        if (GetParam() && sizeof(void*) == 8 && Departs("DllSurrogate")) GTEST_SKIP() << "there is a 32-bit one only";
        if (GetParam()) surrogate_.emplace();
    }
    ComPtr<IDispatch> Create(REFCLSID clsid) {
        return GetParam() ? surrogate_->Create(clsid) : apartments_.emplace_back(clsid).object();
    }

  private:
    std::optional<Surrogate> surrogate_;
    std::list<Apartment> apartments_;
};

INSTANTIATE_TEST_SUITE_P(Both, Elsewhere, testing::Bool(),
                         [](const auto& given) { return given.param ? "Process" : "Thread"; });

// A result, a failure that raises, one that is told in a component's failure, a changed argument.
TEST_P(Elsewhere, MembersAnswerAsTheyDoWithoutAProxy) {
    const struct {
        CLSID clsid;
        std::vector<std::pair<const wchar_t*, const wchar_t*>> calls;  // members, and an argument
    } cases[] = {
        {__uuidof(CLinkedList), {{L"Add", L"a"}, {L"Add", L""}, {L"Count", nullptr}, {L"Item", L"1"}, {L"Item", L"9"}}},
        {__uuidof(CConCat), {{L"Append", L"one "}, {L"Append", L"two"}, {L"Text", nullptr}}},
        {__uuidof(CCRC32), {{L"GetCRCFromStringAscii", L"123456789"}}},
        {__uuidof(CDatFile), {{L"Initialize", L"C:\\none.dat"}, {L"GetHumanReadable", nullptr}}},
        {__uuidof(CIniFile), {{L"Init", L""}}},
        {__uuidof(CStack), {{L"Push", nullptr}, {L"Push", L"a"}, {L"Pop", nullptr}, {L"Pop", L"too many"}}}};
    for (const auto& [clsid, calls] : cases) {
        const auto here = CreateObject<IDispatch>(clsid), there = Create(clsid);
        for (const auto& [member, argument] : calls) {
            Variant given = Text(argument ? argument : L"");
            const auto call = [&given, member = member, argument = argument](IDispatch* object) {
                return argument ? Call(object, member, {Arg(&given)}) : Call(object, member);
            };
            Outcome direct = call(here.get()), remote = call(there.get());
            EXPECT_EQ(direct.result, remote.result) << member << std::hex << remote.result;
            EXPECT_EQ(VARCMP_EQ, VarCmp(&direct.value, &remote.value, 0, 0));
            EXPECT_EQ(direct.code, remote.code) << std::hex << remote.code;
            EXPECT_EQ(direct.source, remote.source);
            EXPECT_EQ(direct.description, remote.description);
        }
    }
}

// With a sink that calls the source from inside the event, and fails.
TEST_P(Elsewhere, EventsArriveOnTheSinksOwnThread) {
    const auto sink = EventSink::Make();
    sink->answer = E_UNEXPECTED;
    {
        const auto crc = Create(__uuidof(CCRC32));
        const Variant digits = Text(L"123456789");
        const auto sum = [&] { return Call(crc.get(), L"GetCRCFromStringAscii", {digits}).value.lVal; };
        const Connection connection(crc.get(), __uuidof(__CCRC32), sink.get());
        ASSERT_EQ(S_OK, connection.result());
        const DWORD thread = GetCurrentThreadId();
        sink->onEvent = [&, inside = false](VARIANT*) mutable {
            EXPECT_EQ(thread, GetCurrentThreadId());
            if (!std::exchange(inside, true)) {
                EXPECT_EQ(-873187034, sum());
            }
        };
        EXPECT_EQ(-873187034, sum());
        ASSERT_EQ(20u, sink->events.size());
        EXPECT_EQ(0.0, sink->events.front().value);
        EXPECT_EQ(1.0, sink->events.back().value);
    }
    EXPECT_TRUE(WaitUntil([&] { return PumpMessages(), sink->count() == 1; }));
}

#ifndef NDEBUG
HRESULT CodeOnAnotherThread(IDispatch* object, const wchar_t* member) {
    HRESULT code = S_OK;
    std::thread([&] { code = Call(object, member).code; }).join();
    return code;
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
