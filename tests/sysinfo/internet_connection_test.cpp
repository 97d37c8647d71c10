// CInternetConnection as its clients see it. The platform's offline mode is never changed for real.
#include "frame/platform.h"

#include <gtest/gtest.h>
#include <wininet.h>

#include <cstring>
#include <string>

#include "support/client.h"
#include "support/late_bound.h"
#include "support/procedure_patch.h"

namespace velk::test {
namespace {

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

class InternetState : public testing::Test {
  protected:
    LONG Number(const wchar_t* name) { return Get(connection_.get(), name).value.lVal; }
    bool Flag(const wchar_t* name) { return Get(connection_.get(), name).value.boolVal != VARIANT_FALSE; }
    Outcome SetMode(LONG mode) { return Let(connection_.get(), L"WorkMode", {Arg(mode)}); }

    ComPtr<IDispatch> connection_ = CreateObject<IDispatch>(__uuidof(::CInternetConnection));
};

DWORD flags;
BOOL connected;
bool fillsName;
BOOL WINAPI Query(LPDWORD answer, LPSTR name, DWORD size, DWORD reserved) {
    EXPECT_EQ(256u, size);
    EXPECT_EQ(std::string(256, ' '), std::string(name, 256));
    EXPECT_EQ(0u, reserved);
    *answer = flags;
    if (fillsName) std::memcpy(name, "B\xFCro\0junk", 10);
    return connected;
}

TEST_F(InternetState, ReadsTheFlagsAsTheyComeBack) {
    const ProcedurePatch patch(Library(), "InternetGetConnectedStateExA", Address(&Query));
    constexpr LONG kTypes[] = {4, 1, 2, 1, 3, 1, 2, 1};  // by the bits modem, network, proxy
    fillsName = true;
    for (flags = 0; flags < 64; ++flags) {
        connected = (flags & 8) != 0;  // neither the type nor the mode depends on it
        EXPECT_EQ(connected != FALSE, Flag(L"Connected")) << flags;
        EXPECT_EQ(kTypes[flags & 7], Number(L"ConnectionType")) << flags;
        EXPECT_EQ((flags & 16) != 0, Flag(L"RasInstalled")) << flags;
        EXPECT_EQ((flags & 32) != 0 ? eWorkMode_Offline : eWorkMode_Online, Number(L"WorkMode")) << flags;
    }
    EXPECT_EQ(L"B\u00FCro", TextOf(Get(connection_.get(), L"ConnectionName").value));
    fillsName = false;
    EXPECT_EQ(std::wstring(256, L' '), TextOf(Get(connection_.get(), L"ConnectionName").value));
}

struct Request {
    HINTERNET session;
    DWORD option, size;
    DWORD state, flags;
    auto operator<=>(const Request&) const = default;
};
Request request;
BOOL accepts;
BOOL WINAPI SetOption(HINTERNET session, DWORD option, LPVOID record, DWORD size) {
    request = {session, option, size, static_cast<DWORD*>(record)[0], static_cast<DWORD*>(record)[1]};
    return accepts;
}

void ExpectError(const Outcome& outcome, HRESULT code, const wchar_t* description) {
    EXPECT_EQ(DISP_E_EXCEPTION, outcome.result);
    EXPECT_EQ(code, outcome.code);
    EXPECT_EQ(description, outcome.description);
    EXPECT_EQ(L"VelkSprt.CInternetConnection", outcome.source);
}

TEST_F(InternetState, SetsTheWorkModeByOneCall) {
    const ProcedurePatch patch(Library(), "InternetSetOptionA", Address(&SetOption));
    accepts = TRUE;
    EXPECT_EQ(S_OK, SetMode(eWorkMode_Offline).result);
    EXPECT_EQ((Request{nullptr, 50, 8, 16, 1}), request);
    EXPECT_EQ(S_OK, SetMode(eWorkMode_Online).result);
    EXPECT_EQ((Request{nullptr, 50, 8, 1, 0}), request);
    request = {};
    for (const LONG mode : {0, 3, -1})
        ExpectError(SetMode(mode), static_cast<HRESULT>(0x80044525), L"Invalid work mode");
    EXPECT_EQ(Request{}, request) << "an invalid mode never reaches the platform";
    accepts = FALSE;
    ExpectError(SetMode(eWorkMode_Offline), static_cast<HRESULT>(0x80044526), L"Cannot set the Internet option");
}

TEST_F(InternetState, FailsAsAComponentWithoutThePlatformsLibrary) {
    constexpr auto kFailure = static_cast<HRESULT>(0x80044527);
    {
        const ProcedurePatch missing(Library(), "InternetGetConnectedStateExA", nullptr);
        for (const wchar_t* name : {L"Connected", L"ConnectionName", L"ConnectionType", L"RasInstalled", L"WorkMode"}) {
            ExpectError(Get(connection_.get(), name), kFailure, L"CInternetConnection component failure");
        }
    }
    const ProcedurePatch missing(Library(), "InternetSetOptionA", nullptr);
    ExpectError(SetMode(eWorkMode_Online), kFailure, L"CInternetConnection component failure");
    ExpectError(SetMode(3), static_cast<HRESULT>(0x80044525), L"Invalid work mode");
}

// Wine always has a network. Windows tells the real state.
TEST_F(InternetState, AsksTheRealPlatform) {
    EXPECT_TRUE(Flag(L"Connected"));
    EXPECT_EQ(eConnectionType_Lan, Number(L"ConnectionType"));
    EXPECT_EQ(L"LAN Connection", TextOf(Get(connection_.get(), L"ConnectionName").value));
    EXPECT_EQ(eWorkMode_Online, Number(L"WorkMode"));
}

}  // namespace
}  // namespace velk::test
