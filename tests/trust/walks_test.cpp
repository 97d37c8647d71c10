// What every member of every class is put through: calls again and again, failing allocations, nulls, wrong kinds, and
// hostile calls during which the client's code does what it likes.
#include <map>
#include <set>

#include "trust/harness.h"

namespace velk::test {
namespace {

constexpr HRESULT kOutOfMemory = static_cast<HRESULT>(0x800A0007);

class Walk : public testing::TestWithParam<const wchar_t*> {
  protected:
    void ForEach(const std::function<void(const Class&, const Member&)>& trial) { ForEachMember(GetParam(), trial); }

    const HMODULE module_ = ReadClasses(GetParam())[0].library;
    const std::string library_ = "`" + Narrow(GetParam()) + "`";
    const Surroundings surroundings_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Both, Walk, testing::Values(kMain, kHooks),
                         [](const auto& given) { return given.param == std::wstring_view(kMain) ? "Main" : "Hooks"; });

TEST_P(Walk, ManyCyclesLeaveNothingBehindAndChangeNothingOfTheProcess) {
    constexpr unsigned kVariations = 10;
    const unsigned cycles = static_cast<unsigned>(AtScale(30, 1000));
    const Heap heap(module_);
    const ProcessState before;
    int members = 0;
    ForEach([&](const Class& one, const Member& member) {
        const auto run = [&](unsigned count) {
            for (unsigned i = 0; i < count; ++i) Attempt(one, member, kSeed + i % kVariations).Make();
        };
        run(kVariations);
        const Belongings warm;
        run(cycles);
        warm.ExpectNoMore();
        ++members;
    });
    EXPECT_TRUE(before == ProcessState());
    EXPECT_TRUE(CanUnload(GetParam()));
    Tell("Cycles of each of the " + std::to_string(members) + " members of " + library_ +
             ": strings, arrays, memory, kernel handles, drawing objects left behind",
         std::to_string(cycles) + " cycles, none left");
}

// ---- Memory that runs out ----

// A function of the platform that allocates, and is refused as the heap is.
template <auto Function, class = decltype(Function)>
struct Scarce;
template <auto Function, class Result, class... Given>
struct Scarce<Function, Result(WINAPI*)(Given...)> {
    static Result WINAPI Call(Given... given) {
        if (!Heap::Refuses(0)) return Function(given...);
        if constexpr (std::is_pointer_v<Result>)
            return nullptr;
        else
            return E_OUTOFMEMORY;
    }
};

// The allocation with the number that is set, counted from then on, fails, on the heap or in the platform.
class FailingMemory {
  public:
    explicit FailingMemory(HMODULE library)
        : heap_(library, [this](std::size_t) { return left_ > 0 && --left_ == 0; }) {
        const auto patch = [&](const char* name, auto* replacement) {
            if (ImportPatch::IsImported(library, name))
                patches_.emplace_back(library, name, reinterpret_cast<void*>(replacement));
        };
        patch("SysAllocStringLen", &Scarce<&SysAllocStringLen>::Call);
        patch("SysAllocStringByteLen", &Scarce<&SysAllocStringByteLen>::Call);
        patch("SafeArrayCreate", &Scarce<&SafeArrayCreate>::Call);
        patch("SafeArrayCopy", &Scarce<&SafeArrayCopy>::Call);
        patch("VariantCopy", &Scarce<&VariantCopy>::Call);
        patch("VariantCopyInd", &Scarce<&VariantCopyInd>::Call);
        patch("VariantChangeType", &Scarce<&VariantChangeType>::Call);
        patch("VariantChangeTypeEx", &Scarce<&VariantChangeTypeEx>::Call);
        patch("CreateErrorInfo", &Scarce<&CreateErrorInfo>::Call);
    }
    void FailAt(int number) noexcept { left_ = number; }
    bool Disarm() noexcept { return std::exchange(left_, 0) == 0; }  // whether it has failed

  private:
    int left_ = 0;
    Heap heap_;
    std::list<ImportPatch> patches_;
};

// The values of what a client can set, as texts.
std::map<std::wstring, std::wstring> StateOf(const Class& one, IDispatch* object) {
    std::map<std::wstring, std::wstring> state;
    for (const Member& member : one.members) {
        if (!member.IsLet() || state.contains(member.name)) continue;
        Outcome outcome = Get(object, member.name.c_str());
        if (SUCCEEDED(VariantChangeType(&outcome.value, &outcome.value, 0, VT_BSTR)))
            state[member.name] = TextOf(outcome.value);
    }
    return state;
}

bool SaysSo(const Attempt::Answer& answer, const Attempt::Answer& undisturbed) {
    if (answer.called != DISP_E_EXCEPTION) return IsProper(answer.called);
    const bool ofTheClass = HRESULT_FACILITY(answer.code) == FACILITY_ITF;
    return answer.code == E_OUTOFMEMORY || answer.code == kOutOfMemory || ofTheClass || answer.code == undisturbed.code;
}

TEST_P(Walk, WithoutMemoryAMemberSaysSoAndChangesNothing) {
    FailingMemory memory(module_);
    int failures = 0;
    // Whether the call has as many allocations as that.
    const auto fail = [&](const Class& one, const Member& member, unsigned seed, int number) {
        const auto undisturbed = Attempt(one, member, seed).Make();
        Attempt attempt(one, member, seed);
        const auto before = StateOf(one, attempt.object());
        bool failed = false;
        const auto answer = attempt.Make([&] { memory.FailAt(number); }, [&] { failed = memory.Disarm(); });
        EXPECT_TRUE(SaysSo(answer, undisturbed))
            << "allocation " << number << std::hex << ": " << answer.called << " " << answer.code;
        if (FAILED(answer.called)) {
            EXPECT_EQ(before, StateOf(one, attempt.object())) << "allocation " << number;
        }
        return failed;
    };
    ForEach([&](const Class& one, const Member& member) {
        for (unsigned seed = 0; seed < static_cast<unsigned>(AtScale(3, 20)); ++seed) {
            fail(one, member, seed, INT_MAX);
            const Belongings before;
            int number = 1;
            while (fail(one, member, seed, number)) ++number;
            failures += number - 1;
            before.ExpectNoMore();
        }
    });
    Tell("Allocations of " + library_ + " that were made to fail, each in turn", std::to_string(failures));
    EXPECT_GT(failures, GetParam() == std::wstring_view(kMain) ? 100 : 0);
}

// ---- Nothing and the wrong thing ----

// As a compiled client that passes null and zero for everything, and one that does so for one argument. What a member
// may not do without is a pointer to it.
TEST_P(Walk, ThroughTheVtableMembersGetNullAndRefuseIt) {
    ForEach([](const Class& one, const Member& member) {
        const HRESULT nothing = SlotCall(member).Make(one.MakeObject().get());
        EXPECT_TRUE(FAILED(nothing) || (nothing == S_OK && !member.result)) << std::hex << nothing;
        const std::size_t count = member.parameters.size() + (member.result ? 1 : 0);
        const auto callWithout = [&](std::size_t null) {
            SlotCall call(member);
            for (std::size_t i = 0; i < count; ++i) {
                if (i != null) call.Give(i);
            }
            return call.Make(one.MakeObject().get());
        };
        const HRESULT empty = callWithout(count);  // which may be refused before
        for (std::size_t null = 0; null < count; ++null) {
            const bool isResult = null == member.parameters.size();
            if (!isResult && (!member.parameters[null].byReference || member.parameters[null].optional)) continue;
            const HRESULT answer = callWithout(null);
            EXPECT_TRUE(answer == E_POINTER || (FAILED(empty) && !isResult && answer == empty))
                << "argument " << null << std::hex << ": " << answer;
        }
    });
    SetErrorInfo(0, nullptr);
}

TEST_P(Walk, AnArgumentOfTheWrongKindIsRefusedByItsPlace) {
    Variant array;
    array.vt = VT_ARRAY | VT_I4;
    array.parray = SafeArrayCreateVector(VT_I4, 0, 1);
    ForEach([&](const Class& one, const Member& member) {
        const ComPtr<IDispatch> object = one.MakeObject();
        const UINT count = static_cast<UINT>(member.parameters.size());
        for (UINT wrong = 0; wrong < count; ++wrong) {
            if (member.parameters[count - 1 - wrong].type == VT_VARIANT) continue;
            std::vector<VARIANT> arguments(count, VARIANT{});
            for (UINT i = 0; i < count; ++i) {
                const VARTYPE type = member.parameters[count - 1 - i].type;
                if (type != VT_VARIANT) arguments[i].vt = type;
            }
            arguments[wrong] = array;
            DISPID put = DISPID_PROPERTYPUT;
            DISPPARAMS parameters{arguments.data(), &put, count, member.IsLet()};
            UINT bad = 99;
            EXPECT_EQ(DISP_E_TYPEMISMATCH, object->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, member.kind,
                                                          &parameters, nullptr, nullptr, &bad));
            EXPECT_EQ(wrong, bad);
        }
    });
}

// ---- Hostile calls ----

// Calls with arguments that no sane client passes, mixed with sane ones, late bound or through the vtable. Wherever the
// client's code runs meanwhile, in a default property, an event, a message box, while an object is asked who it is, it
// changes its variables, calls again, disconnects its sink or lets go of the object.
class Campaign {
  public:
    explicit Campaign(const wchar_t* library) : classes_(ReadClasses(library)) {
        clientCode = [this] { Interfere(); };
    }
    Campaign(const Campaign&) = delete;
    Campaign& operator=(const Campaign&) = delete;
    ~Campaign() { clientCode = nullptr; }

    void Run(int calls) {
        constexpr int kCallsAnObject = 100;
        for (const int last = made_ + calls; made_ < last;) {
            class_ = &AnyOf(classes_);
            const TestWindow window;
            realWindow = window.handle();
            object_ = class_->MakeObject();
            if (OneIn(3)) Connect();
            for (int i = 0; i < kCallsAnObject && object_; ++i) Call();
            Disconnect();
            object_ = nullptr;
            PumpMessages();
            realWindow = 0;
        }
        SetErrorInfo(0, nullptr);
    }

    void Print() const {
        std::printf("seed %u, %d calls by the client's code, %d objects let go\n", kSeed, inside_, letGo_);
        for (const auto& [answer, count] : answers_) std::printf("%08lx %7d\n", answer, count);
    }

  private:
    void Connect() {
        ComPtr<IEnumConnectionPoints> points;
        if (const auto container = object_.As<IConnectionPointContainer>()) {
            container->EnumConnectionPoints(points.Receive());
            points->Next(1, point_.Receive(), nullptr);
            EXPECT_EQ(S_OK, point_->Advise(AnyOf(Objects()).get(), &cookie_));
        }
    }
    void Disconnect() {
        if (const auto point = std::exchange(point_, nullptr)) point->Unadvise(cookie_);
    }

    void Interfere() {
        if (!object_ || depth_ == 2 || OneIn(2)) return Client::ChangeAVariable();
        ++depth_, ++inside_;
        if (OneIn(8)) {
            point_ = nullptr;  // which holds the object, too
            object_ = nullptr;
            ++letGo_;
        } else if (OneIn(8)) {
            Disconnect();
        } else {
            Call();
        }
        --depth_;
    }

    void Call() {
        const Member& member = AnyOf(class_->members);
        inHand = std::to_string(++made_) + ": " + Narrow(class_->name + L"." + member.name);
        Client client;
        if (OneIn(20)) return AskForNames(member);
        if (OneIn(8)) return CallSlot(member);
        const bool sane = OneIn(3);
        Request request(member, client, sane ? Arguments::Sane : Arguments::Any);
        if (!sane && OneIn(2)) request.Damage(client);
        Variant result;
        Raised raised;
        UINT badArgument = 0;
        const std::string where = inHand;
        const bool wantsException = !OneIn(4);
        const LCID locale = OneIn(2) ? LOCALE_USER_DEFAULT : engine() & 0xFFFF;
        const HRESULT answer = request.SendTo(object_.get(), locale, OneIn(4) ? nullptr : &result,
                                              wantsException ? &raised : nullptr, OneIn(4) ? nullptr : &badArgument);
        Check(answer, where);
        const bool tells = answer == DISP_E_EXCEPTION && wantsException;
        EXPECT_TRUE(tells ? FAILED(raised.scode) && SysStringLen(raised.bstrDescription)
                          : !raised.scode && !raised.bstrDescription)
            << where;
        EXPECT_TRUE(SUCCEEDED(answer) || result.vt == VT_EMPTY) << where;
    }

    // Nothing holds the object but the member.
    void CallSlot(const Member& member) {
        SlotCall call(member);
        for (std::size_t i = 0; i < member.parameters.size(); ++i) call.Give(i, ExactValue(member.parameters[i].type));
        if (member.result) call.Give(member.parameters.size());
        call.Make(object_.get());
    }

    void AskForNames(const Member& member) {
        std::wstring names[3];
        LPOLESTR given[3];
        for (int i = 0; i < 3; ++i) {
            names[i] = OneIn(2) ? member.name : AnyText();
            given[i] = OneIn(10) ? nullptr : names[i].data();
        }
        DISPID ids[3];
        Check(object_->GetIDsOfNames(OneIn(10) ? IID_IDispatch : IID_NULL, OneIn(10) ? nullptr : given,
                                     static_cast<UINT>(Below(4)), engine(), OneIn(10) ? nullptr : ids),
              inHand);
    }

    void Check(HRESULT answer, const std::string& where) {
        ++answers_[static_cast<ULONG>(answer)];
        EXPECT_TRUE(IsProper(answer)) << where << std::hex << ": " << answer;
    }

    const std::vector<Class>& classes_;
    const Class* class_ = nullptr;
    ComPtr<IDispatch> object_;
    ComPtr<IConnectionPoint> point_;
    DWORD cookie_ = 0;
    int made_ = 0, depth_ = 0, inside_ = 0, letGo_ = 0;
    std::map<ULONG, int> answers_;
};

TEST_P(Walk, HostileCallsGetAProperAnswerAndLeaveNothingBehind) {
    const Heap heap(module_);
    const int calls = GetParam() == std::wstring_view(kMain) ? AtScale(100'000, 1'000'000) : AtScale(20'000, 200'000);
    {
        Campaign campaign(GetParam());
        const OpenBox boxes([] { clientCode(); });
        campaign.Run(static_cast<int>(ReadClasses(GetParam()).size()) * 2000);  // until all that stays is there
        const Belongings before;
        campaign.Run(calls);
        campaign.Print();
        before.ExpectNoMore();
    }
    EXPECT_TRUE(CanUnload(GetParam()));
    Tell("Malformed and hostile calls of every member of " + library_, std::to_string(calls));
}

// ---- Over a long time ----

double CommittedMegabytes() {
    SIZE_T bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region);) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
        const char* const next = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
        if (next <= at) break;
        at = next;
    }
    return static_cast<double>(bytes) / (1 << 20);
}

// Rounds over all members, as many minutes as VELK_SOAK_MINUTES says.
TEST_P(Walk, ASoakKeepsNoMemory) {
    const char* const asked = std::getenv("VELK_SOAK_MINUTES");
    if (!asked) GTEST_SKIP() << "only where VELK_SOAK_MINUTES is set";
    unsigned rounds = 0;
    const auto run = [&] {
        for (unsigned seed = 0; seed < 50; ++seed, ++rounds)
            ForEach([&](const Class& one, const Member& member) { Attempt(one, member, seed).Make(); });
    };
    run(), run();
    const Belongings before;
    const double memory = CommittedMegabytes();
    for (const ULONGLONG start = GetTickCount64(); GetTickCount64() - start < 60'000 * std::atof(asked);) run();
    before.ExpectNoMore();
    EXPECT_LT(CommittedMegabytes(), memory + 1);
    Tell("Soak over all members of " + library_ + " for " + asked + " minutes",
         std::to_string(rounds) + " rounds, within 1 MB of " + std::to_string(static_cast<int>(memory)) + " MB");
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
