// CHtmlHelp: against a recorded engine, and opening a real compiled help file where the build could make one.
#include <filesystem>

#include "platform/text.h"
#include "support/facts.h"
#include "support/import_patch.h"
#include "support/library_copy.h"
#include "support/test_window.h"

#include <htmlhelp.h>

namespace velk::test {
namespace {

// What the loader hands out, and what was asked of it and of the engine. A library without the function has none.
HMODULE engine;
bool isWhole;
std::wstring loaded;
std::string orders;  // "owner file command data|"

HWND WINAPI Help(HWND owner, LPCSTR file, UINT command, DWORD_PTR data) {
    std::string given = std::to_string(static_cast<LONG>(data));
    if (command == HH_DISPLAY_TOPIC) given = reinterpret_cast<const char*>(data);
    if (command == HH_DISPLAY_SEARCH) {
        const auto& query = *reinterpret_cast<const HH_FTS_QUERY*>(data);
        EXPECT_EQ(sizeof(void*) == 4 ? 32 : 40, query.cbStruct);
        EXPECT_TRUE(query.fExecute == 1 && !query.fUniCodeStrings && !query.pszSearchQuery && !query.iProximity &&
                    !query.fStemmedSearch && !query.fTitleOnly && !query.pszWindow);
        given = "query";
    }
    orders += std::to_string(HandleToLong(owner)) + " " + file + " " + std::to_string(command) + " " + given + "|";
    return nullptr;
}
HMODULE WINAPI Load(LPCWSTR path, HANDLE, DWORD flags) {
    EXPECT_EQ(DWORD{LOAD_WITH_ALTERED_SEARCH_PATH}, flags);
    loaded += path;
    return engine;
}
FARPROC WINAPI Find(HMODULE, LPCSTR name) {
    EXPECT_STREQ("HtmlHelpA", name);
    return isWhole ? reinterpret_cast<FARPROC>(Address(&Help)) : nullptr;
}

const wchar_t* const kOpeners[] = {L"OpenContents", L"OpenFinder", L"OpenSearch", L"OpenContext", L"OpenTopic"};

class CompiledHelp : public testing::Test {
  protected:
    CompiledHelp() {
        engine = GetModuleHandleW(nullptr), isWhole = true;
        loaded.clear(), orders.clear();
    }
    Outcome Open(const std::wstring& member, LONG context = -7) {
        if (member == L"OpenContext") return Call(help_.get(), member.c_str(), {Arg(context)});
        if (member == L"OpenTopic") return Call(help_.get(), member.c_str(), {Text(L"pages/zero.htm#\u00DF")});
        return Call(help_.get(), member.c_str());
    }
    void Set(const wchar_t* name, const VARIANT& value) { EXPECT_EQ(S_OK, Let(help_.get(), name, {value}).result); }
    void ExpectNotFound(const wchar_t* opener, const wchar_t* description) {
        const Outcome outcome = Open(opener);
        EXPECT_EQ(static_cast<HRESULT>(0x800A0035), outcome.code);
        EXPECT_EQ(std::wstring(L"VelkSupport: ") + description, outcome.source + L": " + outcome.description);
    }

    LibraryCopy copy_;
    ComPtr<IDispatch> help_ = copy_.Create(__uuidof(::CHtmlHelp));
    ScratchFolder folder_;
    const std::wstring file_ = folder_.Write(L"h\u00E4lp.chm", "");
};

class RecordedHelp : public CompiledHelp {
  protected:
    const ImportPatch load_{copy_.module(), "LoadLibraryExW", Address(&Load)};
    const ImportPatch find_{copy_.module(), "GetProcAddress", Address(&Find)};
};

TEST_F(RecordedHelp, TellsTheEngineExactlyThis) {
    EXPECT_EQ(L"", Fact(help_.get(), L"HelpFile"));
    Set(L"HelpFile", Text(file_));
    EXPECT_EQ(file_, Fact(help_.get(), L"HelpFile"));
    EXPECT_EQ(L"", loaded) << "not before it is needed";
    EXPECT_EQ(S_OK, Open(L"OpenContents").result);
    Set(L"ParentHWND", Arg(4321L));
    for (const wchar_t* member : kOpeners) EXPECT_EQ(S_OK, Open(member).result) << member;
    std::string wanted;
    for (const char* order : {"0 * 1 0|", "4321 * 1 0|", "4321 * 2 0|", "4321 * 3 query|", "4321 * 15 -7|",
                              "4321 * 0 pages/zero.htm#\xDF|"}) {
        wanted += order;
        wanted.replace(wanted.find('*'), 1, ToAnsi(file_));
    }
    EXPECT_EQ(wanted, orders);
    wchar_t system[MAX_PATH];
    GetSystemDirectoryW(system, MAX_PATH);
    EXPECT_EQ(std::wstring(system) + L"\\hhctrl.ocx", loaded) << "once, from there";
}

TEST_F(RecordedHelp, RaisesWhatIsMissing) {
    using namespace std::string_literals;
    for (const std::wstring& name :
         {L""s, folder_.Path(L"none.chm"), folder_.path(), L"?:\\x.chm"s, file_ + L"\0x"s, file_ + L">main"}) {
        Set(L"HelpFile", Text(name));
        for (const wchar_t* member : kOpeners) ExpectNotFound(member, L"File not found");
    }
    EXPECT_EQ(L"", loaded);
    Set(L"HelpFile", Text(file_));
    for (const HMODULE found : {HMODULE{}, GetModuleHandleW(nullptr)}) {
        engine = found;
        isWhole = false;
        ExpectNotFound(L"OpenContents", L"File not found: hhctrl.ocx");
    }
    isWhole = true;
    EXPECT_EQ(S_OK, Open(L"OpenContents").result) << "it is looked for again";
    EXPECT_EQ(static_cast<HRESULT>(0x800A0005), Call(help_.get(), L"OpenTopic", {Text(L"a.htm\0b"s)}).code);
    EXPECT_EQ("0 " + ToAnsi(file_) + " 1 0|", orders);
}

TEST_F(CompiledHelp, OpensARealHelpFile) {
    const std::wstring real = BuiltFile(L"tests\\help\\scale.chm");
    if (!std::filesystem::exists(real)) {
        GTEST_SKIP() << "no help file: chmcmd (package fp-utils) was not there when this was built";
    }
    Set(L"HelpFile", Text(real));
    const auto helpWindow = [] { return FindWindowA("HH Parent", nullptr); };
    EXPECT_EQ(nullptr, helpWindow());
    EXPECT_EQ(S_OK, Open(L"OpenContents").result);
    char title[100] = "";
    GetWindowTextA(helpWindow(), title, sizeof title);
    EXPECT_STREQ("Scale help", title);
    for (const wchar_t* member : kOpeners) {
        EXPECT_EQ(S_OK, Open(member, 1001).result) << member;
        EXPECT_NE(nullptr, helpWindow()) << member;
        PumpMessages();
    }
    DestroyWindow(helpWindow());
    Set(L"ParentHWND", Arg(0x7FFF0L));
    EXPECT_EQ(S_OK, Open(L"OpenContents").result) << "an owner that does not exist is the engine's affair";
    PumpMessages();
}

}  // namespace
}  // namespace velk::test
