// Calls every member of every class with arguments that no sane client passes, mixed with sane ones. Whatever comes in,
// the library answers with a proper code, stays alive and leaks nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

#include "support/client.h"
#include "support/malloc_spy.h"
#include "support/scratch_folder.h"
#include "support/test_hook.h"
#include "support/test_window.h"
#include "trust/calm_platform.h"
#include "trust/request.h"
#include "trust/scale.h"
#include "trust/values.h"

namespace velk::test {
namespace {

constexpr int kCallsAnObject = 100;

void Damage(Request& request, Client& client) {
    static const DISPID kIds[] = {0, -1, -3, -4, -5, 3, 99, 0x7FFFFFFF, static_cast<DISPID>(0x80000000)};
    DISPPARAMS& parameters = request.parameters;
    switch (Below(12)) {
        case 0:
            parameters.cArgs = static_cast<UINT>(Below(static_cast<int>(parameters.cArgs) + 1));
            break;
        case 1:
            for (int i = 1 + Below(20); i > 0; --i) request.arguments.push_back(client.Any());
            parameters.rgvarg = request.arguments.data();
            parameters.cArgs = static_cast<UINT>(request.arguments.size());
            break;
        case 2:
            parameters.rgvarg = nullptr;
            break;
        case 3:
            parameters.rgdispidNamedArgs = nullptr;
            parameters.cNamedArgs = static_cast<UINT>(Below(3));
            break;
        case 4:
        case 5:
            parameters.cNamedArgs = static_cast<UINT>(Below(static_cast<int>(parameters.cArgs) + 2));
            for (DISPID& name : request.names) name = OneIn(3) ? AnyOf(kIds) : Below(4);
            break;
        case 6:
            parameters.cArgs = 0xFFFFFFFF - static_cast<UINT>(Below(3));
            break;
        case 7:
            parameters.cNamedArgs = 0xFFFFFFFF - static_cast<UINT>(Below(3));
            break;
        case 8:
            request.id = AnyOf(kIds);
            break;
        case 9:
            request.flags = static_cast<WORD>(OneIn(2) ? Below(16) : engine());
            break;
        case 10:
            request.iid = OneIn(2) ? IID_IDispatch : IID_IUnknown;
            break;
        default:
            request.isNull = true;
    }
}

const Class* currentClass = nullptr;
const Member* currentMember = nullptr;
int callsMade = 0;

std::string Where() {
    char text[200];
    std::snprintf(text, sizeof(text), "call %d, %ls.%ls", callsMade, currentClass->name.c_str(),
                  currentMember->name.c_str());
    return text;
}

LONG WINAPI TellWhere(EXCEPTION_POINTERS* crash) {
    HMODULE module = nullptr;
    char name[MAX_PATH] = "nowhere";
    const auto address = static_cast<LPCSTR>(crash->ExceptionRecord->ExceptionAddress);
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, address, &module);
    if (module) GetModuleFileNameA(module, name, MAX_PATH);
    std::printf("crash %08lx in %s at %p, %s\n", crash->ExceptionRecord->ExceptionCode, name,
                crash->ExceptionRecord->ExceptionAddress, Where().c_str());
    std::fflush(stdout);
    return EXCEPTION_EXECUTE_HANDLER;
}

class Campaign {
  public:
    void Run(const std::vector<Class>& classes, int calls) {
        const int last = callsMade + calls;
        while (callsMade < last) {
            currentClass = &AnyOf(classes);
            std::optional<TestWindow> window;
            if (!furtherObjects.empty()) realWindow = window.emplace().handle();
            const ComPtr<IDispatch> object = currentClass->MakeObject();
            ComPtr<IConnectionPoint> point = OneIn(3) ? EventsOf(object) : nullptr;
            DWORD cookie = 0;
            const HRESULT advised = point ? point->Advise(AnyOf(Objects()).get(), &cookie) : S_OK;
            EXPECT_EQ(S_OK, advised);
            for (int i = 0; i < kCallsAnObject; ++i) Call(object.get());
            if (point) point->Unadvise(cookie);
            if (window) PumpMessages();
            realWindow = 0;
        }
        SetErrorInfo(0, nullptr);
    }

    void Print() const {
        std::printf("seed %u\n", kSeed);
        for (const auto& [answer, count] : answers_) std::printf("%08lx %7d\n", answer, count);
    }

  private:
    static ComPtr<IConnectionPoint> EventsOf(const ComPtr<IDispatch>& object) {
        ComPtr<IEnumConnectionPoints> points;
        ComPtr<IConnectionPoint> point;
        const auto container = object.As<IConnectionPointContainer>();
        if (container) container->EnumConnectionPoints(points.Receive());
        if (points) points->Next(1, point.Receive(), nullptr);
        return point;
    }

    void Call(IDispatch* object) {
        if (currentClass->members.empty()) return;
        currentMember = &AnyOf(currentClass->members);
        ++callsMade;
        Client client;
        if (OneIn(20)) return AskForNames(object);
        const bool sane = OneIn(3);
        Request request(*currentMember, client, sane ? Arguments::Sane : Arguments::Any);
        if (!sane && OneIn(2)) Damage(request, client);
        Variant result;
        EXCEPINFO exception{};
        UINT badArgument = 0;
        const bool wantsException = !OneIn(4);
        const LCID locale = OneIn(2) ? LOCALE_USER_DEFAULT : engine() & 0xFFFF;
        const HRESULT answer = object->Invoke(
            request.id, request.iid, locale, request.flags, request.isNull ? nullptr : &request.parameters,
            OneIn(4) ? nullptr : &result, wantsException ? &exception : nullptr, OneIn(4) ? nullptr : &badArgument);
        Check(answer);
        if (answer == DISP_E_EXCEPTION && wantsException) {
            EXPECT_TRUE(FAILED(exception.scode) && SysStringLen(exception.bstrDescription)) << Where();
        } else {
            EXPECT_TRUE(!exception.scode && !exception.bstrDescription) << Where();
        }
        EXPECT_TRUE(SUCCEEDED(answer) || result.vt == VT_EMPTY) << Where();
        for (const BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
            SysFreeString(text);
    }

    void AskForNames(IDispatch* object) {
        std::wstring names[3];
        LPOLESTR given[3];
        for (int i = 0; i < 3; ++i) {
            names[i] = OneIn(2) ? currentMember->name : AnyText();
            given[i] = OneIn(10) ? nullptr : names[i].data();
        }
        DISPID ids[3];
        Check(object->GetIDsOfNames(OneIn(10) ? IID_IDispatch : IID_NULL, OneIn(10) ? nullptr : given,
                                    static_cast<UINT>(Below(4)), engine(), OneIn(10) ? nullptr : ids));
    }

    void Check(HRESULT answer) {
        ++answers_[static_cast<ULONG>(answer)];
        EXPECT_TRUE(IsProper(answer)) << Where() << std::hex << ": " << answer;
    }

    std::map<ULONG, int> answers_;
};

void RunOn(const wchar_t* library, int calls) {
    SetUnhandledExceptionFilter(&TellWhere);
    const CalmPlatform calm;
    const std::vector<Class> classes = ReadClasses(library);
    ASSERT_FALSE(classes.empty());
    Campaign campaign;
    campaign.Run(classes, static_cast<int>(classes.size()) * 20 * kCallsAnObject);  // until all that stays is there
    const LONG blocks = MallocSpy::Alive();
    const std::size_t handles = OpenHandles();
    campaign.Run(classes, calls);
    campaign.Print();
    Tell("Malformed and hostile calls of every member of " + Quoted(library), std::to_string(calls));
    EXPECT_EQ(blocks, MallocSpy::Alive());
    EXPECT_EQ(handles, OpenHandles());
    for (const auto& object : Objects()) EXPECT_EQ(1u, object->count());
    EXPECT_TRUE(CanUnload(classes[0].library));
}

TEST(MalformedCalls, GetAProperAnswerAndLeaveNothingBehind) { RunOn(kMain, AtScale(100'000, 1'000'000)); }

// With a window and a hook that members can be given.
TEST(MalformedCalls, OfTheHookLibraryToo) {
    const auto hook = TestHook::Make(2);
    furtherObjects.push_back(hook.As<IDispatch>());
    RunOn(kHooks, AtScale(20'000, 200'000));
    furtherObjects.clear();
    EXPECT_EQ(1u, hook->count());
}

}  // namespace
}  // namespace velk::test
