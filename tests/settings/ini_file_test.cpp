// CIniFile as its clients see it, on real files.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "frame/handles.h"
#include "frame/text.h"
#include "settings/ini_reader.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/report_recorder.h"
#include "support/scarce_memory.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

constexpr const wchar_t* kArray = L"an array";

std::string Bytes(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class IniFile : public testing::Test {
  protected:
    IniFile() { Run(L"Init", {path_}); }

    Outcome Run(const wchar_t* member, const std::vector<std::wstring>& texts) {
        std::vector<Variant> held;
        std::vector<VARIANT> arguments;
        for (const auto& text : texts) {
            held.push_back(Variant());
            held.back().vt = VT_BSTR;
            held.back().bstrVal = Bstr(text).Detach();
            arguments.push_back(text == kArray ? Ref(VT_ARRAY | VT_BSTR, &names_.parray) : VARIANT(held.back()));
        }
        return InvokeNamed(ini_.get(), member, DISPATCH_METHOD, std::move(arguments), {});
    }
    std::string Text(const std::string& section, const std::string& key) {
        return ToAnsi(TextOf(Run(L"GetStringValue", {Widened(section), Widened(key)}).value));
    }
    // The names that an enumeration gave, each followed by a comma.
    std::string Names(const wchar_t* member, const std::vector<std::wstring>& texts) {
        const LONG count = Run(member, texts).value.lVal;
        if (!names_.parray) return count == 0 ? "" : "no array";
        EXPECT_EQ(1, names_.parray->rgsabound[0].lLbound);
        EXPECT_EQ(static_cast<ULONG>(count), names_.parray->rgsabound[0].cElements);
        std::string joined;
        for (LONG i = 0; i < count; ++i) {
            joined += ToAnsi(View(static_cast<BSTR*>(names_.parray->pvData)[i])) + ',';
        }
        return joined;
    }
    std::string Sections() { return Names(L"EnumerateAllSections", {kArray}); }
    std::string Keys(const std::string& section) { return Names(L"EnumerateAllKeys", {Widened(section), kArray}); }
    static std::wstring Widened(const std::string& text) { return std::wstring(Wide(FromAnsi(text))); }

    ComPtr<IDispatch> ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    ScratchFolder folder_;
    const std::wstring path_ = folder_.Path(L"file.ini");
    Variant names_ = [] {
        Variant none;
        none.vt = VT_ARRAY | VT_BSTR;
        none.parray = nullptr;
        return none;
    }();
};

// ---- The file's name ----

TEST_F(IniFile, IsBesideTheLibraryAtFirst) {
    const auto fresh = CreateObject<IDispatch>(__uuidof(::CIniFile));
    const std::wstring library = LibraryPath();
    EXPECT_EQ(library.substr(0, library.rfind(L'\\')) + L"\\MyFileSettings.ini",
              TextOf(Get(fresh.get(), L"Filename").value));

    // At a drive's root the separator stands twice.
    ASSERT_TRUE(CopyFileW(library.c_str(), L"C:\\VelkAtRoot.dll", FALSE));
    const HMODULE module = LoadLibraryW(L"C:\\VelkAtRoot.dll");
    const auto getClassObject = reinterpret_cast<decltype(&DllGetClassObject)>(
        reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    {
        ComPtr<IClassFactory> factory;
        ComPtr<IDispatch> ini;
        ASSERT_EQ(S_OK, getClassObject(__uuidof(::CIniFile), IID_IClassFactory, factory.ReceiveVoid()));
        factory->CreateInstance(nullptr, IID_IDispatch, ini.ReceiveVoid());
        EXPECT_EQ(L"C:\\\\MyFileSettings.ini", TextOf(Get(ini.get(), L"Filename").value));
    }
    FreeLibrary(module);
    DeleteFileW(L"C:\\VelkAtRoot.dll");
}

struct Refusal {
    const wchar_t* member;
    std::vector<std::wstring> arguments;
    HRESULT missing, existing;  // what it fails with, by the state of the file
};

constexpr HRESULT kOk = S_OK;

TEST_F(IniFile, ChecksInOrder) {
    const std::map<HRESULT, std::wstring> descriptions = {
        {kOk, L""},
        {eErrIniFile_InvalidFileName, L"Invalid file name"},
        {eErrIniFile_FileNotFound, L"File not found"},
        {eErrIniFile_NotInitialized, L"Object not properly initialized"},
        {eErrIniFile_InvalidSection, L"Invalid section"},
        {eErrIniFile_InvalidKey, L"Invalid key"},
        {eErrIniFile_ComponentFailure, L"CIniFile component failure"},
    };
    const std::wstring nul(L"A\0", 2);  // would name another section or key than it seems
    const Refusal refusals[] = {
        {L"GetNumericValue", {L"", L""}, eErrIniFile_FileNotFound, kOk},
        {L"GetNumericValue", {L"A", L"big"}, eErrIniFile_FileNotFound, eErrIniFile_ComponentFailure},
        {L"GetStringValue", {L"", L""}, eErrIniFile_FileNotFound, kOk},
        {L"EnumerateAllKeys", {L"", kArray}, eErrIniFile_FileNotFound, eErrIniFile_InvalidSection},
        {L"EnumerateAllSections", {kArray}, eErrIniFile_FileNotFound, kOk},
        {L"DeleteKey", {L"", L""}, eErrIniFile_FileNotFound, eErrIniFile_InvalidSection},
        {L"DeleteKey", {L"A", L""}, eErrIniFile_FileNotFound, eErrIniFile_InvalidKey},
        {L"DeleteKey", {L"A", nul}, eErrIniFile_FileNotFound, eErrIniFile_InvalidKey},
        {L"DeleteSection", {L""}, eErrIniFile_FileNotFound, eErrIniFile_InvalidSection},
        {L"DeleteSection", {nul}, eErrIniFile_FileNotFound, eErrIniFile_InvalidSection},
        {L"SaveNumericValue", {L"", L"", L"1"}, eErrIniFile_InvalidSection, eErrIniFile_InvalidSection},
        {L"SaveNumericValue", {L"A", L"", L"1"}, eErrIniFile_InvalidKey, eErrIniFile_InvalidKey},
        {L"SaveStringValue", {L"", L"", L"1"}, eErrIniFile_InvalidSection, eErrIniFile_InvalidSection},
        {L"SaveStringValue", {L"A", L"", L"1"}, eErrIniFile_InvalidKey, eErrIniFile_InvalidKey},
        {L"Init", {L""}, eErrIniFile_InvalidFileName, eErrIniFile_InvalidFileName},
    };
    const auto expectAll = [&](auto expected) {
        for (const Refusal& refusal : refusals) {
            const HRESULT code = expected(refusal);
            const Outcome outcome = Run(refusal.member, refusal.arguments);
            EXPECT_EQ(code, outcome.code) << refusal.member;
            EXPECT_EQ(descriptions.at(code), outcome.description) << refusal.member;
            EXPECT_EQ(code == kOk ? L"" : L"VelkSprt.CIniFile", outcome.source) << refusal.member;
        }
    };
    expectAll([](const Refusal& refusal) { return refusal.missing; });
    constexpr std::string_view text = "[A]\r\nbig=40000\r\n";
    folder_.Write(L"file.ini", text);
    expectAll([](const Refusal& refusal) { return refusal.existing; });
    EXPECT_EQ(text, Bytes(path_));
    EXPECT_EQ(eErrIniFile_InvalidFileName, Let(ini_.get(), L"Filename", {Arg(Bstr(L"").get())}).code);
    EXPECT_EQ(path_, TextOf(Get(ini_.get(), L"Filename").value));

    const ReportRecorder recorder(Library());
    {
        const ScarceMemory noPath(520, 600);  // room for the longest usual path
        ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    }
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(
        L"An error has occured in Velk.CIniFile.Class_Initialize \r\n\r\nError:7\r\nDescription:Out of memory\r\n"
        L"Line:0",
        recorder.reports()[0].text);
    expectAll([](const Refusal& refusal) {
        return refusal.missing == eErrIniFile_InvalidFileName ? refusal.missing : eErrIniFile_NotInitialized;
    });
}

TEST_F(IniFile, ExistsWhenASearchFindsIt) {
    folder_.Write(L"other.ini", "[A]\r\n");
    for (const wchar_t* name : {L"\\*.ini", L"\\othe?.ini", L"\\..\\*", L""}) {
        Run(L"Init", {folder_.path() + name});
        EXPECT_EQ(-1, Run(L"GetNumericValue", {L"A", L"k"}).value.iVal) << name;
        EXPECT_EQ(S_OK, Run(L"SaveStringValue", {L"A", L"k", L"v"}).result) << name;
    }
    const ImportPatch patch(Library(), "FindClose", reinterpret_cast<void*>(+[] [[gnu::stdcall]] (HANDLE search) {
                                FindClose(search);
                                return FALSE;
                            }));
    EXPECT_EQ(eErrIniFile_ComponentFailure, Run(L"EnumerateAllSections", {kArray}).code);
}

// ---- Reading ----

struct OddFile {
    const char* what;
    std::string text;
};

TEST_F(IniFile, ReadsOddFilesAsAnIndependentReader) {
    std::string many = "[A]\r\n";
    for (int i = 0; i < 400; ++i) many += "key" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    const OddFile files[] = {
        {"empty", ""},
        {"comments", "; first\r\n[A]\r\n;k=1\r\nk=2;3 ; 4\r\n  ; k2=5\r\n#h=6\r\n"},
        {"blanks", "  [A]  \r\n  k  =  v w  \r\n\tt\t=\tv\t\r\n\r\nn=\r\nempty section = \r\n[B]\r\n"},
        {"quotes", "[A]\r\nd=\" x \"\r\ns=' y '\r\no=\"open\r\nm=\"'z'\"\r\ni=a\"b\"c\r\n"},
        {"twice", "[A]\r\nk=1\r\nk=2\r\n[B]\r\nk=3\r\n[A]\r\nk=4\r\nl=5\r\n"},
        {"other line ends", "[A]\nk=1\n\nl=2\n[B]\nm=3\n"},
        {"no final line end", "[A]\r\nk=1\r\n[B]\r\nl=2"},
        {"outside ASCII",
         "[Stra\xDF"
         "e]\r\nGr\xF6\xDF"
         "e=\x80 \xE4\xFC\r\n"},
        {"equals signs", "[A=B]\r\nk=v=w\r\nno value\r\n=no key\r\n"},
        {"before any section", "k=1\r\n[A]\r\nl=2\r\n"},
        {"many", many},
        {"lengths", "[A]\r\na=" + std::string(254, 'a') + "\r\nb=" + std::string(255, 'b') +
                        "\r\nc=" + std::string(256, 'c') + "\r\n"},
    };
    for (const OddFile& file : files) {
        SCOPED_TRACE(file.what);
        folder_.Write(L"file.ini", file.text);
        std::string sections;
        std::map<std::string, IniKeys> firsts;
        for (const auto& [section, keys] : ReadIni(file.text)) {
            sections += section + ',';
            firsts.emplace(section, keys);
        }
        EXPECT_EQ(sections, Sections());
        for (const auto& [section, keys] : firsts) {
            std::string names;
            std::map<std::string, std::string> values;
            for (const auto& [key, value] : keys) {
                names += key + ',';
                values.emplace(key, value);
            }
            EXPECT_EQ(names, Keys(section));
            for (const auto& [key, value] : values) EXPECT_EQ(value.substr(0, 254), Text(section, key)) << key;
        }
    }
}

}  // namespace
}  // namespace velk::test
