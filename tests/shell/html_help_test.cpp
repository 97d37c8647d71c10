// CHtmlHelp: against a recorded engine, and opening a real compiled help file where the build could make one.
#include <gtest/gtest.h>

#include <algorithm>

#include "frame/platform.h"
#include "frame/text.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/test_window.h"

#include <htmlhelp.h>

namespace velk::test {
namespace {

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x800A0035);

// Stands in for the loader: hands out an engine that records what it is told, or none.
class RecordedEngine {
  public:
    struct Order {
        HWND owner;
        std::string file;
        UINT command;
        DWORD_PTR data;
        std::string topic;
        bool operator==(const Order&) const = default;
    };

    explicit RecordedEngine(HMODULE module)
        : load_(module, "LoadLibraryExW", reinterpret_cast<void*>(&Load)),
          find_(module, "GetProcAddress", reinterpret_cast<void*>(&Find)) {
        current_ = this;
    }
    ~RecordedEngine() { current_ = nullptr; }

    bool installed = true;
    bool whole = true;
    std::vector<std::wstring> loaded;
    std::vector<Order> orders;

  private:
    static HMODULE WINAPI Load(LPCWSTR path, HANDLE, DWORD flags) {
        EXPECT_EQ(static_cast<DWORD>(LOAD_WITH_ALTERED_SEARCH_PATH), flags);
        current_->loaded.push_back(path);
        return current_->installed ? GetModuleHandleW(nullptr) : nullptr;
    }
    static FARPROC WINAPI Find(HMODULE, LPCSTR name) {
        EXPECT_STREQ("HtmlHelpA", name);
        return current_->whole ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&Help)) : nullptr;
    }
    static HWND WINAPI Help(HWND owner, LPCSTR file, UINT command, DWORD_PTR data) {
        Order order{owner, file, command, data, ""};
        if (command == HH_DISPLAY_TOPIC) order.topic = reinterpret_cast<const char*>(std::exchange(order.data, 0));
        if (command == HH_DISPLAY_SEARCH) {
            const auto& query = *reinterpret_cast<const HH_FTS_QUERY*>(std::exchange(order.data, 0));
            EXPECT_EQ(sizeof(void*) == 4 ? 32 : 40, query.cbStruct);
            EXPECT_TRUE(query.fExecute == 1 && !query.fUniCodeStrings && !query.pszSearchQuery && !query.iProximity &&
                        !query.fStemmedSearch && !query.fTitleOnly && !query.pszWindow);
        }
        current_->orders.push_back(order);
        return nullptr;
    }

    static inline RecordedEngine* current_ = nullptr;
    ImportPatch load_, find_;
};

const wchar_t* const kOpeners[] = {L"OpenContents", L"OpenFinder", L"OpenSearch", L"OpenContext", L"OpenTopic"};

class CompiledHelp : public testing::Test {
  protected:
    Outcome Open(const wchar_t* member) {
        if (member == std::wstring(L"OpenContext")) return Call(help_.get(), member, {Arg(context_)});
        if (member == std::wstring(L"OpenTopic")) return Call(help_.get(), member, {Arg(&topic_)});
        return Call(help_.get(), member);
    }
    void SetFile(const std::wstring& path) {
        EXPECT_EQ(S_OK, Let(help_.get(), L"HelpFile", {Arg(Bstr(path).get())}).result);
    }

    LibraryCopy copy_;
    ComPtr<IDispatch> help_ = copy_.Create(__uuidof(::CHtmlHelp));
    ScratchFolder folder_;
    const std::wstring file_ = folder_.Write(L"h\u00E4lp.chm", "");
    LONG context_ = -7;
    Variant topic_ = Text(L"pages/zero.htm#\u00DF");
};

TEST_F(CompiledHelp, TellsTheEngineExactlyThis) {
    RecordedEngine engine(copy_.module());
    EXPECT_EQ(L"", TextOf(Get(help_.get(), L"HelpFile").value));
    SetFile(file_);
    EXPECT_EQ(file_, TextOf(Get(help_.get(), L"HelpFile").value));
    EXPECT_TRUE(engine.loaded.empty()) << "not before it is needed";
    const HWND owner = static_cast<HWND>(LongToHandle(0x4321));
    const std::string file = ToAnsi(file_);
    EXPECT_EQ(S_OK, Open(L"OpenContents").result);
    EXPECT_EQ(S_OK, Let(help_.get(), L"ParentHWND", {Arg(0x4321L)}).result);
    for (const wchar_t* member : kOpeners) EXPECT_EQ(S_OK, Open(member).result) << member;
    const std::vector<RecordedEngine::Order> wanted = {
        {nullptr, file, 1, 0, ""},
        {owner, file, 1, 0, ""},
        {owner, file, 2, 0, ""},
        {owner, file, 3, 0, ""},
        {owner, file, 15, static_cast<DWORD>(-7), ""},
        {owner, file, 0, 0, "pages/zero.htm#\xDF"},
    };
    EXPECT_TRUE(wanted == engine.orders);
    wchar_t system[MAX_PATH];
    GetSystemDirectoryW(system, MAX_PATH);
    EXPECT_EQ(std::vector<std::wstring>{std::wstring(system) + L"\\hhctrl.ocx"}, engine.loaded) << "once, from there";
}

TEST_F(CompiledHelp, WithoutItsFileNothingIsOpened) {
    RecordedEngine engine(copy_.module());
    using namespace std::string_literals;
    const std::wstring names[] = {L"",          folder_.Path(L"none.chm"), folder_.path(),
                                  L"?:\\x.chm", file_ + L"\0x"s,           file_ + L">main"};
    for (const std::wstring& name : names) {
        SetFile(name);
        for (const wchar_t* member : kOpeners) {
            const Outcome outcome = Open(member);
            EXPECT_EQ(kFileNotFound, outcome.code) << member;
            EXPECT_EQ(L"File not found", outcome.description);
            EXPECT_EQ(L"VelkSupport", outcome.source);
        }
    }
    EXPECT_TRUE(engine.loaded.empty());
}

TEST_F(CompiledHelp, AMissingEngineIsNamedAndLookedForAgain) {
    RecordedEngine engine(copy_.module());
    SetFile(file_);
    for (const bool installed : {false, true}) {
        engine.installed = installed;
        engine.whole = false;  // an engine without the function is none either
        const Outcome outcome = Open(L"OpenContents");
        EXPECT_EQ(kFileNotFound, outcome.code);
        EXPECT_EQ(L"File not found: hhctrl.ocx", outcome.description);
        EXPECT_EQ(L"VelkSupport", outcome.source);
    }
    engine.whole = true;
    EXPECT_EQ(S_OK, Open(L"OpenContents").result);
    EXPECT_EQ(1u, engine.orders.size());
}

TEST_F(CompiledHelp, RefusesATopicWithANulAndNullPointers) {
    RecordedEngine engine(copy_.module());
    SetFile(file_);
    const Bstr nul(std::wstring_view(L"a.htm\0b", 7));
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), Call(help_.get(), L"OpenTopic", {Arg(nul.get())}).code);
    const auto early = help_.As<_CHtmlHelp>();
    EXPECT_EQ(E_POINTER, early->OpenTopic(nullptr));
    EXPECT_EQ(E_POINTER, early->OpenContext(nullptr));
    EXPECT_EQ(E_POINTER, early->put_HelpFile(nullptr));
    EXPECT_EQ(E_POINTER, early->put_ParentHWND(nullptr));
    EXPECT_TRUE(engine.orders.empty());
}

HWND HelpWindow() { return FindWindowA("HH Parent", nullptr); }

std::string TitleOf(HWND window) {
    char title[100] = "";
    GetWindowTextA(window, title, sizeof(title));
    return title;
}

TEST_F(CompiledHelp, OpensARealHelpFile) {
    std::wstring real = L"Z:" HELP_FILE;
    if (real == L"Z:") GTEST_SKIP() << "no help file: chmcmd (package fp-utils) was not there when this was built";
    for (wchar_t& c : real) {
        if (c == L'/') c = L'\\';
    }
    SetFile(real);
    context_ = 1001;
    EXPECT_EQ(nullptr, HelpWindow());
    EXPECT_EQ(S_OK, Open(L"OpenContents").result);
    EXPECT_EQ("Scale help", TitleOf(HelpWindow()));  // Wine 8.0's engine spoils it at some of the later calls
    for (const wchar_t* member : kOpeners) {
        EXPECT_EQ(S_OK, Open(member).result) << member;
        EXPECT_NE(nullptr, HelpWindow()) << member;
        PumpMessages();
    }
    DestroyWindow(HelpWindow());
    EXPECT_EQ(S_OK, Let(help_.get(), L"ParentHWND", {Arg(0x7FFF0L)}).result);
    EXPECT_EQ(S_OK, Open(L"OpenContents").result) << "an owner that does not exist is the engine's affair";
    PumpMessages();
}

}  // namespace
}  // namespace velk::test
