// Every member of every class, over and over: nothing stays behind. And with each of its allocations failing in turn:
// it says so, and the object is as before.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "support/client.h"
#include "support/gdi_objects.h"
#include "support/malloc_spy.h"
#include "support/scratch_folder.h"
#include "trust/calm_platform.h"
#include "trust/failing_memory.h"
#include "trust/request.h"
#include "trust/scale.h"

namespace velk::test {
namespace {

constexpr HRESULT kOutOfMemory = static_cast<HRESULT>(0x800A0007);

struct Answer {
    HRESULT called = S_OK;
    HRESULT code = S_OK;  // what the member failed with
};

// One call with sane arguments; the same ones for the same seed.
class Attempt {
  public:
    Attempt(const Class& one, const Member& member, unsigned seed)
        : object_(CreateObject<IDispatch>(one.clsid)), member_(member), seed_(seed) {}

    template <class Before, class After>
    Answer Make(Before before, After after) {
        engine.seed(seed_);
        Client client;
        Request request(member_, client, Arguments::Sane);
        Variant result;
        EXCEPINFO exception{};
        UINT bad = 0;
        before();
        const HRESULT called = object_->Invoke(request.id, IID_NULL, LOCALE_USER_DEFAULT, request.flags,
                                               &request.parameters, &result, &exception, &bad);
        after();
        for (const BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
            SysFreeString(text);
        SetErrorInfo(0, nullptr);
        return {called, exception.scode};
    }
    Answer Make() {
        return Make([] {}, [] {});
    }

    IDispatch* object() const noexcept { return object_.get(); }

  private:
    ComPtr<IDispatch> object_;
    const Member& member_;
    unsigned seed_;
};

std::string Where(const Class& one, const Member& member) {
    const std::wstring text = one.name + L"." + member.name;
    return std::string(text.begin(), text.end());
}

// What every class and member is put through.
template <class Trial>
void ForEachMember(Trial trial) {
    for (const Class& one : ReadClasses()) {
        for (const Member& member : one.members) {
            SCOPED_TRACE(Where(one, member));
            trial(one, member);
        }
    }
}

struct Belongings {
    LONG blocks = MallocSpy::Alive();
    std::size_t handles = OpenHandles();
    int drawing = GdiObjects();
};

TEST(Faults, ManyCyclesOfEachMemberLeaveNothingBehind) {
    const CalmPlatform calm;
    constexpr unsigned kVariations = 10;
    ForEachMember([](const Class& one, const Member& member) {
        const auto run = [&](int count) {
            for (int i = 0; i < count; ++i) Attempt(one, member, kSeed + static_cast<unsigned>(i) % kVariations).Make();
        };
        run(kVariations);
        const Belongings before;
        run(AtScale(50, 1000));
        const Belongings after;
        EXPECT_EQ(before.blocks, after.blocks);
        EXPECT_EQ(before.handles, after.handles);
        EXPECT_EQ(before.drawing, after.drawing);
    });
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

TEST(Faults, WithoutMemoryAMemberSaysSoAndChangesNothing) {
    const CalmPlatform calm;
    FailingMemory memory;
    int failed = 0;
    ForEachMember([&](const Class& one, const Member& member) {
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
    std::printf("%d failed allocations\n", failed);
    EXPECT_GT(failed, 100);
}

}  // namespace
}  // namespace velk::test
