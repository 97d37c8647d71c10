// CShellExecute and the real shell: programs that really start, verbs that really arrive.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "frame/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/scoped_variable.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

constexpr DWORD kPatience = 20'000;

bool Eventually(const std::function<bool()>& happened) {
    const DWORD start = GetTickCount();
    while (!happened()) {
        if (GetTickCount() - start > kPatience) return false;
        Sleep(10);
    }
    return true;
}

std::wstring Program() {
    std::wstring path = L"Z:" LAUNCHED_PROGRAM;
    for (wchar_t& c : path) {
        if (c == L'/') c = L'\\';
    }
    return path;
}

// A key under the machine's classes (Wine 8.0 ignores the user's), gone with all below it when the test ends.
class RegisteredClass {
  public:
    explicit RegisteredClass(const wchar_t* name) : path_(std::wstring(L"Software\\Classes\\") + name) {}
    RegisteredClass(const RegisteredClass&) = delete;
    RegisteredClass& operator=(const RegisteredClass&) = delete;
    ~RegisteredClass() { RegDeleteTreeW(HKEY_LOCAL_MACHINE, path_.c_str()); }

    void Set(const wchar_t* key, const wchar_t* name, const std::wstring& text) const {
        EXPECT_EQ(ERROR_SUCCESS, RegSetKeyValueW(HKEY_LOCAL_MACHINE, (path_ + key).c_str(), name, REG_SZ, text.c_str(),
                                                 static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))));
    }
    // The program gets the verb and what it is for.
    void SetVerb(const wchar_t* verb) const {
        Set((std::wstring(L"\\shell\\") + verb + L"\\command").c_str(), nullptr,
            L"\"" + Program() + L"\" " + verb + L" \"%1\"");
    }

  private:
    std::wstring path_;
};

class Launching : public testing::Test {
  protected:
    LONG Call(const wchar_t* name, std::initializer_list<VARIANT> arguments) {
        return test::Call(object_.get(), name, arguments).value.lVal;
    }
    bool StillExecuting() { return Get(object_.get(), L"StillExecuting").value.boolVal == VARIANT_TRUE; }

    // What the started program wrote, once it has: its arguments, its folder and its show command, separated by "|".
    std::string Started() {
        std::string text;
        Eventually([&] { return !(text = ReadLog()).empty(); });
        DeleteFileW(log_.c_str());
        return text;
    }
    std::string ReadLog() {
        const HANDLE file =
            CreateFileW(log_.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        if (file == INVALID_HANDLE_VALUE) return {};
        char bytes[1024];
        DWORD count = 0;
        ReadFile(file, bytes, sizeof(bytes), &count, nullptr);
        CloseHandle(file);
        return {bytes, count};
    }

    const ScratchFolder folder_;
    const std::wstring log_ = folder_.Path(L"log");
    const ScopedVariable logName_{L"VELK_LAUNCH_LOG", log_.c_str()};
    ComPtr<IDispatch> object_ = CreateObject<IDispatch>(__uuidof(::CShellExecute));
    const Variant none_ = Text(L"");
};

TEST_F(Launching, WatchesAProgramFromItsStartToItsEnd) {
    const ScopedVariable eventName(L"VELK_LAUNCH_EVENT", L"velk-launch");
    const HANDLE go = CreateEventW(nullptr, TRUE, FALSE, L"velk-launch");
    const Variant program = Text(Program().c_str()), with = Text(L"one \"two three\""),
                  in = Text(folder_.path().c_str());
    ASSERT_EQ(-1, Call(L"LaunchProgram", {Arg(0L), Arg(program.bstrVal), Arg(with.bstrVal), Arg(in.bstrVal), Arg(7L)}));
    EXPECT_EQ("one|two three|" + ToAnsi(folder_.path()) + "|7", Started());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(StillExecuting());
    SetEvent(go);
    EXPECT_TRUE(Eventually([&] { return !StillExecuting(); }));
    CloseHandle(go);
}

TEST_F(Launching, AnExitCodeOf259ReadsAsStillRunning) {
    const ScopedVariable code(L"VELK_LAUNCH_EXIT", L"259");
    const Variant program = Text(Program().c_str());
    ASSERT_EQ(-1, Call(L"LaunchProgram", {Arg(0L), Arg(program.bstrVal)}));
    Started();
    Sleep(300);  // there is nothing to wait for
    EXPECT_TRUE(StillExecuting());
}

TEST_F(Launching, KeepsOneHandleOfEachProgramAndNoMore) {
    const Variant program = Text(Program().c_str());
    const auto launch = [&] {
        ASSERT_EQ(-1, Call(L"LaunchProgram", {Arg(0L), Arg(program.bstrVal)}));
        ASSERT_TRUE(Eventually([&] { return !StillExecuting(); }));
    };
    launch();  // the shell keeps something of its own at first
    const std::size_t before = OpenHandles();
    for (int i = 0; i < 5; ++i) launch();
    EXPECT_EQ(before + 5, OpenHandles());
    object_ = nullptr;
    EXPECT_EQ(before + 5, OpenHandles()) << "the release closes none";
}

TEST_F(Launching, VerbsArriveAtTheProgramOfAFileType) {
    const RegisteredClass extension(L".velktest");
    const RegisteredClass type(L"Velk.Test");
    extension.Set(L"", nullptr, L"Velk.Test");
    type.SetVerb(L"open");
    type.SetVerb(L"print");
    const std::wstring path = folder_.Write(L"a document.velktest", "");
    const std::string name = ToAnsi(path);
    const Variant document = Text(path.c_str()), in = Text(folder_.path().c_str());
    EXPECT_EQ(-1, Call(L"LaunchDocument", {Arg(0L), Arg(document.bstrVal), Arg(in.bstrVal)}));
    EXPECT_EQ(0u, Started().find("open|" + name + "|" + ToAnsi(folder_.path()) + "|"));
    EXPECT_TRUE(Eventually([&] { return !StillExecuting(); }));
    EXPECT_EQ(-1, Call(L"PrintDocument", {Arg(0L), Arg(document.bstrVal)}));
    const std::string printed = Started();
    EXPECT_EQ(0u, printed.find("print|" + name + "|"));
    EXPECT_EQ("|0", printed.substr(std::min(printed.size(), printed.rfind('|')))) << "hidden";
    const ScopedVariable where(L"VELK_WHERE", folder_.path().c_str());
    const Variant expanded = Text(L"%VELK_WHERE%\\a document.velktest");
    EXPECT_EQ(-1, Call(L"LaunchDocument", {Arg(0L), Arg(expanded.bstrVal), Arg(none_.bstrVal)}));
    EXPECT_EQ(0u, Started().find("open|" + name + "|"));
}

TEST_F(Launching, AnAddressArrivesAtTheProgramOfItsProtocol) {
    const RegisteredClass protocol(L"velktest");
    protocol.Set(L"", L"URL Protocol", L"");
    protocol.SetVerb(L"open");
    const Variant address = Text(L"velktest://here/?a=b");
    EXPECT_EQ(-1, Call(L"LaunchURL", {Arg(0L), Arg(address.bstrVal)}));
    EXPECT_EQ(0u, Started().find("open|velktest://here/?a=b|"));
}

TEST_F(Launching, BadInputGetsTheShellsVerdictAndNoBox) {
    const Variant missing = Text(folder_.Path(L"none.exe").c_str());
    const Variant unknown = Text(folder_.Write(L"file.velkunknown", "").c_str());
    // Wine 8.0 itself does not survive a name of more than about a thousand characters.
    const Variant endless = Text(std::wstring(600, L'x').c_str());
    for (const LONG owner : {0L, 0x7FFF0L}) {  // no owner, and one that does not exist
        EXPECT_EQ(seeERROR_FILE_NOT_FOUND, Call(L"LaunchProgram", {Arg(owner), Arg(missing.bstrVal)}));
        EXPECT_FALSE(StillExecuting());
        EXPECT_EQ(seeSE_ERR_NOASSOC, Call(L"LaunchDocument", {Arg(owner), Arg(unknown.bstrVal), Arg(none_.bstrVal)}));
        for (const wchar_t* member : {L"Explore", L"LaunchFolder", L"LaunchURL", L"PrintDocument"}) {
            EXPECT_EQ(seeERROR_FILE_NOT_FOUND, Call(member, {Arg(owner), Arg(missing.bstrVal)})) << member;
        }
        EXPECT_EQ(seeERROR_FILE_NOT_FOUND, Call(L"LaunchProgram", {Arg(owner), Arg(endless.bstrVal)}));
    }
    // Wine 8.0 has no properties sheet.
    const Outcome sheet = test::Call(object_.get(), L"ShowProperties", {Arg(unknown.bstrVal)});
    EXPECT_EQ(-2147203464, sheet.code);
}

}  // namespace
}  // namespace velk::test
