#include "trust/harness.h"

#include <algorithm>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/text.h"
#include "tools/typelib/resolved_type.h"

namespace velk::test {
namespace {

Member ReadMember(const Type& type, const FUNCDESC& function) {
    Member member{DocumentationOf(type, function.memid).name, function.memid, static_cast<WORD>(function.invkind),
                  static_cast<ULONG_PTR>(function.oVft)};
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT attributes = parameter.paramdesc.wParamFlags;
        const ResolvedType resolved = Resolve(type, parameter.tdesc);
        member.takes.push_back({resolved.type, resolved.byReference, (attributes & PARAMFLAG_FOPT) != 0});
        member.hasResult |= (attributes & PARAMFLAG_FRETVAL) != 0;
    }
    return member;
}

template <class Read>
std::wstring TextFrom(Read read) {
    wchar_t text[32768] = L"";
    read(static_cast<DWORD>(ARRAYSIZE(text)), text);
    return text;
}

// A crash or std::terminate inside a library takes every trace along but this.
void TellWhatEnded() {
    std::printf("The process was ended in %s\n", inHand.c_str());
    std::fflush(stdout);
}

}  // namespace

const std::vector<Class>& ReadClasses(const wchar_t* library) {
    static std::map<std::wstring, std::vector<Class>> read;
    std::vector<Class>& classes = read[library];
    if (!classes.empty()) return classes;
    const HMODULE module = LoadLibraryW(BuiltFile(library).c_str());
    for (const Type& coclass : ClassesOf(LoadTypes(BuiltFile(library).c_str()))) {
        const Type face = OwnMembers(Implemented(coclass, 0));
        Class& made =
            classes.emplace_back(Class{NameOf(coclass), AttributesOf(coclass)->guid, AttributesOf(face)->guid, module});
        for (UINT i = 0; i < AttributesOf(face)->cFuncs; ++i) {
            made.members.push_back(ReadMember(face, *FunctionOf(face, i)));
        }
    }
    EXPECT_FALSE(classes.empty());
    return classes;
}

void ForEachMember(const wchar_t* library, const std::function<void(const Class&, const Member&)>& trial) {
    std::signal(SIGABRT, [](int) { TellWhatEnded(); });
    SetUnhandledExceptionFilter([](EXCEPTION_POINTERS*) __attribute__((stdcall))->LONG {
        TellWhatEnded();
        return EXCEPTION_EXECUTE_HANDLER;
    });
    for (const Class& one : ReadClasses(library)) {
        for (const Member& member : one.members) {
            inHand = Narrow(one.name + L"." + member.name);
            SCOPED_TRACE(inHand);
            trial(one, member);
        }
    }
}

Surroundings::Surroundings(const wchar_t* library) {
    if (std::wstring_view(library) == kHooks) furtherObjects.push_back(hook_.As<IDispatch>());
    // Without "[END]" the seal is 0. Settings stand in a file beside the library.
    furtherTexts = {folder_.Write(L"sealed", "[BEGIN]\r\nA=1\r\n@CRC=0"),
                    folder_.Write(L"broken", "[BEGIN]\r\n@CRC=1")};
    EXPECT_TRUE(std::ofstream(std::filesystem::path(settings_)) << "[abc]\nabc=1\n0=2\n[0]\nabc=3\n" << std::flush);
}

Surroundings::~Surroundings() {
    furtherObjects.clear();
    furtherTexts.clear();
    DeleteFileW(settings_.c_str());
    EXPECT_EQ(1u, hook_->count());
    for (const auto& object : Objects()) EXPECT_EQ(1u, object->count());
}

Snapshot ProcessState() {
    constexpr unsigned kControl = 0xFFC0;  // the other bits tell what happened
    WORD controlWord = 0;
    unsigned mxcsr = 0;
    asm volatile("fnstcw %0" : "=m"(controlWord));
    asm volatile("stmxcsr %0" : "=m"(mxcsr));
    const std::string locale = setlocale(LC_ALL, nullptr);
    return {{"floating-point control", std::to_wstring(controlWord) + L" " + std::to_wstring(mxcsr & kControl)},
            {"error mode", std::to_wstring(GetErrorMode())},
            {"thread's locale", std::to_wstring(GetThreadLocale())},
            {"thread's priority", std::to_wstring(GetThreadPriority(GetCurrentThread()))},
            {"locale", std::wstring(locale.begin(), locale.end())},
            {"current folder", TextFrom(&GetCurrentDirectoryW)},
            {"folder to load from", TextFrom(&GetDllDirectoryW)},
            {"search path", TextFrom([](DWORD size, wchar_t* text) { GetEnvironmentVariableW(L"PATH", text, size); })}};
}

Snapshot Belongings() {
    Snapshot all = ProcessState();
    all["strings, arrays, task memory"] = std::to_wstring(MallocSpy::Alive());
    all["the library's own heap"] = std::to_wstring(Heap::held.blocks);
    all["kernel handles"] = std::to_wstring(OpenHandles());
    all["drawing objects"] = std::to_wstring(GdiObjects());
    return all;
}

bool IsProper(HRESULT answer) {
    const bool automation = answer >= DISP_E_UNKNOWNINTERFACE && answer <= DISP_E_BUFFERTOOSMALL;
    return answer == S_OK || automation || answer == E_INVALIDARG || answer == E_POINTER || answer == E_OUTOFMEMORY;
}

Request::Request(const Member& member, Client& client, Arguments wanted) : id(member.id), flags(member.kind) {
    for (std::size_t i = member.arguments(); i-- > 0;)
        arguments.push_back(wanted == Arguments::Sane || OneIn(2) ? client.Sane(member.takes[i]) : client.Any());
    parameters = {arguments.data(), names.data(), static_cast<UINT>(arguments.size()), member.IsLet() ? 1u : 0u};
}

Outcome Request::SendTo(IDispatch* object, LCID locale, bool result, bool exception, bool badArgument) {
    Outcome outcome;
    EXCEPINFO thrown{};
    outcome.result =
        object->Invoke(id, iid, locale, flags, isNull ? nullptr : &parameters, result ? &outcome.value : nullptr,
                       exception ? &thrown : nullptr, badArgument ? &outcome.badArgument : nullptr);
    outcome.Take(thrown);
    return outcome;
}

void Request::Damage(Client& client) {
    static const DISPID kIds[] = {0, -1, -3, -4, -5, 3, 99, 0x7FFFFFFF, static_cast<DISPID>(0x80000000)};
    const auto upTo = [](UINT count) { return static_cast<UINT>(Below(static_cast<int>(count) + 1)); };
    const UINT huge = 0xFFFFFFFF - upTo(2), given = parameters.cArgs;
    const std::function<void()> kinds[] = {
        [&] { parameters.cArgs = upTo(given); },
        [&] {
            for (int i = 1 + Below(20); i > 0; --i) arguments.push_back(client.Any());
            parameters.rgvarg = arguments.data();
            parameters.cArgs = static_cast<UINT>(arguments.size());
        },
        [&] { parameters.rgvarg = nullptr; },
        [&] { parameters.rgdispidNamedArgs = nullptr, parameters.cNamedArgs = upTo(2); },
        [&] {
            parameters.cNamedArgs = upTo(given + 1);
            for (DISPID& name : names) name = OneIn(3) ? AnyOf(kIds) : Below(4);
        },
        [&] { parameters.cArgs = huge; },
        [&] { parameters.cNamedArgs = huge; },
        [&] { id = AnyOf(kIds); },
        [&] { flags = static_cast<WORD>(OneIn(2) ? Below(16) : engine()); },
        [&] { iid = OneIn(2) ? IID_IDispatch : IID_IUnknown; },
        [&] { isNull = true; }};
    AnyOf(kinds)();
}

HRESULT CallSlot(IDispatch* object, const Member& member, std::vector<std::optional<Variant>>& places) {
    constexpr VARTYPE kPointer = sizeof(void*) == 4 ? VT_UI4 : VT_UI8;
    std::vector<VARTYPE> types;
    std::vector<Variant> words(member.takes.size());
    std::vector<VARIANTARG*> arguments;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto& [type, byReference, optional] = member.takes[i];
        types.push_back(byReference || type & VT_ARRAY ? kPointer : type);
        arguments.push_back(&words[i]);
        if (!places[i]) continue;
        Variant& place = *places[i];
        if (type != VT_VARIANT) place.vt = type;
        void* const at = type == VT_VARIANT ? static_cast<void*>(&place) : static_cast<void*>(&place.llVal);
        words[i].llVal = byReference ? reinterpret_cast<LONG_PTR>(at) : place.llVal;
    }
    Variant answer;
    EXPECT_EQ(S_OK, DispCallFunc(object, member.slot, CC_STDCALL, VT_I4, static_cast<UINT>(types.size()), types.data(),
                                 arguments.data(), &answer));
    return answer.lVal;
}

std::pair<IID, std::wstring> ForgetError() {
    ComPtr<IErrorInfo> error;
    if (GetErrorInfo(0, error.Receive()) != S_OK) return {};
    IID iid{};
    Bstr text;
    error->GetGUID(&iid);
    error->GetDescription(text.Receive());
    EXPECT_EQ(0u, error.Detach()->Release()) << "somebody else holds it, too";
    return {iid, std::wstring(View(text.get()))};
}

Subject::Subject(const Class& one, bool isAttached) : object(one.MakeObject()), hooks_(object.As<ISubclass>()) {
    PumpMessages();  // what is left of earlier windows would pile up, and each call look through all of it
    for (const TestWindow& window : windows_) realWindows.push_back(window.handle());
    if (!hooks_ || !isAttached) return;
    for (const wchar_t* const attach : {L"Init", L"Attach"}) Call(object.get(), attach, {Arg(realWindows[0])});
}

Subject::~Subject() {
    Disconnect();
    object = nullptr;
    realWindows.clear();
    for (const TestWindow& window : windows_) {
        EXPECT_TRUE(!hooks_ || procedure_ == window.CurrentProcedure());
        EXPECT_TRUE(!hooks_ || properties_ == window.CountProperties());
    }
}

void Subject::Connect() {
    ComPtr<IEnumConnectionPoints> points;
    ComPtr<IConnectionPoint> point;
    const auto container = object.As<IConnectionPointContainer>();
    if (!container || FAILED(container->EnumConnectionPoints(points.Receive()))) return;
    points->Next(1, point.Receive(), nullptr);
    EXPECT_TRUE(FAILED(point->Advise(points.get(), &cookie_))) << "it hears no events";
    if (SUCCEEDED(point->Advise(AnyOf(Objects()).get(), &cookie_))) point_ = std::move(point);
}

Outcome Attempt(Subject& subject, const Member& member, unsigned seed, const std::function<void()>& before,
                const std::function<void()>& after) {
    engine.seed(seed);
    Client client;
    Request request(member, client, Arguments::Sane);
    if (before) before();
    if (seed % 2) subject.Connect();
    Outcome outcome = request.SendTo(subject.object.get());
    if (after) after();
    ForgetError();
    return outcome;
}

}  // namespace velk::test
