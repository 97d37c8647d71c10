// CIniFile as its clients see it, on real files.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "platform/handles.h"
#include "platform/text.h"
#include "support/departures.h"
#include "support/fake.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/report_recorder.h"

namespace velk::test {
namespace {

// What a file's bytes say by the documented rules, read without the platform and cut as CIniFile cuts:
// "[A]k=1;l=2;[B]". Of sections and keys that stand twice the first counts.
std::string ReadIni(std::string bytes) {
    static const std::regex kSection(R"(\s*\[(.*?)\].*)");
    static const std::regex kEntry(R"lit((?!\s*;)\s*(.*?)\s*=\s*(?:(["'])(.*)\2|(.*?))\s*)lit");
    using Keys = std::vector<std::pair<std::string, std::string>>;
    std::vector<std::pair<std::string, Keys>> sections;
    if (Departs("GetPrivateProfileString") && bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    std::ranges::replace(bytes, '\r', '\n');
    std::istringstream lines(bytes);
    std::smatch found;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, found, kSection)) {
            sections.emplace_back(found[1], Keys());
        } else if (!sections.empty() && std::regex_match(line, found, kEntry)) {
            sections.back().second.emplace_back(found[1], found[2].matched ? found[3] : found[4]);
        }
    }
    // A list of names has room for 8190 bytes, with a NUL after each name.
    const auto first = [](const auto& named, const std::string& name) {
        return std::ranges::find(named, name, [](const auto& one) { return one.first; })->second;
    };
    const auto fits = [](std::size_t& room, const std::string& name) {
        return std::exchange(room, room - std::min(room, name.size() + 1)) > name.size();
    };
    std::string shown;
    std::size_t room = 8190;
    for (const auto& [section, ignored] : sections) {
        if (section.empty()) continue;
        if (!fits(room, section)) break;
        shown += '[' + section + ']';
        const Keys keys = first(sections, section);
        std::size_t keyRoom = 8190;
        for (const auto& [key, own] : keys) {
            if (!fits(keyRoom, key)) break;
            shown += key + '=' + first(keys, key).substr(0, 254) + ';';
        }
    }
    return shown;
}

constexpr const wchar_t* kArray = L"an array";
constexpr const wchar_t* kVariable = L"a script's variable";

class IniFile : public testing::Test {
  protected:
    IniFile() {
        names_.vt = VT_ARRAY | VT_BSTR;
        Run(L"Init", {path_});
    }
    Outcome Run(const wchar_t* member, const std::vector<std::wstring>& texts) {
        std::vector<Variant> held;
        std::vector<VARIANT> arguments;
        held.reserve(texts.size());
        for (const auto& text : texts) {
            arguments.push_back(text == kArray      ? Ref(names_.vt, &names_.parray)
                                : text == kVariable ? Arg(&variable_)
                                                    : held.emplace_back(Text(text)));
        }
        return InvokeNamed(ini_.get(), member, DISPATCH_METHOD, std::move(arguments), {});
    }
    // From an array of strings whose lowest index is 1, and which is not allocated without names.
    std::vector<std::wstring> Names(const wchar_t* member, const std::vector<std::wstring>& texts) {
        const LONG count = Run(member, texts).value.lVal;
        EXPECT_EQ(count == 0, !names_.parray);
        std::vector<std::wstring> names;
        for (LONG i = 1; i <= count; ++i) {
            Bstr name;
            EXPECT_EQ(S_OK, SafeArrayGetElement(names_.parray, &i, name.Receive()));
            names.emplace_back(View(name.get()));
        }
        return names;
    }
    // The whole file as the class reads it, in the form of the independent reader.
    std::string Shown() {
        std::wstring shown;
        for (const auto& section : Names(L"EnumerateAllSections", {kArray})) {
            shown += L'[' + section + L']';
            for (const auto& key : Names(L"EnumerateAllKeys", {section, kArray})) {
                shown += key + L'=' + TextOf(Run(L"GetStringValue", {section, key}).value) + L';';
            }
        }
        return ToAnsi(shown);
    }
    std::string Bytes() const {
        std::ifstream file(std::filesystem::path(path_), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    ComPtr<IDispatch> ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    ScratchFolder folder_;
    const std::wstring path_ = folder_.Path(L"file.ini");
    Variant names_;
    Variant variable_;
};

TEST_F(IniFile, IsBesideTheLibraryAtFirst) {
    for (const std::wstring& folder :
         {folder_.path(), std::wstring(L"C:\\")}) {  // at a root the separator stands twice
        const LibraryCopy copy(folder + L"\\VelkBeside.dll");
        ini_ = copy.Create(__uuidof(::CIniFile));
        EXPECT_EQ(folder + L"\\MyFileSettings.ini", TextOf(Get(ini_.get(), L"Filename").value));
        ini_ = nullptr;
    }
}

TEST_F(IniFile, ChecksInOrder) {
    struct Error {
        HRESULT code = S_OK;
        const wchar_t* description = L"";
    };
    const Error none, noName{eErrIniFile_InvalidFileName, L"Invalid file name"},
        noFile{eErrIniFile_FileNotFound, L"File not found"},
        notReady{eErrIniFile_NotInitialized, L"Object not properly initialized"},
        section{eErrIniFile_InvalidSection, L"Invalid section"}, key{eErrIniFile_InvalidKey, L"Invalid key"},
        failed{eErrIniFile_ComponentFailure, L"CIniFile component failure"};
    struct Refusal {
        const wchar_t* member;
        std::vector<std::wstring> arguments;
        const Error &existing, &missing;  // what it fails with, by the state of the file
    };
    const std::wstring nul(L"A\0", 2);       // would name another section or key than it seems
    const std::wstring longer(32767, L'x');  // not all versions of the platform survive it
    const Refusal refusals[] = {
        {L"GetNumericValue", {L"", L""}, none, noFile},
        {L"GetNumericValue", {L"A", longer}, failed, noFile},
        {L"GetStringValue", {L"", L""}, none, noFile},
        {L"GetStringValue", {longer, L"k"}, failed, noFile},
        {L"EnumerateAllKeys", {L"", kArray}, section, noFile},
        {L"EnumerateAllKeys", {longer, kArray}, failed, noFile},
        {L"EnumerateAllSections", {kArray}, none, noFile},
        {L"DeleteKey", {L"", L""}, section, noFile},
        {L"DeleteKey", {L"A", L""}, key, noFile},
        {L"DeleteKey", {L"A", nul}, key, noFile},
        {L"DeleteKey", {L"A", longer}, failed, noFile},
        {L"DeleteSection", {L""}, section, noFile},
        {L"DeleteSection", {nul}, section, noFile},
        {L"DeleteSection", {longer}, failed, noFile},
        {L"SaveNumericValue", {L"", L"", L"1"}, section, section},
        {L"SaveStringValue", {L"A", L"", L"1"}, key, key},
        {L"SaveStringValue", {longer, L"k", L"v"}, failed, failed},
        {L"SaveStringValue", {L"A", L"k", longer}, failed, failed},
        {L"Init", {L""}, noName, noName},
    };
    const auto expectAll = [&](auto expected) {
        for (const Refusal& refusal : refusals) {
            const Error& error = expected(refusal);
            const Outcome outcome = Run(refusal.member, refusal.arguments);
            EXPECT_EQ(error.code, outcome.code) << refusal.member;
            EXPECT_EQ(error.description, outcome.description) << refusal.member;
            EXPECT_EQ(error.code == S_OK ? L"" : L"VelkSprt.CIniFile", outcome.source) << refusal.member;
        }
    };
    expectAll([](const Refusal& refusal) -> auto& { return refusal.missing; });
    const std::string text = "[A]\r\nk=1\r\n";
    folder_.Write(L"file.ini", text);
    expectAll([](const Refusal& refusal) -> auto& { return refusal.existing; });
    EXPECT_EQ(text, Bytes());
    EXPECT_EQ(eErrIniFile_InvalidFileName, Let(ini_.get(), L"Filename", {Text(L"")}).code);
    EXPECT_EQ(path_, TextOf(Get(ini_.get(), L"Filename").value));

    ReportRecorder recorder(Library());
    {
        const Fake noPath("GetModuleFileNameW", &GetModuleFileNameW, [](HMODULE, LPWSTR, DWORD) {
            SetLastError(ERROR_ACCESS_DENIED);
            return 0;
        });
        ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    }
    EXPECT_NE(std::wstring::npos, recorder.Shown().find(L": An error has occured in Velk.CIniFile.Class_Initialize "
                                                        L"\r\n\r\nError:70\r\n"));
    expectAll([&](const Refusal& refusal) -> auto& { return &refusal.missing == &noName ? noName : notReady; });
}

TEST_F(IniFile, ExistsWhenASearchFindsIt) {
    folder_.Write(L"other.ini", "[A]\r\n");
    for (const wchar_t* name : {L"\\*.ini", L"\\othe?.ini", L""}) {  // patterns and a folder
        Run(L"Init", {folder_.path() + name});
        EXPECT_EQ(-1, Run(L"GetNumericValue", {L"A", L"k"}).value.iVal) << name;
        EXPECT_EQ(S_OK, Run(L"SaveStringValue", {L"A", L"k", L"v"}).result) << name;
    }
    // The profile functions take 259 characters, in full or as they complete a bare name.
    wchar_t windows[MAX_PATH] = {};
    GetWindowsDirectoryW(windows, MAX_PATH);
    for (const std::wstring& folder : {folder_.path() + L'\\', windows + std::wstring(L"\\")}) {
        for (const std::size_t length : {259u, 260u}) {
            const std::wstring path = folder + std::wstring(length - folder.size(), L'n');
            const bool bare = folder.starts_with(windows), fits = length == 259;
            Run(L"Init", {bare ? path.substr(folder.size()) : path});
            EXPECT_EQ(eErrIniFile_FileNotFound, Run(L"GetStringValue", {L"A", L"k"}).code) << path;
            EXPECT_EQ(fits ? S_OK : HRESULT{eErrIniFile_ComponentFailure},
                      Run(L"SaveStringValue", {L"A", L"k", L"v"}).code);
            EXPECT_EQ(fits && !bare ? L"v" : L"<no string>", TextOf(Run(L"GetStringValue", {L"A", L"k"}).value));
            EXPECT_EQ(fits, DeleteFileW(path.c_str()) != FALSE);
        }
    }
    Run(L"Init", {folder_.path() + L"\\other.ini"});
    const Fake close("FindClose", &FindClose, [](HANDLE search) {
        EXPECT_TRUE(GetThreadErrorMode() & SEM_FAILCRITICALERRORS);
        return FindClose(search) && false;
    });
    EXPECT_EQ(eErrIniFile_ComponentFailure, Run(L"GetStringValue", {L"A", L"k"}).code);
}

TEST_F(IniFile, ReadsOddFilesAsAnIndependentReader) {
    std::string keys = "[A]\r\n", sections = "[longer]\r\n";
    for (int i = 1000; i < 3000; ++i) keys += "k" + std::to_string(i) + "=\r\n";
    for (int i = 1000; i < 3000; ++i) sections += "[s" + std::to_string(i) + "]\r\n";
    const auto value = [](std::size_t length) {
        return "k" + std::string(length, 'v') + "=" + std::string(length, 'v') + "\r\n";
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
        "[A]\r\n" + value(254) + value(255) + value(256),
        keys,      // names that fill the buffer to the last byte
        sections,  // a last name that is cut and lost
    };
    for (const std::string& file : files) {
        folder_.Write(L"file.ini", file);
        EXPECT_EQ(ReadIni(file), Shown()) << file.substr(0, 100);
    }
}

TEST_F(IniFile, ReadsNumbersOfSixteenBits) {
    for (const int number : {-12, 32767, -32768, 32768, -32769, 40000}) {
        folder_.Write(L"file.ini", "[A]\r\nk=" + std::to_string(number));
        const Outcome outcome = Run(L"GetNumericValue", {L"A", L"k"});
        const bool fits = number == static_cast<SHORT>(number);
        EXPECT_EQ(fits ? HRESULT{S_OK} : HRESULT{eErrIniFile_ComponentFailure}, outcome.code) << number;
        EXPECT_EQ(fits ? number : 0, outcome.value.iVal);
    }
}

TEST_F(IniFile, LeavesAnArrayThatIsNotToBeReplaced) {
    folder_.Write(L"file.ini", "[A]\r\n[B]\r\nk=1\r\n");
    EXPECT_EQ("[A][B]k=1;", Shown());
    Run(L"EnumerateAllSections", {kVariable});
    for (SAFEARRAY* const array : {names_.parray, variable_.parray}) {
        const std::wstring given = array == names_.parray ? kArray : kVariable;
        for (const USHORT feature : {0, FADF_AUTO, FADF_STATIC, FADF_EMBEDDED, FADF_FIXEDSIZE}) {  // 0: locked
            array->fFeatures |= feature;
            array->cLocks = feature ? 0 : 1;
            EXPECT_EQ(eErrIniFile_ComponentFailure, Run(L"EnumerateAllSections", {given}).code) << feature;
            array->fFeatures &= ~feature;
        }
    }
    ASSERT_TRUE(names_.parray && variable_.parray);
    EXPECT_EQ(std::vector<std::wstring>(), Names(L"EnumerateAllKeys", {L"A", kArray}));
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
        {L"DeleteSection", {L"T"}, "[S]N=-5;"},
    };
    for (const Step& step : steps) {
        const Outcome outcome = Run(step.member, step.arguments);
        EXPECT_EQ(S_OK, outcome.result) << step.member;
        EXPECT_TRUE(outcome.value.vt == VT_EMPTY || outcome.value.boolVal == VARIANT_TRUE) << step.member;
        EXPECT_EQ(step.after, ReadIni(Bytes())) << step.member;
    }
}

TEST_F(IniFile, LeavesAFileThatCannotBeWrittenAsItWas) {
    const std::string text = "; mine\r\n[A]\r\nk=1\r\n";
    folder_.Write(L"file.ini", text);
    const auto writeAll = [&] {
        EXPECT_EQ(S_OK, Run(L"SaveStringValue", {L"A", L"k", L"v"}).result);
        EXPECT_EQ(S_OK, Run(L"SaveNumericValue", {L"A", L"n", L"-7"}).result);
        const Outcome key = Run(L"DeleteKey", {L"A", L"k"}), section = Run(L"DeleteSection", {L"A"});
        EXPECT_TRUE(key.value.vt == VT_BOOL && section.value.vt == VT_BOOL);
        return key.value.boolVal || section.value.boolVal;
    };
    {
        const FileHandle lock(CreateFileW(path_.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_FALSE(writeAll());
    }
    EXPECT_EQ(text, Bytes());
    {
        std::string calls;
        const auto refuse = [&](LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR) {
            EXPECT_TRUE(GetThreadErrorMode() & SEM_FAILCRITICALERRORS) << "no box asks for a disk";
            for (const LPCSTR text : {section, key, value}) calls.append(text ? text : "-") += ' ';
            return FALSE;
        };
        const Fake write("WritePrivateProfileStringA", &WritePrivateProfileStringA, refuse);
        EXPECT_FALSE(writeAll());
        EXPECT_EQ("A k v - - - A n -7 - - - A k - - - - A - - - - - ", calls);  // each followed by a flush
    }
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    const bool writable = Departs("FILE_ATTRIBUTE_READONLY") && _wgetenv(L"USERNAME") == std::wstring(L"root");
    EXPECT_EQ(writable, writeAll());
    EXPECT_EQ(writable ? "" : text, writable ? "" : Bytes());
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
}

}  // namespace
}  // namespace velk::test
