// Objects that live in another apartment or process, used through the platform's proxies.
#include <thread>

#include "support/departures.h"
#include "support/event_sink.h"
#include "trust/harness.h"
#include "velkdoctor/surrogate.h"

namespace velk::test {
namespace {

// The library registered, also for the platform's surrogate process, which inherits this environment. A thread without
// an apartment of its own gets objects of an apartment that the platform makes for them.
class Elsewhere : public testing::TestWithParam<CLSCTX> {
  protected:
    void SetUp() override {
        if (IsProcess() && sizeof(void*) == 8 && Departs("DllSurrogate")) GTEST_SKIP() << "there is a 32-bit one only";
        library_.guid = __uuidof(CCRC32);
        for (const Class& one : ReadClasses(kMain)) library_.classes.push_back({one.name, {}, one.clsid, {}});
        EXPECT_EQ(S_OK, Export<decltype(&DllRegisterServer)>("DllRegisterServer")());
        EXPECT_EQ(0, SwitchSurrogate(library_, true).status);
    }
    void TearDown() override {
        if (IsSkipped()) return;
        EXPECT_EQ(0, SwitchSurrogate(library_, false).status);
        EXPECT_EQ(S_OK, Export<decltype(&DllUnregisterServer)>("DllUnregisterServer")());
    }

    static bool IsProcess() { return GetParam() == CLSCTX_LOCAL_SERVER; }
    static ComPtr<IDispatch> Create(REFCLSID clsid) {
        ComPtr<IDispatch> object;
        EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, GetParam(), IID_IDispatch, object.ReceiveVoid()));
        EXPECT_TRUE(object.As<IClientSecurity>()) << "no proxy";
        return object;
    }
    static void Run(const std::function<void()>& body) {
        if (IsProcess()) return body();
        std::thread([&] {
            EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
            body();
            CoUninitialize();
        }).join();
    }

  private:
    KnownLibrary library_{};
};

INSTANTIATE_TEST_SUITE_P(Both, Elsewhere, testing::Values(CLSCTX_INPROC_SERVER, CLSCTX_LOCAL_SERVER),
                         [](const auto& given) { return given.param == CLSCTX_LOCAL_SERVER ? "Process" : "Thread"; });

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
    Run([&] {
        for (const auto& one : cases) {
            const auto here = CreateObject<IDispatch>(one.clsid), there = Create(one.clsid);
            for (const auto& [member, argument] : one.calls) {
                Variant given = Text(argument ? argument : L"");
                const auto call = [&given, member = member, argument = argument](IDispatch* object) {
                    return argument ? Call(object, member, {Arg(&given)}) : Call(object, member);
                };
                Outcome direct = call(here.get()), remote = call(there.get());
                EXPECT_EQ(VARCMP_EQ, VarCmp(&direct.value, &remote.value, 0, 0));
                EXPECT_EQ(std::tuple(direct.result, direct.code, direct.source, direct.description),
                          std::tuple(remote.result, remote.code, remote.source, remote.description))
                    << member;
            }
        }
    });
}

APTTYPE Apartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    EXPECT_EQ(S_OK, CoGetApartmentType(&type, &qualifier));
    return type;
}

// With a sink that calls the source from inside the event, and fails.
TEST_P(Elsewhere, EventsArriveInTheSinksApartment) {
    Run([&] {
        const auto sink = ValueObject::Make(Missing());
        std::vector<float> progress;
        {
            const auto crc = Create(__uuidof(CCRC32));
            const Variant digits = Text(L"123456789");
            const auto sum = [&] { return Call(crc.get(), L"GetCRCFromStringAscii", {digits}).value.lVal; };
            const Connection connection(crc.get(), __uuidof(__CCRC32), sink.get());
            ASSERT_EQ(S_OK, connection.result());
            const APTTYPE own = Apartment();
            sink->onRead = [&, inside = false](DISPPARAMS* given) mutable {
                progress.push_back(*given->rgvarg->pfltVal);
                EXPECT_EQ(own, Apartment());
                if (!std::exchange(inside, true)) {
                    EXPECT_EQ(-873187034, sum());
                }
            };
            EXPECT_EQ(-873187034, sum());
            ASSERT_EQ(20u, progress.size());
            EXPECT_EQ(0.0, progress.front());
            EXPECT_EQ(1.0, progress.back());
        }
        EXPECT_TRUE(WaitUntil([&] { return PumpMessages(), sink->count() == 1; }));
    });
}

#ifndef NDEBUG
// Only a debug build looks.
TEST(Apartments, AnObjectIsNotUsedOnAnotherThreadWithoutAProxy) {
    const auto list = CreateObject<IDispatch>(__uuidof(CLinkedList));
    HRESULT code = S_OK;
    std::thread([&] { code = Call(list.get(), L"Count").code; }).join();
    EXPECT_EQ(RPC_E_WRONG_THREAD, code);
    EXPECT_EQ(S_OK, Get(list.get(), L"Count").result);
}
#endif

}  // namespace
}  // namespace velk::test
