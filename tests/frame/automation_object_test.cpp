#include "frame/object/automation_object.h"

#include <gtest/gtest.h>

#include "frame/server/class_table.h"
#include "frame/test_shapes.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/misaligned_call.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

TEST(AutomationObject, HasOneIdentityBehindAllItsFaces) {
    const auto shapes = CShapes::Make();
    {
        const auto identity = shapes.As<IUnknown>();
        const GUID faces[] = {IID_IUnknown,          IID_IDispatch,         __uuidof(_CShapes),
                              IID_ISupportErrorInfo, IID_IProvideClassInfo, IID_IProvideClassInfo2};
        for (REFIID from : faces) {
            const auto face = shapes.As<IUnknown>(from);
            ASSERT_TRUE(face);
            for (REFIID to : faces) EXPECT_TRUE(face.As<IUnknown>(to));
            EXPECT_EQ(identity.get(), face.As<IUnknown>().get());
            void* unknown = face.get();
            EXPECT_EQ(E_NOINTERFACE, face->QueryInterface(IID_IStream, &unknown));
            EXPECT_EQ(nullptr, unknown);
            EXPECT_EQ(E_POINTER, face->QueryInterface(IID_IUnknown, nullptr));
        }
    }
    EXPECT_EQ(2u, shapes->AddRef());
    EXPECT_EQ(1u, shapes->Release());
}

TEST(AutomationObject, DescribesItsClass) {
    const auto shapes = CShapes::Make();
    ComPtr<ITypeInfo> info;
    UINT count = 0;
    EXPECT_EQ(S_OK, shapes->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    ASSERT_EQ(S_OK, shapes->GetTypeInfo(0, 0, info.Receive()));
    EXPECT_EQ(DISP_E_BADINDEX, shapes->GetTypeInfo(1, 0, info.Receive()));
    EXPECT_FALSE(info);
    GUID events = IID_IStream;
    EXPECT_EQ(E_NOTIMPL, shapes->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events));
    EXPECT_EQ(GUID_NULL, events);
    EXPECT_EQ(E_INVALIDARG, shapes->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID + 1, &events));
    EXPECT_EQ(S_OK, shapes->InterfaceSupportsErrorInfo(__uuidof(_CShapes)));
    EXPECT_EQ(S_FALSE, shapes->InterfaceSupportsErrorInfo(IID_IProvideClassInfo));
    for (const HRESULT answer :
         {shapes->GetTypeInfoCount(nullptr), shapes->GetTypeInfo(0, 0, nullptr), shapes->GetClassInfo(nullptr),
          shapes->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

struct Raised {
    EFailure kind;
    HRESULT code;
    const wchar_t* source;
    const wchar_t* description;
    bool replaced = false;  // by the component failure, where the class has one
};

constexpr const wchar_t* kLibrary = L"VelkSupport";
constexpr const wchar_t* kClass = L"frame_tests.CShapes";
constexpr Raised kComponentFailure{{}, CShapes::kComponentFailure, kClass, L"CShapes component failure"};
constexpr Raised kRaised[] = {
    {eFailure_Runtime, kRuntimeErrorBase + 6, kLibrary, L"Overflow", true},
    {eFailure_Class, static_cast<HRESULT>(0x80044801), kClass, L"Own error"},
    {eFailure_Library, static_cast<HRESULT>(0x80044802), kLibrary, L"Library's error"},
    {eFailure_Memory, kRuntimeErrorBase + 7, kLibrary, L"Out of memory", true},
    {eFailure_Length, kRuntimeErrorBase + 7, kLibrary, L"Out of memory", true},
    {eFailure_Unknown, kRuntimeErrorBase + 5, kLibrary, L"Invalid procedure call or argument", true},
    {eFailure_Null, E_POINTER, kLibrary, L"Invalid pointer"}};

void ExpectErrorInfo(const Raised& expected) {
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(S_OK, GetErrorInfo(0, info.Receive()));
    Bstr source, description;
    GUID guid = {};
    info->GetSource(source.Receive());
    info->GetDescription(description.Receive());
    info->GetGUID(&guid);
    EXPECT_EQ(expected.source, View(source.get()));
    EXPECT_EQ(expected.description, View(description.get()));
    EXPECT_EQ(__uuidof(_CShapes), guid);
}

TEST(FailurePolicy, RaisesTheErrorItselfOrTheComponentFailure) {
    for (const ClassInfo* info : {&CShapes::kInfo, &CShapes::kWrapping}) {
        const auto shapes = CShapes::Make(*info);
        for (const Raised& c : kRaised) {
            SCOPED_TRACE(c.kind);
            const Raised& expected = info == &CShapes::kWrapping && c.replaced ? kComponentFailure : c;
            LONG result = 77;
            shapes->Fail(eFailure_Class, &result);  // whose error must not be taken for the next one's
            result = 77;
            EXPECT_EQ(expected.code, shapes->Fail(c.kind, &result));
            EXPECT_EQ(0, result);
            ExpectErrorInfo(expected);
            VARIANT kind = Arg(static_cast<LONG>(c.kind));
            const Outcome late = Call(shapes.get(), L"Fail", {kind});
            EXPECT_EQ(DISP_E_EXCEPTION, late.result);
            EXPECT_EQ(L"0:", Describe(late.value));
            EXPECT_EQ(expected.code, late.code);
            EXPECT_EQ(expected.source, late.source);
            EXPECT_EQ(expected.description, late.description);
            DISPPARAMS parameters{&kind, nullptr, 1, 0};
            EXPECT_EQ(DISP_E_EXCEPTION, shapes->Invoke(IdOf(shapes.get(), L"Fail"), IID_NULL, 0, DISPATCH_METHOD,
                                                       &parameters, nullptr, nullptr, nullptr));
        }
    }
}

TEST(FailurePolicy, ReportShowsABoxAndGoesOn) {
    const auto shapes = CShapes::Make(CShapes::kReporting);
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    for (const auto& [kind, text] :
         {std::pair(eFailure_Runtime, L"Error: 6. Overflow"), {eFailure_Class, L"Error: -2147203071. Own error"}}) {
        LONG result = 77;
        EXPECT_EQ(S_OK, shapes->Fail(kind, &result));
        EXPECT_EQ(0, result);
        const auto& box = recorder.reports().back();
        EXPECT_EQ(text, box.text);
        EXPECT_EQ(L"Fail", box.title);
        EXPECT_EQ(0u, box.type & (MB_TYPEMASK | MB_ICONMASK));  // an OK button, no icon
    }
    EXPECT_EQ(E_POINTER, shapes->Fail(eFailure_None, nullptr));
    EXPECT_EQ(E_POINTER, Call(shapes.get(), L"Fail", {Arg(static_cast<LONG>(eFailure_Null))}).code);
    EXPECT_EQ(2u, recorder.reports().size());
}

struct Unfinished : CShapes {
    void OnCreate() {
        put_Step(5);
        throw std::bad_alloc();
    }
};

TEST(Reports, AFailedCreationIsShownAndTheObjectExistsAllTheSame) {
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    const auto made = ComPtr<IDispatch>::Attach(Make<Unfinished>());
    ASSERT_TRUE(made);
    EXPECT_EQ(5, Get(made.get(), L"Step").value.lVal);
    ASSERT_EQ(1u, recorder.reports().size());
    const auto& box = recorder.reports()[0];
    EXPECT_EQ(L"frame_tests", box.title);
    EXPECT_EQ(
        L"An error has occured in Shapes.CShapes.Class_Initialize \r\n\r\nError:7\r\nDescription:Out of "
        L"memory\r\nLine:0",
        box.text);
    EXPECT_EQ(UINT{MB_OK | MB_ICONSTOP}, box.type & (MB_TYPEMASK | MB_ICONMASK));
}

std::wstring g_debuggerOutput;
void WINAPI RecordOutput(LPCWSTR text) { g_debuggerOutput += text; }

TEST(Reports, GoToTheDebuggerWhenTheEnvironmentSaysSo) {
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    const ImportPatch output(GetModuleHandleW(nullptr), "OutputDebugStringW", reinterpret_cast<void*>(&RecordOutput));
    const auto shapes = CShapes::Make(CShapes::kReporting);
    LONG result = 0;
    std::size_t boxes = 0;
    for (const wchar_t* value : {L"debugger", L"Debugger", L"", L"debuggers", L"a text longer than the switch"}) {
        const bool boxed = _wcsicmp(value, L"debugger") != 0;
        SetEnvironmentVariableW(L"VELKSPRT_REPORTS", value);
        g_debuggerOutput.clear();
        EXPECT_EQ(S_OK, shapes->Fail(eFailure_Runtime, &result));
        EXPECT_EQ(boxed ? L"" : L"Fail: Error: 6. Overflow\n", g_debuggerOutput) << value;
        EXPECT_EQ(boxes += boxed, recorder.reports().size()) << value;
    }
}

struct Restless : CShapes {
    static inline int destroyed = 0;
    ~Restless() override {
        ++destroyed;
        ComPtr<_CShapes>(this).As<IUnknown>();
    }
};

TEST(AutomationObject, ADestructorMayUseReferencesToItsOwnObject) {
    EXPECT_EQ(0u, (new Restless)->Release());
    EXPECT_EQ(1, Restless::destroyed);
}

#if defined(__i386__)
// Old clients keep the stack aligned to 4 bytes only.
TEST(AutomationObject, WorksOnAMisalignedStack) {
    const auto shapes = CShapes::Make();
    for (const std::uint32_t shift : {0u, 4u, 8u, 12u}) {
        VARIANT argument = Arg(4.5);
        DISPPARAMS parameters{&argument, nullptr, 1, 0};
        Variant result;
        IDispatch* const object = shapes.get();
        auto* const invoke = (*reinterpret_cast<void (***)()>(object))[6];
        const GUID none = GUID_NULL;
        const auto answer =
            CallMisaligned(shift, invoke, object, IdOf(object, L"EchoDouble"), &none, 0L,
                           static_cast<LONG>(DISPATCH_METHOD), &parameters, static_cast<VARIANT*>(&result), 0L, 0L);
        EXPECT_EQ(0u, answer) << shift;
        EXPECT_EQ(4.5, result.dblVal) << shift;
    }
}
#endif

}  // namespace
}  // namespace velk::test
