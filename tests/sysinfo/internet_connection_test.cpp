// CInternetConnection as its clients see it. The platform's offline mode is never changed for real.
#include <cstring>
#include <vector>

#include "support/client.h"
#include "support/facts.h"
#include "support/procedure_patch.h"

namespace velk::test {
namespace {

class InternetState : public testing::Test {
  protected:
    Outcome SetMode(LONG mode) { return Let(connection_.get(), L"WorkMode", {Arg(mode)}); }

    ComPtr<IDispatch> connection_ = CreateObject<IDispatch>(__uuidof(::CInternetConnection));
};

DWORD flags;
BOOL WINAPI Query(LPDWORD answer, LPSTR name, DWORD size, DWORD reserved) {
    EXPECT_EQ(0u, reserved);
    EXPECT_EQ(std::string(256, ' '), std::string(name, size));
    *answer = flags;
    if (flags != 0) std::memcpy(name, "B\xFCro\0junk", 10);
    return (flags & 8) != 0;
}

TEST_F(InternetState, ReadsTheFlagsAsTheyComeBack) {
    const ProcedurePatch patch(Library(), "InternetGetConnectedStateExA", Address(&Query));
    const wchar_t* const types[] = {L"4", L"1", L"2", L"1", L"3", L"1", L"2", L"1"};  // by modem, network, proxy
    for (flags = 0; flags < 64; ++flags) {
        const std::wstring name = flags ? L"B\u00FCro" : std::wstring(256, L' ');
        EXPECT_EQ(
            YesNo(flags & 8) + types[flags & 7] + L"|" + YesNo(flags & 16) + (flags & 32 ? L"1|" : L"2|") + name + L"|",
            Facts(connection_.get(),
                  {L"Connected", L"ConnectionType", L"RasInstalled", L"WorkMode", L"ConnectionName"}));
    }
}

std::vector<DWORD> request;  // option, size, state, flags
BOOL accepts;
BOOL WINAPI SetOption(void* session, DWORD option, LPVOID record, DWORD size) {
    EXPECT_EQ(nullptr, session);
    request = {option, size, static_cast<DWORD*>(record)[0], static_cast<DWORD*>(record)[1]};
    return accepts;
}

void ExpectError(const Outcome& outcome, DWORD code, const wchar_t* description) {
    EXPECT_EQ(static_cast<HRESULT>(code), outcome.code);
    EXPECT_EQ(std::wstring(L"VelkSprt.CInternetConnection: ") + description,
              outcome.source + L": " + outcome.description);
}

TEST_F(InternetState, SetsTheWorkModeByOneCall) {
    const ProcedurePatch patch(Library(), "InternetSetOptionA", Address(&SetOption));
    accepts = TRUE;
    EXPECT_EQ(S_OK, SetMode(eWorkMode_Offline).result);
    EXPECT_EQ((std::vector<DWORD>{50, 8, 16, 1}), request);
    EXPECT_EQ(S_OK, SetMode(eWorkMode_Online).result);
    EXPECT_EQ((std::vector<DWORD>{50, 8, 1, 0}), request);
    request.clear();
    for (const LONG mode : {0, 3, -1}) ExpectError(SetMode(mode), 0x80044525, L"Invalid work mode");
    EXPECT_TRUE(request.empty()) << "an invalid mode never reaches the platform";
    accepts = FALSE;
    ExpectError(SetMode(eWorkMode_Offline), 0x80044526, L"Cannot set the Internet option");
}

TEST_F(InternetState, FailsAsAComponentWithoutThePlatformsFunctions) {
    for (const char* function : {"InternetGetConnectedStateExA", "InternetSetOptionA"}) {
        const ProcedurePatch missing(Library(), function, nullptr);
        const bool sets = function[8] == 'S';
        for (const wchar_t* name : {L"Connected", L"ConnectionName", L"ConnectionType", L"RasInstalled", L"WorkMode"}) {
            ExpectError(sets ? SetMode(2) : Get(connection_.get(), name), 0x80044527,
                        L"CInternetConnection component failure");
        }
    }
}

}  // namespace
}  // namespace velk::test
