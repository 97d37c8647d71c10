// CProgramSettings as its clients see it, on a real registry.
#include <tuple>

#include "platform/handles.h"
#include "platform/text.h"
#include "support/facts.h"
#include "support/fake.h"
#include "support/report_recorder.h"
#include "support/scarce_memory.h"

#include <sddl.h>

namespace velk::test {
namespace {

class ProgramSettings : public testing::Test {
  protected:
    ProgramSettings() {
        Set(L"RootKey", Arg(LONG{psrHKEY_CURRENT_USER}));
        Set(L"RegBase", Text(L"VelkTests"));
        Set(L"Program", Text(L"Demo"));
        RegCreateKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\VelkTests\\Demo\\Settings", 0, nullptr, 0, KEY_ALL_ACCESS,
                        nullptr, key_.Receive(), nullptr);
    }
    ~ProgramSettings() override { RegDeleteTreeA(HKEY_CURRENT_USER, "SOFTWARE\\VelkTests"); }

    void Set(const wchar_t* property, const VARIANT& value) {
        EXPECT_EQ(S_OK, Let(settings_.get(), property, {value}).result);
    }
    std::wstring Read() { return TextOf(Call(settings_.get(), L"ReadEntry", {Text(L"v"), Text(L"default")}).value); }
    LONG ReadLong() { return Call(settings_.get(), L"ReadEntryLong", {Text(L"v"), Arg(-99L)}).value.lVal; }
    void Write(const std::wstring& text) {
        EXPECT_EQ(S_OK, Call(settings_.get(), L"WriteEntry", {Text(L"v"), Text(text)}).result);
    }
    void Write(LONG number) {
        EXPECT_EQ(S_OK, Call(settings_.get(), L"WriteEntryLong", {Text(L"v"), Arg(number)}).result);
    }
    void Store(DWORD type, const std::string& bytes) {
        RegSetValueExA(key_.get(), "v", 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                       static_cast<DWORD>(bytes.size()));
    }
    // The bytes of the value named v, if it is of this type.
    std::string Stored(DWORD type) {
        std::string bytes(200'000, '?');
        DWORD actual = 0, size = static_cast<DWORD>(bytes.size());
        RegQueryValueExA(key_.get(), "v", nullptr, &actual, reinterpret_cast<BYTE*>(bytes.data()), &size);
        return actual == type ? bytes.substr(0, size) : "another type";
    }

    ComPtr<IDispatch> settings_ = CreateObject<IDispatch>(__uuidof(::CProgramSettings));
    RegistryKey key_;
};

TEST_F(ProgramSettings, ComposeTheirPath) {
    std::string opened;
    const auto record = [&](HKEY root, LPCSTR path, REGSAM access) {
        opened += path + std::string(root == HKEY_LOCAL_MACHINE && access == 0x3F ? "|" : " elsewhere");
        return ERROR_ACCESS_DENIED;
    };
    const Fake open("RegOpenKeyExA", &RegOpenKeyExA,
                    [&](HKEY root, LPCSTR path, DWORD, REGSAM access, HKEY*) { return record(root, path, access); });
    const Fake create("RegCreateKeyExA", &RegCreateKeyExA,
                      [&](HKEY root, LPCSTR path, DWORD, LPSTR, DWORD, REGSAM access, SECURITY_ATTRIBUTES*, HKEY*,
                          DWORD*) { return record(root, path, access); });
    settings_ = CreateObject<IDispatch>(__uuidof(::CProgramSettings));
    const std::tuple<const wchar_t*, const wchar_t*, std::string> changes[] = {
        {L"MainBranch", L"SOFTWARE", "SOFTWARE\\\\\\Settings|"},
        {L"Program", L"P", "SOFTWARE\\\\P\\Settings|"},
        {L"RegBase", L"Acme", "SOFTWARE\\Acme\\P\\Settings|"},
        {L"Section", L"", "SOFTWARE\\Acme\\P|"},
        {L"Program", L"", "SOFTWARE\\Acme\\|"},
        {L"Section", L"x\\y\\\\", "SOFTWARE\\Acme\\\\x\\y\\|"},
        {L"MainBranch", L"", "\\Acme\\\\x\\y\\|"},
    };
    EXPECT_EQ(L"SOFTWARE|||Settings|-2147483646|",
              Facts(settings_.get(), {L"MainBranch", L"RegBase", L"Program", L"Section", L"RootKey"}));
    for (const auto& [property, value, path] : changes) {
        Set(property, Text(value));
        EXPECT_EQ(value, Fact(settings_.get(), property));
        EXPECT_EQ(L"default", Read());
        Write(1);
        EXPECT_EQ(path + path, std::exchange(opened, "")) << "to read and to write";
    }
}

TEST_F(ProgramSettings, ReadStringsAndNumbersAndNothingElse) {
    struct Value {
        DWORD type;
        std::string bytes;
        std::wstring text;
        LONG number;
    };
    using namespace std::string_literals;
    const Value values[] = {
        {REG_SZ, "abc\0"s, L"abc", -99},
        {REG_SZ, "abc"s, L"abc", -99},  // stored without its NUL
        {REG_SZ, "a\0b\0\0"s, L"a\0b\0"s, -99},
        {REG_SZ, "\0"s, L"default", -99},
        {REG_SZ, ""s, L"default", -99},
        {REG_SZ, "42\0"s, L"42", 42},
        {REG_SZ, " -7 "s, L" -7 ", -7},
        {REG_SZ, "2.5\0"s, L"2.5", 2},
        {REG_SZ, "3000000000\0"s, L"3000000000", -99},
        {REG_SZ, "\200\0"s, L"\x20AC", -99},
        {REG_EXPAND_SZ, "42\0"s, L"default", -99},
        {REG_BINARY, "\1\0\0\0"s, L"default", -99},
        {REG_QWORD, "\1\0\0\0\0\0\0\0"s, L"default", -99},
        {REG_DWORD, "\xFE\xFF\xFF\xFF"s, L"-2", -2},
        {REG_DWORD, "\1\2"s, L"513", 513},
        {REG_DWORD, "\1\0\0\0\xFF"s, L"1", 1},
        {REG_DWORD, ""s, L"0", 0},
    };
    EXPECT_EQ(L"default", Read());
    EXPECT_EQ(-99, ReadLong());
    for (const Value& value : values) {
        Store(value.type, value.bytes);
        EXPECT_EQ(value.text, Read());
        EXPECT_EQ(value.number, ReadLong()) << ToAnsi(value.text);
    }
    Set(L"Program", Text(L"none"));
    EXPECT_EQ(L"default", Read());
}

TEST_F(ProgramSettings, StoreANumberInTheSizeOfItsText) {
    const std::pair<LONG, std::size_t> numbers[] = {
        {7, 1},     {-5, 2},     {42, 2},      {-99, 3},      {999, 3},       {-100, 4},     {1234, 4},
        {65536, 5}, {-65536, 6}, {1234567, 7}, {16777216, 8}, {123456789, 9}, {INT_MAX, 10}, {INT_MIN, 11}};
    for (const auto& [number, size] : numbers) {
        Write(number);
        std::string bytes(reinterpret_cast<const char*>(&number), 4);
        bytes.resize(size, '\0');
        EXPECT_EQ(bytes, Stored(REG_DWORD)) << number;
        EXPECT_EQ(size < 4 ? number & ((1 << 8 * size) - 1) : number, ReadLong()) << number;
    }
}

TEST_F(ProgramSettings, StoreStringsWholeAndMakeTheirKey) {
    Set(L"Section", Text(L"New\\Deeper"));
    Write(L"made");
    EXPECT_EQ(L"made", Read());
    const Variant padded = Text(std::wstring_view(L"v\0\0", 3));  // as out of a fixed buffer
    EXPECT_EQ(L"made", Fact(settings_.get(), L"ReadEntry", {padded, padded}));
    Set(L"Section", Text(L"Settings"));
    for (const std::wstring& text : {std::wstring(100'001, L'\xE9'), std::wstring(L"a\0b", 3), std::wstring()}) {
        Write(text);
        EXPECT_EQ(ToAnsi(text) + '\0', Stored(REG_SZ));
        EXPECT_EQ(text.empty() ? L"default" : text, Read());
    }
}

TEST_F(ProgramSettings, GiveDefaultsWhereTheyMayNotWrite) {
    Write(L"text");
    PSECURITY_DESCRIPTOR readOnly = nullptr;  // read, change the rights, delete
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:(A;;KRWDSD;;;WD)", SDDL_REVISION_1, &readOnly,
                                                                     nullptr));
    ASSERT_EQ(ERROR_SUCCESS, RegSetKeySecurity(key_.get(), DACL_SECURITY_INFORMATION, readOnly));
    LocalFree(readOnly);
    EXPECT_EQ(L"default", Read());
    Write(L"other");
    EXPECT_EQ(std::string("text\0", 5), Stored(REG_SZ));
    Set(L"RootKey", Arg(LONG{psrHKEY_USERS + 0x100}));  // no root key at all
    EXPECT_EQ(-99, ReadLong());
    Write(1);
}

TEST_F(ProgramSettings, ReportWhatNeverFitsAndWhereMemoryRanOut) {
    const std::wstring large(100'000, L'x');
    Write(large);
    ReportRecorder recorder(Library());
    {
        const Fake more("RegQueryValueExA", &RegQueryValueExA,
                        [](HKEY, LPCSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD) { return ERROR_MORE_DATA; });
        EXPECT_EQ(L"default", Read());
        EXPECT_EQ(L"GetKeyValue: Error: 75. Path/File access error|", recorder.Shown());
    }
    const auto useAll = [&](const std::wstring& text, LONG number) {
        const ScarceMemory scarce(100'000, SIZE_MAX);
        EXPECT_EQ(text, Read());
        EXPECT_EQ(number, ReadLong());
        Write(large);
        Write(1);
    };
    useAll(L"default", -99);
    EXPECT_EQ(L"1", Read());
    Set(L"MainBranch", Text(large));
    useAll(L"", 0);
    std::wstring shown;
    for (const wchar_t* title :
         {L"GetKeyValue", L"GetKeyValue", L"SetKeyValue", L"ReadEntry", L"ReadEntry", L"WriteEntry", L"WriteEntry"}) {
        shown += title + std::wstring(L": Error: 7. Out of memory|");
    }
    EXPECT_EQ(shown, recorder.Shown());
}

}  // namespace
}  // namespace velk::test
