// What every member of every class is put through: failing allocations, nulls, and hostile calls during which the
// client's code does what it likes.
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include "support/boxes.h"
#include "support/fake.h"
#include "support/heap.h"
#include "support/library_copy.h"
#include "support/scratch_folder.h"
#include "support/test_hook.h"
#include "trust/calm_platform.h"
#include "trust/harness.h"

namespace velk::test {
namespace {

constexpr HRESULT kOutOfMemory = static_cast<HRESULT>(0x800A0007);

std::string inHand;  // the member that is called

// A crash or std::terminate inside a library takes every trace along but this.
void TellWhatEnded(int) {
    std::printf("The process was ended in %s\n", inHand.c_str());
    std::fflush(stdout);
    std::_Exit(3);
}

// On a platform that no call can harm, with the hook library, a hook to pass to it, and files to read.
class Walk : public testing::TestWithParam<const wchar_t*> {
  protected:
    static void SetUpTestSuite() {
        for (const int end : {SIGABRT, SIGSEGV, SIGILL, SIGFPE}) std::signal(end, &TellWhatEnded);
    }
    Walk() {
        if (!isMain_) furtherObjects.push_back(hook_.As<IDispatch>());
        // Without "[END]" the seal is 0. Settings stand in a file beside the library.
        furtherTexts = {folder_.Write(L"sealed", "[BEGIN]\r\nA=1\r\n@CRC=0"),
                        folder_.Write(L"broken", "[BEGIN]\r\n@CRC=1")};
        EXPECT_TRUE(std::ofstream(std::filesystem::path(settings_)) << "[abc]\nabc=1\n0=2\n[0]\nabc=3\n" << std::flush);
    }
    ~Walk() override {
        furtherObjects.clear();
        furtherTexts.clear();
        DeleteFileW(settings_.c_str());
        EXPECT_EQ(1u, hook_->count());
        for (const auto& object : Objects()) EXPECT_EQ(1u, object->count());
    }
    void ForEach(const std::function<void(const Class&, const Member&)>& trial) {
        for (const Class& one : ReadClasses(GetParam())) {
            for (const Member& member : one.members) {
                SCOPED_TRACE(inHand = ToAnsi(one.name + L"." + member.name));
                trial(one, member);
            }
        }
    }

    const bool isMain_ = GetParam() == std::wstring_view(kMain);
    const HMODULE module_ = ReadClasses(GetParam())[0].library;
    const std::string library_ = "`" + ToAnsi(GetParam()) + "`";
    const std::list<ImportPatch> calm_ = CalmPlatform();
    const std::shared_ptr<void> hooks_ = HookLibrary();
    const ComPtr<TestHook> hook_ = TestHook::Make();
    const ScratchFolder folder_;
    const std::wstring settings_ = BuiltFile(L"MyFileSettings.ini");
};

INSTANTIATE_TEST_SUITE_P(Both, Walk, testing::Values(kMain, kHooks),
                         [](const auto& given) { return given.param == std::wstring_view(kMain) ? "Main" : "Hooks"; });

double CommittedMegabytes() {
    SIZE_T bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region); at += region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    }
    return static_cast<double>(bytes) / (1 << 20);
}

TEST(Process, IsLeftAloneByALibraryThatIsLoaded) {
    const Snapshot before = ProcessState();
    const LibraryCopy copy;
    EXPECT_TRUE(copy.Create(__uuidof(CStack)));
    EXPECT_EQ(before, ProcessState());
}

// ---- Memory that runs out ----

constexpr auto kUnlessRefused = [](auto...) { return !Heap::Refuses(0); };

// The values of what a client can set, as texts. A window is kept though it could not be hooked.
std::map<std::wstring, std::wstring> StateOf(const Class& one, IDispatch* object) {
    std::map<std::wstring, std::wstring> state;
    for (const Member& member : one.members) {
        if (!member.IsLet() || member.name == L"hWnd" || state.contains(member.name)) continue;
        Outcome outcome = Get(object, member.name.c_str());
        if (SUCCEEDED(VariantChangeType(&outcome.value, &outcome.value, 0, VT_BSTR)))
            state[member.name] = TextOf(outcome.value);
    }
    return state;
}

bool SaysSo(const Outcome& answer, HRESULT undisturbed) {
    if (answer.result != DISP_E_EXCEPTION) return IsProper(answer.result);
    const bool ofTheClass = HRESULT_FACILITY(answer.code) == FACILITY_ITF;
    return answer.code == E_OUTOFMEMORY || answer.code == kOutOfMemory || ofTheClass || answer.code == undisturbed;
}

// A call with sane arguments, the same ones for the same seed.
Outcome Attempt(Subject& subject, const Member& member, unsigned seed) {
    engine.seed(seed);
    Client client;
    Request request(member, client, Arguments::Sane);
    if (seed % 2) subject.Connect();
    Outcome outcome = request.SendTo(subject.object.get());
    ForgetError();
    return outcome;
}

// Each allocation in turn fails, on the heap or in the platform. The object has been called before, so that there is
// something to lose.
TEST_P(Walk, WithoutMemoryAMemberSaysSoAndChangesNothing) {
    int left = 0, failures = 0;
    const Heap heap(module_, [&](std::size_t) { return left > 0 && --left == 0; });
    std::list<ImportPatch> patches;
    Guard<kUnlessRefused, &SysAllocStringLen, &SysAllocStringByteLen, &SafeArrayCreate, &SafeArrayCopy, &VariantCopy,
          &VariantCopyInd, &VariantChangeType, &VariantChangeTypeEx, &CreateErrorInfo>(module_, patches);
    ForEach([&](const Class& one, const Member& member) {
        for (unsigned seed = 0; seed < static_cast<unsigned>(AtScale(3, 20)); ++seed) {
            HRESULT undisturbed = S_OK;  // what the member fails with anyway
            // Whether the call has as many allocations as that; 0: none fails.
            const auto fail = [&](int number) {
                Subject subject(one, seed % 2);
                Attempt(subject, member, seed + 1000);
                const auto before = StateOf(one, subject.object.get());
                left = number;
                const Outcome answer = Attempt(subject, member, seed);
                const bool failed = std::exchange(left, 0) == 0 && number;
                if (number == 0) undisturbed = answer.code;
                if (failed) subject.MayLeaveHooks();
                EXPECT_TRUE(SaysSo(answer, undisturbed))
                    << "allocation " << number << std::hex << ": " << answer.result << " " << answer.code;
                if (FAILED(answer.result)) {
                    EXPECT_EQ(before, StateOf(one, subject.object.get())) << "allocation " << number;
                }
                return failed;
            };
            fail(0);
            for (const bool again : {false, true}) {  // with what is made once and kept
                const Snapshot before = Belongings();
                for (int number = 1; fail(number); ++number) ++failures;
                if (before == Belongings()) break;
                if (again) {
                    EXPECT_EQ(before, Belongings());
                }
            }
        }
    });
    Tell("Allocations of " + library_ + " that were made to fail, each in turn", std::to_string(failures));
    EXPECT_GT(failures, isMain_ ? 100 : 0);
}

TEST(Memory, MayBeMissingWhenAThreadsFirstMemberFails) {
    HRESULT ended = S_OK;
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        const auto file = CreateObject<_CDatFile>(__uuidof(::CDatFile));
        const Heap heap(Library(), [](std::size_t) { return true; });
        BSTR text = nullptr;
        ended = file->get_Parameter(&text);
    }).join();
    EXPECT_EQ(static_cast<HRESULT>(0x80042716), ended);  // what is wrong, though there is no room to say more
}

// ---- Nothing ----

// As a compiled client that passes null and zero for everything, and one that does so for one argument. What a member
// may not do without is a pointer to it, and where a value refers to something that has to be there.
TEST_P(Walk, ThroughTheVtableMembersGetNullAndRefuseIt) {
    ForEach([](const Class& one, const Member& member) {
        const std::size_t count = member.takes.size();
        const auto call = [&](auto&& given) {
            std::vector<std::optional<Variant>> places(count);
            for (std::size_t i = 0; i < count; ++i) {
                if (const std::optional<VARIANT> value = given(i)) places[i] = Owned(*value);
            }
            ForgetError();
            return CallSlot(one.MakeObject().get(), member, places);
        };
        const HRESULT nothing = call([](std::size_t) { return std::nullopt; });
        EXPECT_TRUE(FAILED(nothing) || (nothing == S_OK && !member.hasResult)) << std::hex << nothing;
        const HRESULT empty = call([](std::size_t) { return VARIANT{}; });  // which may be refused before
        for (std::size_t i = 0; i < count; ++i) {
            SCOPED_TRACE(testing::Message() << "argument " << i);
            const bool isResult = i == member.arguments();
            const auto with = [&](std::optional<VARIANT> value) {
                return call([&](std::size_t at) { return at == i ? value : VARIANT{}; });
            };
            if (!isResult && member.takes[i].type == VT_VARIANT) {
                VARIANT nowhere = Ref(VT_I4, nullptr), circle = Arg(&circle);
                for (const VARIANT& value : {nowhere, Arg(&nowhere), Ref(VT_VARIANT, nullptr)})
                    EXPECT_EQ(E_POINTER, with(value));
                EXPECT_TRUE(FAILED(with(circle)));
                EXPECT_EQ(with(circle), with(Bare(0x1234, 0)));
            }
            if (!isResult && !member.takes[i].byReference) continue;
            const HRESULT answer = with(std::nullopt);
            const bool isOptional = !isResult && member.takes[i].optional;  // which is zero then
            EXPECT_TRUE(isOptional ? answer == empty
                                   : answer == E_POINTER || (FAILED(empty) && !isResult && answer == empty))
                << std::hex << answer;
            const auto raised = ForgetError();
            if (isResult || answer != E_POINTER) continue;
            EXPECT_EQ(std::pair(one.iid, std::wstring(L"Invalid pointer")), raised);
        }
    });
    ForgetError();
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
            subject_.emplace(*class_);
            if (OneIn(3)) subject_->Connect();
            for (int i = 0; i < kCallsAnObject && subject_->object; ++i) Call();
            subject_->Disconnect();
            subject_.reset();
            PumpMessages();
        }
        ForgetError();
    }

    int letGo() const noexcept { return letGo_; }  // how often the client's code let go of the object

  private:
    void Interfere() {
        if (!subject_ || !subject_->object || depth_ == 2 || OneIn(2)) return Client::ChangeAVariable();
        ++depth_;
        if (OneIn(8)) {
            subject_->LetGo();
            ++letGo_;
        } else if (OneIn(8)) {
            subject_->Disconnect();
        } else {
            Call();
        }
        --depth_;
    }

    void Call() {
        const Member& member = AnyOf(class_->members);
        inHand = std::to_string(++made_) + ": " + ToAnsi(class_->name + L"." + member.name);
        Client client;
        if (OneIn(8)) return CallBySlot(member);
        const bool sane = OneIn(3);
        Request request(member, client, sane ? Arguments::Sane : Arguments::Any);
        if (!sane && OneIn(2)) request.Damage(client);
        const std::string where = inHand;
        const bool wantsException = !OneIn(4);
        const LCID locale = OneIn(2) ? LOCALE_USER_DEFAULT : engine() & 0xFFFF;
        const Outcome told = request.SendTo(subject_->object.get(), locale, !OneIn(4), wantsException, !OneIn(4));
        EXPECT_TRUE(IsProper(told.result)) << where << std::hex << ": " << told.result;
        const bool tells = told.result == DISP_E_EXCEPTION && wantsException;
        EXPECT_TRUE(tells ? FAILED(told.code) && !told.description.empty() : !told.code && told.description.empty())
            << where;
        EXPECT_TRUE(SUCCEEDED(told.result) || told.value.vt == VT_EMPTY) << where;
    }

    // Nothing holds the object but the member.
    void CallBySlot(const Member& member) {
        std::vector<std::optional<Variant>> places;
        for (const Taken& taken : member.takes)
            places.push_back(places.size() < member.arguments() ? ExactValue(taken.type) : Variant());
        CallSlot(subject_->object.get(), member, places);
    }

    const std::vector<Class>& classes_;
    const Class* class_ = nullptr;
    std::optional<Subject> subject_;
    int made_ = 0, depth_ = 0, letGo_ = 0;
};

// As many calls as the scale says, or minutes as VELK_SOAK_MINUTES says.
TEST_P(Walk, HostileCallsGetAProperAnswerAndLeaveNothingBehind) {
    const char* const soak = std::getenv("VELK_SOAK_MINUTES");
    // Half of the time for each library.
    const double end = static_cast<double>(GetTickCount64()) + (soak ? 30'000 * std::atof(soak) : 0);
    const Heap heap(module_);
    const int calls = isMain_ ? AtScale(100'000, 1'000'000) : AtScale(20'000, 200'000);
    Snapshot before = ProcessState();
    int made = 0;
    {
        Campaign campaign(GetParam());
        const Boxes boxes([](auto...) { clientCode(); });
        campaign.Run(static_cast<int>(ReadClasses(GetParam()).size()) * 2000);  // until all that stays is there
        before.merge(Belongings());
        const double memory = CommittedMegabytes();
        for (; made == 0 || static_cast<double>(GetTickCount64()) < end; made += calls) campaign.Run(calls);
        EXPECT_LT(isMain_ ? 100 : 0, campaign.letGo());
        EXPECT_EQ(before, Belongings());
        EXPECT_LT(CommittedMegabytes(), memory + 1);
    }
    EXPECT_TRUE(CanUnload(module_));
    Tell("Malformed and hostile calls of every member of " + library_ +
             ": strings, arrays, memory, handles, drawing objects left behind",
         std::to_string(made) + " calls, none");
}

}  // namespace
}  // namespace velk::test
