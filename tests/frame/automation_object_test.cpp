#include "frame/object/automation_object.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "frame/server/class_table.h"
#include "frame/test_shapes.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/misaligned_call.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

TEST(AutomationObject, HasOneIdentityBehindAllItsFacesAndDescribesItsClass) {
    const auto shapes = CShapes::Make();
    const GUID faces[] = {IID_IUnknown,          IID_IDispatch,         __uuidof(_CShapes),
                          IID_ISupportErrorInfo, IID_IProvideClassInfo, IID_IProvideClassInfo2};
    for (REFIID from : faces) {
        const auto face = shapes.As<IUnknown>(from);
        ASSERT_TRUE(face);
        for (REFIID to : faces) EXPECT_EQ(shapes.As<IUnknown>().get(), face.As<IUnknown>(to).As<IUnknown>().get());
        void* unknown = face.get();
        EXPECT_EQ(E_NOINTERFACE, face->QueryInterface(IID_IStream, &unknown));
        EXPECT_EQ(nullptr, unknown);
        EXPECT_EQ(E_POINTER, face->QueryInterface(IID_IUnknown, nullptr));
    }
    EXPECT_EQ(2u, shapes->AddRef());
    EXPECT_EQ(1u, shapes->Release());

    ComPtr<ITypeInfo> info;
    UINT count = 0;
    EXPECT_EQ(S_OK, shapes->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    ASSERT_EQ(S_OK, shapes->GetTypeInfo(0, 0, info.Receive()));
    EXPECT_EQ(DISP_E_BADINDEX, shapes->GetTypeInfo(1, 0, info.Receive()));
    EXPECT_FALSE(info);
    constexpr DWORD kEvents = GUIDKIND_DEFAULT_SOURCE_DISP_IID;
    GUID events = IID_IStream;
    EXPECT_EQ(E_NOTIMPL, shapes->GetGUID(kEvents, &events));
    EXPECT_EQ(GUID_NULL, events);
    EXPECT_EQ(E_INVALIDARG, shapes->GetGUID(kEvents + 1, &events));
    EXPECT_EQ(S_OK, shapes->InterfaceSupportsErrorInfo(__uuidof(_CShapes)));
    EXPECT_EQ(S_FALSE, shapes->InterfaceSupportsErrorInfo(IID_IProvideClassInfo));
    for (const HRESULT answer : {shapes->GetTypeInfoCount(nullptr), shapes->GetTypeInfo(0, 0, nullptr),
                                 shapes->GetClassInfo(nullptr), shapes->GetGUID(kEvents, nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

template <class Thrown>
std::function<void()> Throws(Thrown thrown) {
    return [thrown] { throw thrown; };
}
const auto kOverflow = Throws(RuntimeError(Error::Overflow));
const auto kOwn = Throws(ClassError(static_cast<HRESULT>(0x80044801), L"Own error"));

TEST(FailurePolicy, RaisesTheErrorItselfOrTheComponentFailure) {
    constexpr const wchar_t *kLibrary = L"VelkSupport", *kClass = L"frame_tests.CShapes";
    constexpr HRESULT kLibrarysOwn = static_cast<HRESULT>(0x80044802);
    struct Case {
        std::function<void()> fail;
        HRESULT code;
        const wchar_t *source, *description;
        bool replaced = false;  // by the component failure, where the class has one
    };
    const Case replacement{{}, CShapes::kComponentFailure, kClass, L"CShapes component failure"};
    const Case cases[] = {
        {kOverflow, kRuntimeErrorBase + 6, kLibrary, L"Overflow", true},
        {kOwn, static_cast<HRESULT>(0x80044801), kClass, L"Own error"},
        {Throws(ClassError(kLibrarysOwn, L"Its error", ErrorSource::Library)), kLibrarysOwn, kLibrary, L"Its error"},
        {Throws(std::bad_alloc()), kRuntimeErrorBase + 7, kLibrary, L"Out of memory", true},
        {Throws(std::length_error("")), kRuntimeErrorBase + 7, kLibrary, L"Out of memory", true},
        {Throws(5), kRuntimeErrorBase + 5, kLibrary, L"Invalid procedure call or argument", true},
        {Throws(NullArgument()), E_POINTER, kLibrary, L"Invalid pointer"}};
    for (const ClassInfo* info : {&CShapes::kInfo, &CShapes::kWrapping}) {
        const auto shapes = CShapes::Make(*info);
        for (const Case& c : cases) {
            SCOPED_TRACE(c.description);
            const Case& expected = info == &CShapes::kWrapping && c.replaced ? replacement : c;
            LONG result = 77;
            shapes->onStep = kOwn;
            shapes->get_Step(&result);  // whose error must not be taken for the next one's
            shapes->onStep = c.fail;
            result = 77;
            EXPECT_EQ(expected.code, shapes->get_Step(&result));
            EXPECT_EQ(0, result);
            ComPtr<IErrorInfo> error;
            GUID guid = {};
            ASSERT_EQ(S_OK, GetErrorInfo(0, error.Receive()));
            error->GetGUID(&guid);
            EXPECT_EQ(__uuidof(_CShapes), guid);
            const Outcome late = Get(shapes.get(), L"Step");
            EXPECT_EQ(DISP_E_EXCEPTION, late.result);
            EXPECT_EQ(L"0:", Describe(late.value));
            EXPECT_EQ(expected.code, late.code);
            EXPECT_EQ(expected.source, late.source);
            EXPECT_EQ(expected.description, late.description);
            DISPPARAMS none{};
            EXPECT_EQ(DISP_E_EXCEPTION,
                      shapes->Invoke(20, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
        }
    }
}

struct Unfinished : CShapes {
    void OnCreate() {
        put_Step(5);
        throw std::bad_alloc();
    }
};

TEST(Reports, ShowABoxAndTheMemberOrTheCreationGoesOn) {
    ReportRecorder recorder(GetModuleHandleW(nullptr));
    const auto shapes = CShapes::Make(CShapes::kReporting);
    for (const auto& fail : {kOverflow, kOwn}) {
        shapes->onStep = fail;
        LONG result = 77;
        EXPECT_EQ(S_OK, shapes->get_Step(&result));
        EXPECT_EQ(0, result);
    }
    shapes->onStep = Throws(NullArgument());
    EXPECT_EQ(E_POINTER, shapes->get_Step(nullptr));
    EXPECT_EQ(E_POINTER, Get(shapes.get(), L"Step").code);
    const auto made = ComPtr<IDispatch>::Attach(Make<Unfinished>());
    ASSERT_TRUE(made);
    EXPECT_EQ(5, Get(made.get(), L"Step").value.lVal);
    EXPECT_EQ(
        L"Step: Error: 6. Overflow|Step: Error: -2147203071. Own error|"
        L"frame_tests: An error has occured in Shapes.CShapes.Class_Initialize \r\n\r\nError:7\r\nDescription:Out of "
        L"memory\r\nLine:0|",
        recorder.Shown());
    for (const std::size_t i : {0, 1, 2}) {  // with an OK button each
        const UINT icon = i == 2 ? MB_ICONSTOP : 0;
        EXPECT_EQ(icon, recorder.reports()[i].type & (MB_TYPEMASK | MB_ICONMASK));
    }
}

TEST(Reports, GoToTheDebuggerWhenTheEnvironmentSaysSo) {
    const HMODULE here = GetModuleHandleW(nullptr);
    ReportRecorder recorder(here);
    std::wstring said;
    const Fake output(
        "OutputDebugStringW", &OutputDebugStringW, [&](LPCWSTR text) { said += text; }, here);
    const auto shapes = CShapes::Make(CShapes::kReporting);
    shapes->onStep = kOverflow;
    for (const wchar_t* value : {L"debugger", L"Debugger", L"", L"debuggers", L"a text longer than the switch"}) {
        const bool boxed = _wcsicmp(value, L"debugger") != 0;
        SetEnvironmentVariableW(L"VELKSPRT_REPORTS", value);
        LONG result = 0;
        said.clear();
        EXPECT_EQ(S_OK, shapes->get_Step(&result));
        EXPECT_EQ(boxed ? L"" : L"Step: Error: 6. Overflow\n", said) << value;
        EXPECT_EQ(boxed ? L"Step: Error: 6. Overflow|" : L"", recorder.Shown()) << value;
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
    IDispatch* const object = shapes.get();
    for (const std::uint32_t shift : {0u, 4u, 8u, 12u}) {
        VARIANT argument = Arg(4.5);
        DISPPARAMS parameters{&argument, nullptr, 1, 0};
        Variant result;
        auto* const invoke = (*reinterpret_cast<void (***)()>(object))[6];
        EXPECT_EQ(0u, CallMisaligned(shift, invoke, object, IdOf(object, L"EchoDouble"), &IID_NULL, 0L,
                                     static_cast<LONG>(DISPATCH_METHOD), &parameters, static_cast<VARIANT*>(&result),
                                     0L, 0L));
        EXPECT_EQ(4.5, result.dblVal) << shift;
    }
}
#endif

}  // namespace
}  // namespace velk::test
