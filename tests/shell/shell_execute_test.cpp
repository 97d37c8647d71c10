// CShellExecute against a recorded shell: what it is handed, to the last flag, and what its answers become.
#include <gtest/gtest.h>

#include <optional>
#include <ostream>

#include "frame/text.h"
#include "support/client.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/scoped_variable.h"
#include "support/scratch_folder.h"

#include <shellapi.h>

namespace velk::test {
namespace {

using OptionalText = std::optional<std::string>;  // nothing for a null pointer

struct Order {
    DWORD size;  // of the record; 0 for the plain call, which has none
    ULONG mask;
    HWND owner;
    OptionalText verb, file, parameters, folder;
    int show;
    bool operator==(const Order&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Order& order) {
    out << order.size << " " << order.mask << " " << order.owner;
    for (const OptionalText& text : {order.verb, order.file, order.parameters, order.folder}) {
        out << " " << (text ? "'" + *text + "'" : "null");
    }
    return out << " " << order.show;
}

class RecordedShell {
  public:
    RecordedShell() { current_ = this; }
    ~RecordedShell() { current_ = nullptr; }

    std::vector<Order> orders;
    LONG instance = 42;
    HANDLE process = nullptr;
    void (*whileAtIt)() = nullptr;

  private:
    static OptionalText Text(LPCSTR text) { return text ? OptionalText(text) : std::nullopt; }

    static HINSTANCE WINAPI Plain(HWND owner, LPCSTR verb, LPCSTR file, LPCSTR parameters, LPCSTR folder, INT show) {
        current_->orders.push_back({0, 0, owner, Text(verb), Text(file), Text(parameters), Text(folder), show});
        return static_cast<HINSTANCE>(LongToHandle(current_->instance));
    }
    static BOOL WINAPI Extended(SHELLEXECUTEINFOA* order) {
        current_->orders.push_back({order->cbSize, order->fMask, order->hwnd, Text(order->lpVerb), Text(order->lpFile),
                                    Text(order->lpParameters), Text(order->lpDirectory), order->nShow});
        EXPECT_TRUE(!order->hInstApp && !order->lpIDList && !order->lpClass && !order->hkeyClass && !order->dwHotKey &&
                    !order->hIcon && !order->hProcess);
        order->hInstApp = static_cast<HINSTANCE>(LongToHandle(current_->instance));
        order->hProcess = current_->process;
        if (current_->whileAtIt) current_->whileAtIt();
        return FALSE;  // which nobody looks at
    }

    static inline RecordedShell* current_ = nullptr;
    ImportPatch plain_{Library(), "ShellExecuteA", reinterpret_cast<void*>(&Plain)};
    ImportPatch extended_{Library(), "ShellExecuteExA", reinterpret_cast<void*>(&Extended)};
};

class RecordedLaunch : public testing::Test {
  protected:
    Outcome Call(const wchar_t* name, std::initializer_list<VARIANT> arguments) {
        return test::Call(object_.get(), name, arguments);
    }
    bool StillExecuting() { return Get(object_.get(), L"StillExecuting").value.boolVal == VARIANT_TRUE; }
    // With the process itself as what was started, which runs.
    void StartSomething() {
        shell_.process = GetCurrentProcess();
        Call(L"LaunchProgram", {Arg(0L), Arg(&file_)});
        EXPECT_TRUE(StillExecuting());
    }

    const ScopedVariable noSwitch_{L"VELKSPRT_REPORTS", nullptr};
    RecordedShell shell_;
    ComPtr<IDispatch> object_ = CreateObject<IDispatch>(__uuidof(::CShellExecute));
    Variant file_ = Text(L"c\u00E4sar.txt");
    Variant folder_ = Text(L"C:\\in");
    Variant with_ = Text(L"/a b");
};

constexpr ULONG kLaunch = 0x240;
constexpr DWORD kRecord = sizeof(void*) == 4 ? 60 : 112;

TEST_F(RecordedLaunch, HandsTheShellExactlyThis) {
    const HWND owner = static_cast<HWND>(LongToHandle(0x12345));
    const VARIANT window = Arg(0x12345L), file = Arg(&file_), folder = Arg(&folder_), with = Arg(&with_);
    const std::string name = "c\xE4sar.txt";  // Windows-1252, the prefix's code page
    const struct {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
        Order order;
    } kCases[] = {
        {L"Explore", {window, file}, {0, 0, owner, "explore", name, {}, {}, 10}},
        {L"Explore", {window, file, Arg(0L)}, {0, 0, owner, "explore", name, {}, {}, 0}},
        {L"LaunchFolder", {Arg(0L), file}, {0, 0, nullptr, "open", name, {}, {}, 10}},
        {L"LaunchFolder", {window, file, Arg(7L)}, {0, 0, owner, "open", name, {}, {}, 7}},
        {L"LaunchURL", {window, file, Arg(3L)}, {0, 0, owner, {}, name, {}, {}, 3}},
        {L"LaunchEmail", {window, file}, {0, 0, owner, {}, "mailto:" + name, {}, {}, 10}},
        {L"PrintDocument", {window, file}, {0, 0, owner, "print", name, {}, {}, 0}},
        {L"LaunchDocument", {window, file, folder}, {kRecord, kLaunch, owner, "Open", name, "", "C:\\in", 10}},
        {L"LaunchDocument", {window, file, folder, Arg(5L)}, {kRecord, kLaunch, owner, "Open", name, "", "C:\\in", 5}},
        {L"LaunchProgram", {window, file}, {kRecord, kLaunch, owner, "Open", name, "", "", 10}},
        {L"LaunchProgram",
         {window, file, with, folder, Arg(-1L)},
         {kRecord, kLaunch, owner, "Open", name, "/a b", "C:\\in", -1}},
    };
    for (const auto& one : kCases) {
        shell_.orders.clear();
        const Outcome outcome = Call(one.member, one.arguments);
        EXPECT_EQ(-1, outcome.value.lVal) << one.member;
        ASSERT_EQ(1u, shell_.orders.size()) << one.member;
        EXPECT_EQ(one.order, shell_.orders[0]) << one.member;
    }
}

TEST_F(RecordedLaunch, TakesNullPointersForLeftOutArguments) {
    const auto early = object_.As<_CShellExecute>();
    LONG owner = 0;
    EnumShellExecuteErrors verdict = seeERROR_BAD_FORMAT;
    EXPECT_EQ(S_OK, early->LaunchProgram(&owner, &file_.bstrVal, nullptr, nullptr, nullptr, &verdict));
    EXPECT_EQ(seeNoError, verdict);
    EXPECT_EQ((Order{kRecord, kLaunch, nullptr, "Open", "c\xE4sar.txt", "", "", 10}), shell_.orders.at(0));
    EXPECT_EQ(E_POINTER, early->LaunchDocument(&owner, &file_.bstrVal, nullptr, nullptr, &verdict));
    EXPECT_EQ(E_POINTER, early->LaunchURL(nullptr, &file_.bstrVal, nullptr, &verdict));
    EXPECT_EQ(E_POINTER, early->ShowProperties(nullptr, nullptr));
    EXPECT_EQ(1u, shell_.orders.size());
}

TEST_F(RecordedLaunch, TheShellsAnswerBecomesTheResult) {
    const struct {
        LONG answer, result;
    } kCases[] = {{0, 0}, {2, 2}, {31, 31}, {7, 7}, {32, 32}, {-9, -9}, {33, -1}, {0x7FFFFFFF, -1}};
    for (const auto& one : kCases) {
        shell_.instance = one.answer;
        EXPECT_EQ(one.result, Call(L"LaunchURL", {Arg(0L), Arg(&file_)}).value.lVal) << one.answer;
        EXPECT_EQ(one.result, Call(L"LaunchProgram", {Arg(0L), Arg(&file_)}).value.lVal) << one.answer;
        EXPECT_FALSE(StillExecuting()) << "there is no process handle";
    }
}

TEST_F(RecordedLaunch, OnlyTheTwoLaunchesWithARecordAreWatched) {
    EXPECT_FALSE(StillExecuting());
    for (const wchar_t* member : {L"Explore", L"LaunchEmail", L"LaunchFolder", L"LaunchURL", L"PrintDocument"}) {
        StartSomething();
        Call(member, {Arg(0L), Arg(&file_)});
        EXPECT_FALSE(StillExecuting()) << member;
    }
    StartSomething();
    const ScratchFolder scratch;
    const Variant path = Text(scratch.Write(L"shown.txt", "").c_str());
    EXPECT_EQ(S_OK, Call(L"ShowProperties", {Arg(path.bstrVal)}).result);
    EXPECT_TRUE(StillExecuting()) << "ShowProperties leaves it alone";
    shell_.instance = 0;
    Call(L"LaunchDocument", {Arg(0L), Arg(&file_), Arg(&folder_)});
    EXPECT_FALSE(StillExecuting()) << "no instance, whatever the handle";
}

TEST_F(RecordedLaunch, ShowPropertiesRaisesItsTwoErrorsAndShowsNone) {
    const ReportRecorder recorder(Library());
    const ScratchFolder scratch;
    const Variant path = Text(scratch.Write(L"shown.txt", "").c_str());
    const Variant folder = Text(scratch.MakeFolder(L"folder").c_str());
    const Variant missing = Text(scratch.Path(L"none").c_str());
    for (const Variant* const none : {&folder, &missing}) {
        const Outcome outcome = Call(L"ShowProperties", {Arg(none->bstrVal)});
        EXPECT_EQ(static_cast<HRESULT>(0x800A0035), outcome.code);
        EXPECT_EQ(L"VelkSupport", outcome.source);
        EXPECT_EQ(L"File not found", outcome.description);
    }
    EXPECT_TRUE(shell_.orders.empty());
    const std::string name = ToAnsi(TextOf(path));
    shell_.instance = 33;
    EXPECT_EQ(S_OK, Call(L"ShowProperties", {Arg(path.bstrVal)}).result);
    EXPECT_EQ((Order{kRecord, 0x44C, GetDesktopWindow(), "properties", name, "", "", 0}), shell_.orders.at(0));
    shell_.instance = 32;
    const Outcome refused = Call(L"ShowProperties", {Arg(path.bstrVal), Arg(0x777L)});
    EXPECT_EQ(static_cast<HWND>(LongToHandle(0x777)), shell_.orders.at(1).owner);
    EXPECT_EQ(-2147203464, refused.code);
    EXPECT_EQ(L"VelkSprt.CShellExecute", refused.source);
    EXPECT_EQ(L"Can not show properties", refused.description);
    EXPECT_TRUE(recorder.reports().empty());
}

TEST_F(RecordedLaunch, ATextWithANulIsShownAndNotHandedOver) {
    const ReportRecorder recorder(Library());
    const Bstr text(std::wstring_view(L"notepad\0.exe", 12));
    const VARIANT nul = Arg(text.get());
    const VARIANT file = Arg(&file_), none = Arg(0L);
    const struct {
        const wchar_t* member;
        std::initializer_list<VARIANT> arguments;
    } kCases[] = {
        {L"Explore", {none, nul}},
        {L"LaunchDocument", {none, nul, file}},
        {L"LaunchDocument", {none, file, nul}},
        {L"LaunchEmail", {none, nul}},
        {L"LaunchFolder", {none, nul}},
        {L"LaunchProgram", {none, nul}},
        {L"LaunchProgram", {none, file, nul}},
        {L"LaunchProgram", {none, file, file, nul}},
        {L"LaunchURL", {none, nul}},
        {L"PrintDocument", {none, nul}},
    };
    for (const auto& one : kCases) {
        StartSomething();
        const std::size_t before = shell_.orders.size();
        const Outcome outcome = Call(one.member, one.arguments);
        EXPECT_EQ(S_OK, outcome.result);
        EXPECT_EQ(seeOUT_OF_MEMORY, outcome.value.lVal);
        ASSERT_FALSE(recorder.reports().empty());
        EXPECT_EQ(one.member, recorder.reports().back().title);
        EXPECT_EQ(L"Error: 5. Invalid procedure call or argument", recorder.reports().back().text);
        EXPECT_EQ(before, shell_.orders.size());
        EXPECT_FALSE(StillExecuting()) << "it was forgotten first";
    }
    EXPECT_EQ(std::size(kCases), recorder.reports().size());
    EXPECT_EQ(static_cast<HRESULT>(0x800A0035), Call(L"ShowProperties", {nul}).code);
}

TEST_F(RecordedLaunch, WithoutADesktopTheShellIsToldToShowNoBoxes) {
    const ScopedVariable set(L"VELKSPRT_REPORTS", L"debugger");
    Call(L"LaunchProgram", {Arg(0L), Arg(&file_)});
    EXPECT_EQ(kLaunch | 0x400, shell_.orders.at(0).mask);
}

IUnknown* held;

TEST_F(RecordedLaunch, LivesThroughALaunchInWhichItsClientDropsIt) {
    held = object_.As<_CShellExecute>().Detach();
    shell_.whileAtIt = [] { held->Release(); };
    LONG owner = 0;
    auto* const early = static_cast<_CShellExecute*>(held);
    object_ = nullptr;
    EnumShellExecuteErrors verdict = seeERROR_BAD_FORMAT;
    EXPECT_EQ(S_OK, early->LaunchProgram(&owner, &file_.bstrVal, nullptr, nullptr, nullptr, &verdict));
    EXPECT_EQ(seeNoError, verdict);
    EXPECT_TRUE(CanUnload());
}

}  // namespace
}  // namespace velk::test
