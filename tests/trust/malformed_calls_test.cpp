// Calls every member of every class with arguments that no sane client passes, mixed with sane ones. Whatever comes in,
// the library answers with a proper code, stays alive and leaks nothing.
#include <gtest/gtest.h>

#include <map>

#include "trust/attempt.h"
#include "trust/scale.h"

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

std::string Where() { return std::to_string(callsMade) + ": " + Where(*currentClass, *currentMember); }

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
            const TestWindow window;
            realWindow = window.handle();
            const ComPtr<IDispatch> object = currentClass->MakeObject();
            ComPtr<IConnectionPoint> point = OneIn(3) ? EventsOf(object) : nullptr;
            DWORD cookie = 0;
            const HRESULT advised = point ? point->Advise(AnyOf(Objects()).get(), &cookie) : S_OK;
            EXPECT_EQ(S_OK, advised);
            for (int i = 0; i < kCallsAnObject; ++i) Call(object.get());
            if (point) point->Unadvise(cookie);
            PumpMessages();
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
        currentMember = &AnyOf(currentClass->members);
        ++callsMade;
        Client client;
        if (OneIn(20)) return AskForNames(object);
        const bool sane = OneIn(3);
        Request request(*currentMember, client, sane ? Arguments::Sane : Arguments::Any);
        if (!sane && OneIn(2)) Damage(request, client);
        Variant result;
        Raised raised;
        UINT badArgument = 0;
        const bool wantsException = !OneIn(4);
        const LCID locale = OneIn(2) ? LOCALE_USER_DEFAULT : engine() & 0xFFFF;
        const HRESULT answer = request.SendTo(object, locale, OneIn(4) ? nullptr : &result,
                                              wantsException ? &raised : nullptr, OneIn(4) ? nullptr : &badArgument);
        Check(answer);
        if (answer == DISP_E_EXCEPTION && wantsException) {
            EXPECT_TRUE(FAILED(raised.scode) && SysStringLen(raised.bstrDescription)) << Where();
        } else {
            EXPECT_TRUE(!raised.scode && !raised.bstrDescription) << Where();
        }
        EXPECT_TRUE(SUCCEEDED(answer) || result.vt == VT_EMPTY) << Where();
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
    std::signal(SIGABRT, [](int) {
        inHand = Where();
        TellWhatEnded(0);
    });
    const std::vector<Class>& classes = ReadClasses(library);
    ASSERT_FALSE(classes.empty());
    {
        const Surroundings surroundings(library);
        Campaign campaign;
        campaign.Run(classes, static_cast<int>(classes.size()) * 20 * kCallsAnObject);  // until all that stays is there
        const Belongings before;
        campaign.Run(classes, calls);
        campaign.Print();
        before.ExpectNoMore();
    }
    Tell("Malformed and hostile calls of every member of `" + Narrow(library) + "`", std::to_string(calls));
    for (const auto& object : Objects()) EXPECT_EQ(1u, object->count());
    EXPECT_TRUE(CanUnload(classes[0].library));
}

TEST(MalformedCalls, GetAProperAnswerAndLeaveNothingBehind) { RunOn(kMain, AtScale(100'000, 1'000'000)); }
TEST(MalformedCalls, OfTheHookLibraryToo) { RunOn(kHooks, AtScale(20'000, 200'000)); }

// As a compiled client that passes null and zero for everything.
TEST(MalformedCalls, ThroughTheVtableMayPassNothingAtAll) {
    for (const wchar_t* const library : {kMain, kHooks}) {
        const Surroundings surroundings(library);
        ForEachMember(library, [](const Class& one, const Member& member) {
            const ComPtr<IDispatch> object = one.MakeObject();
            std::vector<VARTYPE> words = member.words;
            const std::vector<VARIANT> nothing(words.size(), VARIANT{});
            std::vector<VARIANTARG*> arguments;
            for (const VARIANT& each : nothing) arguments.push_back(const_cast<VARIANT*>(&each));
            Variant answer;
            EXPECT_EQ(S_OK, DispCallFunc(object.get(), member.slot, CC_STDCALL, VT_I4, static_cast<UINT>(words.size()),
                                         words.data(), arguments.data(), &answer));
            const bool hasResult = member.words.size() > member.parameters.size();
            EXPECT_TRUE(FAILED(answer.lVal) || (answer.lVal == S_OK && !hasResult)) << std::hex << answer.lVal;
        });
    }
    SetErrorInfo(0, nullptr);
}

}  // namespace
}  // namespace velk::test
