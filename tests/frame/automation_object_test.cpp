#include "frame/object/automation_object.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "frame/test_shapes.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

template <class Thrown>
std::function<void()> Throws(Thrown thrown) {
    return [thrown] { throw thrown; };
}
const auto kOwn = Throws(ClassError(static_cast<HRESULT>(0x80044801), L"Own error"));

// Reports are boxes here; where else they go, and those of a failed creation, the facts of settings say.
TEST(FailurePolicy, RaisesTheErrorItselfOrTheComponentFailureOrShowsIt) {
    struct Raised {
        HRESULT code;
        std::wstring source, description;
    };
    const std::wstring kLibrary = L"VelkSupport", kClass = L"frame_tests.CShapes";
    const Raised kReplacement{CShapes::kComponentFailure, kClass, L"CShapes component failure"};
    ReportRecorder recorder(GetModuleHandleW(nullptr));
    const auto expect = [&](bool isReplaced, const std::function<void()>& fail, const Raised& own) {
        for (const ClassInfo* info : {&CShapes::kInfo, &CShapes::kInfoFor<FailurePolicy::ComponentFailure>,
                                      &CShapes::kInfoFor<FailurePolicy::Report>}) {
            const bool shown = info->policy == FailurePolicy::Report && own.code != E_POINTER;
            const bool replaced = info->policy == FailurePolicy::ComponentFailure && isReplaced;
            const Raised& expected = replaced ? kReplacement : own;
            const auto shapes = CShapes::Make(*info);
            LONG result = 77;
            shapes->onStep = kOwn;
            shapes->get_Step(&result);  // whose error must not be taken for the next one's
            recorder.Shown();
            shapes->onStep = fail;
            EXPECT_EQ(shown ? S_OK : expected.code, shapes->get_Step(&(result = 77))) << own.description;
            EXPECT_EQ(0, result);
            const LONG number = HRESULT_FACILITY(own.code) == FACILITY_CONTROL ? HRESULT_CODE(own.code) : own.code;
            const std::wstring box = L"Step: Error: " + std::to_wstring(number) + L". " + own.description + L"|";
            EXPECT_EQ(shown ? box : L"", recorder.Shown());
            if (shown) continue;
            ComPtr<IErrorInfo> error;
            GUID guid = {};
            ASSERT_EQ(S_OK, GetErrorInfo(0, error.Receive()));
            error->GetGUID(&guid);
            EXPECT_EQ(__uuidof(_CShapes), guid);
            const Outcome late = Get(shapes.get(), L"Step");
            EXPECT_EQ(L"0:Empty", Describe(late.value));
            EXPECT_EQ(std::tuple(DISP_E_EXCEPTION, expected.code, expected.source, expected.description),
                      std::tuple(late.result, late.code, late.source, late.description));
            DISPPARAMS none{};
            EXPECT_EQ(DISP_E_EXCEPTION,
                      shapes->Invoke(20, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
        }
    };
    constexpr HRESULT kOther = static_cast<HRESULT>(0x80044802), kNoMemory = kRuntimeErrorBase + 7;
    expect(false, kOwn, {static_cast<HRESULT>(0x80044801), kClass, L"Own error"});
    expect(false, Throws(ClassError(kOther, L"Its error", ErrorSource::Library)), {kOther, kLibrary, L"Its error"});
    expect(false, Throws(NullArgument()), {E_POINTER, kLibrary, L"Invalid pointer"});
    expect(true, Throws(RuntimeError(Error::Overflow)), {kRuntimeErrorBase + 6, kLibrary, L"Overflow"});
    expect(true, Throws(std::bad_alloc()), {kNoMemory, kLibrary, L"Out of memory"});
    expect(true, Throws(std::length_error("")), {kNoMemory, kLibrary, L"Out of memory"});
    expect(true, Throws(5), {kRuntimeErrorBase + 5, kLibrary, L"Invalid procedure call or argument"});
}

struct Restless : CShapes {
    static inline int destroyed = 0;
    using CShapes::CountUpIfAlive;
    ~Restless() override {
        ++destroyed;
        ComPtr<_CShapes>(this).As<IUnknown>();
        EXPECT_FALSE(CountUpIfAlive());
    }
};

TEST(AutomationObject, ADestructorMayUseReferencesToItsOwnObject) {
    auto* const object = new Restless;
    EXPECT_TRUE(object->CountUpIfAlive());
    for (const ULONG left : {1u, 0u}) EXPECT_EQ(left, object->Release());
    EXPECT_EQ(1, Restless::destroyed);
}

}  // namespace
}  // namespace velk::test
