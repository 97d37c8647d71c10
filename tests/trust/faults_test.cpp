// Every member of every class, over and over: nothing stays behind. And with each of its allocations failing in turn:
// it says so, and the object is as before.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "trust/attempt.h"
#include "trust/failing_memory.h"
#include "trust/scale.h"

namespace velk::test {
namespace {

constexpr HRESULT kOutOfMemory = static_cast<HRESULT>(0x800A0007);

class Faults : public testing::TestWithParam<const wchar_t*> {
  protected:
    const Surroundings surroundings_{GetParam()};
    const std::string library_ = "`" + Narrow(GetParam()) + "`";
};

INSTANTIATE_TEST_SUITE_P(Both, Faults, testing::Values(kMain, kHooks),
                         [](const auto& given) { return given.param == kMain ? "Main" : "Hooks"; });

TEST_P(Faults, ManyCyclesOfEachMemberLeaveNothingBehind) {
    constexpr unsigned kVariations = 10;
    const int cycles = AtScale(30, 1000);
    int members = 0;
    ForEachMember(GetParam(), [&](const Class& one, const Member& member) {
        const auto run = [&](int count) {
            for (int i = 0; i < count; ++i) Attempt(one, member, kSeed + static_cast<unsigned>(i) % kVariations).Make();
        };
        run(kVariations);
        const Belongings before;
        run(cycles);
        before.ExpectNoMore();
        ++members;
    });
    EXPECT_TRUE(CanUnload(LoadBuilt(GetParam())));
    Tell("Cycles of each of the " + std::to_string(members) + " members of " + library_ +
             ": strings, arrays, task memory, kernel handles, drawing objects left behind",
         std::to_string(cycles) + " cycles, none left");
}

// The values of what a client can set, as texts.
std::map<std::wstring, std::wstring> StateOf(const Class& one, IDispatch* object) {
    std::set<std::wstring> settable;
    for (const Member& member : one.members) {
        if (member.IsLet()) settable.insert(member.name);
    }
    std::map<std::wstring, std::wstring> state;
    for (const std::wstring& name : settable) {
        Outcome outcome = Get(object, name.c_str());
        if (SUCCEEDED(VariantChangeType(&outcome.value, &outcome.value, 0, VT_BSTR))) {
            state[name] = TextOf(outcome.value);
        }
    }
    return state;
}

bool SaysSo(const Answer& answer, const Answer& undisturbed) {
    if (answer.called != DISP_E_EXCEPTION) return IsProper(answer.called);
    const bool ofTheClass = HRESULT_FACILITY(answer.code) == FACILITY_ITF;
    return answer.code == E_OUTOFMEMORY || answer.code == kOutOfMemory || ofTheClass || answer.code == undisturbed.code;
}

TEST_P(Faults, WithoutMemoryAMemberSaysSoAndChangesNothing) {
    FailingMemory memory(LoadBuilt(GetParam()));
    int failed = 0;
    ForEachMember(GetParam(), [&](const Class& one, const Member& member) {
        for (unsigned seed = 0; seed < static_cast<unsigned>(AtScale(3, 20)); ++seed) {
            const Answer undisturbed = Attempt(one, member, seed).Make();
            for (int number = 1;; ++number) {
                const std::ptrdiff_t blocks = memory.blocks();
                {
                    Attempt attempt(one, member, seed);
                    const auto before = StateOf(one, attempt.object());
                    const Answer answer = attempt.Make([&] { memory.FailAt(number); }, [&] { memory.Disarm(); });
                    if (!memory.hasFailed()) break;
                    ++failed;
                    EXPECT_TRUE(SaysSo(answer, undisturbed))
                        << "allocation " << number << std::hex << ": " << answer.called << " " << answer.code;
                    if (FAILED(answer.called)) {
                        EXPECT_EQ(before, StateOf(one, attempt.object())) << number;
                    }
                }
                EXPECT_EQ(blocks, memory.blocks()) << "allocation " << number;
            }
        }
    });
    Tell("Allocations of " + library_ + " that were made to fail, each in turn", std::to_string(failed));
    EXPECT_GT(failed, GetParam() == kMain ? 100 : 0);
}

TEST(HookedWindows, AWindowThatAnObjectLeavesIsAsItWas) {
    const Surroundings surroundings(kMain);
    int classes = 0;
    for (const Class& one : ReadClasses(kMain)) {
        const ComPtr<IDispatch> object = one.MakeObject();
        if (!object.As<ISubclass>()) continue;
        ++classes;
        const TestWindow first, last;
        const WNDPROC procedure = first.CurrentProcedure();
        const int properties = first.CountProperties();
        for (int i = 0; i < 1000; ++i) {
            for (const TestWindow* const window : {&first, &last}) AttachTo(window->handle(), object.get());
        }
        EXPECT_LT(properties, last.CountProperties()) << "not attached: the test says nothing";
        EXPECT_EQ(properties, first.CountProperties());
        EXPECT_EQ(procedure, first.CurrentProcedure());
    }
    EXPECT_GE(classes, 3);
}

}  // namespace
}  // namespace velk::test
