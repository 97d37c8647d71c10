#include "frame/automation_object.h"

#include <gtest/gtest.h>

#include "frame/class_table.h"
#include "frame/test_shapes.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/misaligned_call.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

constexpr HRESULT kOverflow = kRuntimeErrorBase + 6;
constexpr HRESULT kOwn = static_cast<HRESULT>(0x80044801);
constexpr HRESULT kLibrary = static_cast<HRESULT>(0x80044802);

TEST(AutomationObject, HasOneIdentityBehindAllItsFaces) {
    const auto shapes = CShapes::Make();
    {
        const auto identity = shapes.As<IUnknown>();
        const GUID faces[] = {
            IID_IUnknown,          IID_IDispatch,          __uuidof(_CShapes),           IID_ISupportErrorInfo,
            IID_IProvideClassInfo, IID_IProvideClassInfo2, IID_IConnectionPointContainer};
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
    EXPECT_EQ(E_INVALIDARG, shapes->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID + 1, &events));
    EXPECT_EQ(GUID_NULL, events);
    EXPECT_EQ(S_OK, shapes->InterfaceSupportsErrorInfo(__uuidof(_CShapes)));
    EXPECT_EQ(S_FALSE, shapes->InterfaceSupportsErrorInfo(IID_IProvideClassInfo));

    EXPECT_EQ(E_POINTER, shapes->GetTypeInfoCount(nullptr));
    EXPECT_EQ(E_POINTER, shapes->GetTypeInfo(0, 0, nullptr));
    EXPECT_EQ(E_POINTER, shapes->GetClassInfo(nullptr));
    EXPECT_EQ(E_POINTER, shapes->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr));
}

struct FailureCase {
    EFailure kind;
    HRESULT result;
    const wchar_t* source;
    const wchar_t* description;
};

constexpr FailureCase kPassedOn[] = {
    {eFailure_Runtime, kOverflow, L"VelkSupport", L"Overflow"},
    {eFailure_Class, kOwn, L"frame_tests.CShapes", L"Own error"},
    {eFailure_Library, kLibrary, L"VelkSupport", L"Library's error"},
    {eFailure_Memory, kRuntimeErrorBase + 7, L"VelkSupport", L"Out of memory"},
    {eFailure_Length, kRuntimeErrorBase + 7, L"VelkSupport", L"Out of memory"},
    {eFailure_Unknown, kRuntimeErrorBase + 5, L"VelkSupport", L"Invalid procedure call or argument"},
    {eFailure_Null, E_POINTER, L"VelkSupport", L"Invalid pointer"},
};
constexpr const wchar_t* kComponent = L"CShapes component failure";
constexpr FailureCase kWrapped[] = {
    {eFailure_Runtime, CShapes::kComponentFailure, L"frame_tests.CShapes", kComponent},
    {eFailure_Class, kOwn, L"frame_tests.CShapes", L"Own error"},
    {eFailure_Library, kLibrary, L"VelkSupport", L"Library's error"},
    {eFailure_Memory, CShapes::kComponentFailure, L"frame_tests.CShapes", kComponent},
    {eFailure_Unknown, CShapes::kComponentFailure, L"frame_tests.CShapes", kComponent},
    {eFailure_Null, E_POINTER, L"VelkSupport", L"Invalid pointer"},
};

void ExpectErrorInfo(const FailureCase& expected) {
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

void ExpectRaised(const ClassInfo& info, std::span<const FailureCase> cases) {
    const auto shapes = CShapes::Make(info);
    for (const FailureCase& c : cases) {
        SCOPED_TRACE(c.kind);
        LONG result = 77;
        shapes->Fail(eFailure_Length, &result);  // whose error must not be taken for the next one's
        result = 77;
        EXPECT_EQ(c.result, shapes->Fail(c.kind, &result));
        EXPECT_EQ(0, result);
        ExpectErrorInfo(c);
        const Outcome late = Call(shapes.get(), L"Fail", {Arg(static_cast<LONG>(c.kind))});
        EXPECT_EQ(DISP_E_EXCEPTION, late.result);
        EXPECT_EQ(L"0:", Describe(late.value));
        EXPECT_EQ(c.result, late.code);
        EXPECT_EQ(c.source, late.source);
        EXPECT_EQ(c.description, late.description);
        VARIANT kind = Arg(static_cast<LONG>(c.kind));
        DISPPARAMS parameters{&kind, nullptr, 1, 0};
        EXPECT_EQ(DISP_E_EXCEPTION,
                  shapes->Invoke(30, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr));
    }
}

TEST(FailurePolicy, PassOnRaisesTheErrorItself) { ExpectRaised(CShapes::kInfo, kPassedOn); }

TEST(FailurePolicy, ComponentFailureReplacesAllButTheClasssOwnErrors) { ExpectRaised(CShapes::kWrapping, kWrapped); }

TEST(FailurePolicy, ReportShowsABoxAndGoesOn) {
    const auto shapes = CShapes::Make(CShapes::kReporting);
    const std::pair<EFailure, const wchar_t*> cases[] = {
        {eFailure_Runtime, L"Error: 6. Overflow"},
        {eFailure_Class, L"Error: -2147203071. Own error"},
    };
    for (const auto& [kind, text] : cases) {
        SCOPED_TRACE(kind);
        const ReportRecorder recorder(GetModuleHandleW(nullptr));
        LONG result = 77;
        EXPECT_EQ(S_OK, shapes->Fail(kind, &result));
        EXPECT_EQ(0, result);
        ASSERT_EQ(1u, recorder.reports().size());
        EXPECT_EQ(text, recorder.reports()[0].text);
        EXPECT_EQ(L"Fail", recorder.reports()[0].title);
        EXPECT_EQ(0u, recorder.reports()[0].type & (MB_TYPEMASK | MB_ICONMASK));  // an OK button, no icon
    }
    const ReportRecorder recorder(GetModuleHandleW(nullptr));
    EXPECT_EQ(E_POINTER, shapes->Fail(eFailure_None, nullptr));
    EXPECT_EQ(E_POINTER, Call(shapes.get(), L"Fail", {Arg(static_cast<LONG>(eFailure_Null))}).code);
    EXPECT_TRUE(recorder.reports().empty());
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
    for (const auto& [value, boxed] : {std::pair(L"debugger", false),
                                       {L"Debugger", false},
                                       {L"", true},
                                       {L"debuggers", true},
                                       {L"a text longer than the switch", true}}) {
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
    Restless::destroyed = 0;
    EXPECT_EQ(0u, (new Restless)->Release());
    EXPECT_EQ(1, Restless::destroyed);
}

#if defined(__i386__)
// Old clients keep the stack aligned to 4 bytes only.
TEST(AutomationObject, WorksOnAMisalignedStack) {
    const auto shapes = CShapes::Make();
    const Variant text = Text(L"g");
    for (const std::uint32_t shift : {0u, 4u, 8u, 12u}) {
        DOUBLE d = 4.5;
        BSTR e = nullptr;
        VARIANT arguments[] = {Arg(0.5), text, Arg(6.5), Ref(VT_BSTR, &e), Ref(VT_R8, &d), Arg(3L), Arg(2.5), Arg(1L)};
        DISPPARAMS parameters{arguments, nullptr, 8, 0};
        Variant result;
        IDispatch* const object = shapes.get();
        auto* const invoke = (*reinterpret_cast<void (***)()>(object))[6];
        const GUID none = GUID_NULL;
        const auto answer = CallMisaligned(shift, invoke, object, 24L, &none, 0L, static_cast<LONG>(DISPATCH_METHOD),
                                           &parameters, static_cast<VARIANT*>(&result), 0L, 0L);
        EXPECT_EQ(0u, answer) << shift;
        EXPECT_EQ(L"1 2.500 3 4.500  5:6.5 g 0.500", TextOf(result)) << shift;
        EXPECT_EQ(5.5, d) << shift;
        SysFreeString(e);
    }
}
#endif

}  // namespace
}  // namespace velk::test
