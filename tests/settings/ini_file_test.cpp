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
constexpr HRESULT kComponentFailure = eErrIniFile_ComponentFailure;

std::string Bytes(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::wstring Widened(const std::string& text) { return std::wstring(Wide(FromAnsi(text))); }

class IniFile : public testing::Test {
  public:  // what Shown() asks for
    std::vector<std::string> Sections() { return Names(L"EnumerateAllSections", {kArray}); }
    std::vector<std::string> Keys(const std::string& section) {
        return Names(L"EnumerateAllKeys", {Widened(section), kArray});
    }
    std::string Value(const std::string& section, const std::string& key) {
        return ToAnsi(TextOf(Run(L"GetStringValue", {Widened(section), Widened(key)}).value));
    }

  protected:
    IniFile() {
        names_.vt = VT_ARRAY | VT_BSTR;
        Run(L"Init", {path_});
    }
    Outcome Run(const wchar_t* member, const std::vector<std::wstring>& texts) {
        std::vector<Bstr> held;
        std::vector<VARIANT> arguments;
        for (const auto& text : texts) {
            arguments.push_back(text == kArray ? Ref(names_.vt, &names_.parray) : Arg(held.emplace_back(text).get()));
        }
        return InvokeNamed(ini_.get(), member, DISPATCH_METHOD, std::move(arguments), {});
    }
    std::vector<std::string> Names(const wchar_t* member, const std::vector<std::wstring>& texts) {
        const LONG count = Run(member, texts).value.lVal;
        EXPECT_EQ(count == 0, !names_.parray);
        std::vector<std::string> names;
        for (LONG i = 1; i <= count; ++i) {
            Bstr name;
            EXPECT_EQ(S_OK, SafeArrayGetElement(names_.parray, &i, name.Receive()));
            names.push_back(ToAnsi(View(name.get())));
        }
        return names;
    }
    std::wstring Filename() { return TextOf(Get(ini_.get(), L"Filename").value); }

    ComPtr<IDispatch> ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    ScratchFolder folder_;
    const std::wstring path_ = folder_.Path(L"file.ini");
    Variant names_;
};

TEST_F(IniFile, IsBesideTheLibraryAtFirst) {
    const std::wstring library = LibraryPath();
    ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    EXPECT_EQ(library.substr(0, library.rfind(L'\\')) + L"\\MyFileSettings.ini", Filename());

    // At a drive's root the separator stands twice.
    const wchar_t* const atRoot = L"C:\\VelkAtRoot.dll";
    ASSERT_TRUE(CopyFileW(library.c_str(), atRoot, FALSE));
    const HMODULE module = LoadLibraryW(atRoot);
    const auto getClassObject = reinterpret_cast<decltype(&DllGetClassObject)>(
        reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, getClassObject(__uuidof(::CIniFile), IID_IClassFactory, factory.ReceiveVoid()));
    EXPECT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IDispatch, ini_.ReceiveVoid()));
    EXPECT_EQ(L"C:\\\\MyFileSettings.ini", Filename());
    ini_ = nullptr;
    factory = nullptr;
    FreeLibrary(module);
    EXPECT_TRUE(DeleteFileW(atRoot));
}

TEST_F(IniFile, ChecksInOrder) {
    const std::map<HRESULT, std::wstring> descriptions = {
        {eErrIniFile_InvalidFileName, L"Invalid file name"},
        {eErrIniFile_FileNotFound, L"File not found"},
        {eErrIniFile_NotInitialized, L"Object not properly initialized"},
        {eErrIniFile_InvalidSection, L"Invalid section"},
        {eErrIniFile_InvalidKey, L"Invalid key"},
        {eErrIniFile_ComponentFailure, L"CIniFile component failure"},
        {S_OK, L""},
    };
    struct Refusal {
        const wchar_t* member;
        std::vector<std::wstring> arguments;
        HRESULT missing, existing;  // what it fails with, by the state of the file
    };
    const std::wstring nul(L"A\0", 2);  // would name another section or key than it seems
    const Refusal refusals[] = {
        {L"GetNumericValue", {L"", L""}, eErrIniFile_FileNotFound, S_OK},
        {L"GetStringValue", {L"", L""}, eErrIniFile_FileNotFound, S_OK},
        {L"EnumerateAllKeys", {L"", kArray}, eErrIniFile_FileNotFound, eErrIniFile_InvalidSection},
        {L"EnumerateAllSections", {kArray}, eErrIniFile_FileNotFound, S_OK},
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
            EXPECT_EQ(code == S_OK ? L"" : L"VelkSprt.CIniFile", outcome.source) << refusal.member;
        }
    };
    expectAll([](const Refusal& refusal) { return refusal.missing; });
    const std::string text = "[A]\r\nk=1\r\n";
    folder_.Write(L"file.ini", text);
    expectAll([](const Refusal& refusal) { return refusal.existing; });
    EXPECT_EQ(text, Bytes(path_));
    EXPECT_EQ(eErrIniFile_InvalidFileName, Let(ini_.get(), L"Filename", {Arg(Bstr(L"").get())}).code);
    EXPECT_EQ(path_, Filename());

    const ReportRecorder recorder(Library());
    {
        const ScarceMemory noPath(520, 600);  // the room for a usual path
        ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    }
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_TRUE(recorder.reports()[0].text.starts_with(
        L"An error has occured in Velk.CIniFile.Class_Initialize \r\n\r\nError:7\r\n"));
    expectAll([](const Refusal& refusal) {
        const bool sets = refusal.missing == eErrIniFile_InvalidFileName;
        return sets ? refusal.missing : HRESULT{eErrIniFile_NotInitialized};
    });
}

BOOL WINAPI CloseAndFail(HANDLE search) {
    FindClose(search);
    return FALSE;
}

TEST_F(IniFile, ExistsWhenASearchFindsIt) {
    folder_.Write(L"other.ini", "[A]\r\n");
    for (const wchar_t* name : {L"\\*.ini", L"\\othe?.ini", L""}) {
        Run(L"Init", {folder_.path() + name});
        EXPECT_EQ(-1, Run(L"GetNumericValue", {L"A", L"k"}).value.iVal) << name;
        EXPECT_EQ(S_OK, Run(L"SaveStringValue", {L"A", L"k", L"v"}).result) << name;
    }
    for (const wchar_t* name : {L"", L"C:\\", L"x\\"}) {  // too long for the profile functions
        Run(L"Init", {name + std::wstring(260, L'n')});
        EXPECT_EQ(eErrIniFile_FileNotFound, Run(L"GetStringValue", {L"A", L"k"}).code) << name;
        EXPECT_EQ(kComponentFailure, Run(L"SaveStringValue", {L"A", L"k", L"v"}).code) << name;
    }
    Run(L"Init", {folder_.path()});
    const ImportPatch patch(Library(), "FindClose", reinterpret_cast<void*>(&CloseAndFail));
    EXPECT_EQ(kComponentFailure, Run(L"EnumerateAllSections", {kArray}).code);
}

TEST_F(IniFile, ReadsOddFilesAsAnIndependentReader) {
    std::string keys = "[A]\r\n", sections = "[longer]\r\n";
    for (int i = 1000; i < 3000; ++i) keys += "k" + std::to_string(i) + "=\r\n";
    for (int i = 1000; i < 3000; ++i) sections += "[s" + std::to_string(i) + "]\r\n";
    const auto value = [](std::size_t length) {
        return "k" + std::string(length, 'v') + "=" + std::string(length, 'v');
    };
    const std::string files[] = {
        "",
        "; first\r\n[A]\r\n;k=1\r\nk=2;3 ; 4\r\n  ; k2=5\r\n#h=6\r\n",
        "  [A]  \r\n  k  =  v w  \r\n\tt\t=\tv\t\r\n\r\nn=\r\nin side = \r\n[B]\r\n",
        "[A]\r\nd=\" x \"\r\ns=' y '\r\no=\"open\r\nm=\"'z'\"\r\ni=a\"b\"c\r\n",
        "[A]\r\nk=1\r\nk=2\r\n[B]\r\nk=3\r\n[A]\r\nk=4\r\nl=5\r\n",
        "[A]\nk=1\n\nl=2\n[B]\nm=3\n",
        "[A]\rk=1\r[B]\rl=2\r",
        "[A]\r\nk=1\r\n[B]\r\nl=2",
        "\xEF\xBB\xBF[A]\r\nk=1\r\n",
        "[Stra\337e]\r\nGr\366\337e=\200 \344\374\r\n",
        "k=1\r\n[A=B]\r\nk=v=w\r\nno value\r\n=no key\r\n[]\r\nk=2\r\n[C]\r\n",
        "[A]\r\n" + value(254) + "\r\n" + value(255) + "\r\n" + value(256) + "\r\n",
        keys,      // names that fill the buffer to the last byte
        sections,  // a last name that is cut and lost
    };
    for (const std::string& file : files) {
        folder_.Write(L"file.ini", file);
        const IniReader reader(file);
        EXPECT_EQ(Shown(reader), Shown(*this)) << file.substr(0, 100);
    }
    folder_.Write(L"file.ini", "[Key]\r\nName=x\r\n");
    EXPECT_EQ("x", Value("KEY", "nAME"));
    EXPECT_EQ("", Value("Key", "none") + Value("none", "Name"));
}

TEST_F(IniFile, ReadsNumbersOfSixteenBits) {
    const std::map<std::string, int> numbers = {{"-12", -12},     {" 7 ", 7},         {"12abc", 12}, {"abc", 0},
                                                {"32767", 32767}, {"-32768", -32768}, {"-1", -1}};
    std::string text = "[A]\r\n";
    for (const auto& [number, value] : numbers) text += "k" + number + "=" + number + "\r\n";
    folder_.Write(L"file.ini", text + "a=32768\r\nb=-32769\r\nc=40000\r\n");
    for (const auto& [number, value] : numbers) {
        EXPECT_EQ(value, Run(L"GetNumericValue", {L"A", Widened("k" + number)}).value.iVal) << number;
    }
    for (const wchar_t* key : {L"a", L"b", L"c"}) {
        EXPECT_EQ(kComponentFailure, Run(L"GetNumericValue", {L"A", key}).code) << key;
    }
}

TEST_F(IniFile, RefusesTextsBeyondThePlatformsReach) {
    const std::string text = "[A]\r\nk=1\r\n";
    folder_.Write(L"file.ini", text);
    const std::wstring longer(32767, L'x');
    const std::vector<std::wstring> calls[] = {{L"SaveStringValue", longer, L"k", L"v"},
                                               {L"SaveStringValue", L"A", longer, L"v"},
                                               {L"SaveStringValue", L"A", L"k", longer},
                                               {L"GetStringValue", longer, L"k"},
                                               {L"GetNumericValue", L"A", longer},
                                               {L"EnumerateAllKeys", longer, kArray},
                                               {L"DeleteKey", L"A", longer},
                                               {L"DeleteSection", longer}};
    for (const auto& call : calls) {
        EXPECT_EQ(kComponentFailure, Run(call[0].c_str(), {call.begin() + 1, call.end()}).code) << call[0];
    }
    EXPECT_EQ(text, Bytes(path_));
    Run(L"SaveStringValue", {L"A", L"k", longer.substr(1)});
    EXPECT_EQ("[A]\r\nk=" + std::string(32766, 'x') + "\r\n", Bytes(path_));
}

TEST_F(IniFile, ReplacesTheClientsArray) {
    folder_.Write(L"file.ini", "[A]\r\n[B]\r\nk=1\r\n");
    const LONG before = MallocSpy::Alive();
    EXPECT_EQ((std::vector<std::string>{"A", "B"}), Sections());
    EXPECT_EQ(eErrIniFile_InvalidSection, Run(L"EnumerateAllKeys", {L"", kArray}).code);
    for (const USHORT feature : {USHORT{0}, USHORT{FADF_FIXEDSIZE}}) {  // locked, then of a fixed size
        names_.parray->fFeatures |= feature;
        names_.parray->cLocks = feature ? 0 : 1;
        EXPECT_EQ(kComponentFailure, Run(L"EnumerateAllSections", {kArray}).code);
        ASSERT_TRUE(names_.parray);
        names_.parray->fFeatures &= ~feature;
    }
    EXPECT_EQ(std::vector<std::string>{"k"}, Keys("B"));
    EXPECT_EQ(std::vector<std::string>(), Keys("A"));

    const auto early = ini_.As<_CIniFile>();
    Variant filled;
    VARTYPE type = VT_EMPTY;
    LONG count = 0, lowest = 0;
    filled.vt = VT_ARRAY | VT_BSTR;
    EXPECT_EQ(S_OK, early->EnumerateAllSections(&filled.parray, &count));
    EXPECT_EQ(2, count);
    EXPECT_EQ(S_OK, SafeArrayGetLBound(filled.parray, 1, &lowest));
    EXPECT_EQ(1, lowest);
    EXPECT_EQ(S_OK, SafeArrayGetVartype(filled.parray, &type));
    EXPECT_EQ(VT_BSTR, type);
    EXPECT_EQ(E_POINTER, early->EnumerateAllKeys(nullptr, &filled.parray, &count));
    SetErrorInfo(0, nullptr);
    filled = Variant();
    EXPECT_EQ(before, MallocSpy::Alive());
}

TEST_F(IniFile, SavesIntoMissingFilesAndDeletesFromExistingOnes) {
    struct Step {
        const wchar_t* member;
        std::vector<std::wstring> arguments;
        const char* after;
    };
    const Step steps[] = {
        {L"SaveStringValue", {L"S", L"K", L"v"}, "[S]K=v;"},
        {L"SaveNumericValue", {L"S", L"N", L"-5"}, "[S]K=v;N=-5;"},
        {L"SaveStringValue", {L"S", L"K", L""}, "[S]K=;N=-5;"},
        {L"SaveStringValue", {L"T", L"\xDF", L"\x20AC\x4E00"}, "[S]K=;N=-5;[T]\337=\200?;"},
        {L"DeleteKey", {L"S", L"K"}, "[S]N=-5;[T]\337=\200?;"},
        {L"DeleteKey", {L"S", L"none"}, "[S]N=-5;[T]\337=\200?;"},
        {L"DeleteSection", {L"none"}, "[S]N=-5;[T]\337=\200?;"},
        {L"DeleteSection", {L"T"}, "[S]N=-5;"},
    };
    for (const Step& step : steps) {
        const Outcome outcome = Run(step.member, step.arguments);
        EXPECT_EQ(S_OK, outcome.result) << step.member;
        EXPECT_TRUE(outcome.value.vt == VT_EMPTY || outcome.value.boolVal == VARIANT_TRUE) << step.member;
        const IniReader reader(Bytes(path_));
        EXPECT_EQ(step.after, Shown(reader)) << step.member;
    }
    EXPECT_EQ(-5, Run(L"GetNumericValue", {L"S", L"N"}).value.iVal);
}

std::string calls;

BOOL WINAPI RefuseToWrite(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR) {
    for (const char* text : {section, key, value}) calls.append(text ? text : "-") += ' ';
    return FALSE;
}

TEST_F(IniFile, LeavesAFileThatCannotBeWrittenAsItWas) {
    const std::string text = "; mine\r\n[A]\r\nk=1\r\n";
    folder_.Write(L"file.ini", text);
    const auto writeAll = [&] {
        EXPECT_EQ(S_OK, Run(L"SaveStringValue", {L"A", L"k", L"v"}).result);
        EXPECT_EQ(S_OK, Run(L"SaveNumericValue", {L"A", L"n", L"-7"}).result);
        const Outcome deleted[] = {Run(L"DeleteKey", {L"A", L"k"}), Run(L"DeleteSection", {L"A"})};
        for (const Outcome& outcome : deleted) EXPECT_EQ(S_OK, outcome.result);
        return deleted[0].value.boolVal || deleted[1].value.boolVal;
    };
    {
        const FileHandle lock(CreateFileW(path_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_FALSE(writeAll());
    }
    EXPECT_EQ(text, Bytes(path_));
    {
        const ImportPatch patch(Library(), "WritePrivateProfileStringA", reinterpret_cast<void*>(&RefuseToWrite));
        EXPECT_FALSE(writeAll());
        EXPECT_EQ("A k v - - - A n -7 - - - A k - - - - A - - - - - ", calls);  // each followed by a flush
    }
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    // Under Wine, root may write read-only files.
    const bool writable(FileHandle(CreateFileW(path_.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
    EXPECT_EQ(writable, writeAll());
    EXPECT_EQ(writable ? "" : text, writable ? "" : Bytes(path_));
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
}

}  // namespace
}  // namespace velk::test
