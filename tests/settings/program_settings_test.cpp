// CProgramSettings as its clients see it, on a real registry.
#include <gtest/gtest.h>

#include <vector>

#include "frame/handles.h"
#include "frame/text.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/scarce_memory.h"

namespace velk::test {
namespace {

class ProgramSettings : public testing::Test {
  protected:
    ProgramSettings() {
        Set(L"RootKey", Arg(LONG{psrHKEY_CURRENT_USER}));
        Set(L"RegBase", L"VelkTests");
        Set(L"Program", L"Demo");
        RegCreateKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\VelkTests\\Demo\\Settings", 0, nullptr, 0, KEY_ALL_ACCESS,
                        nullptr, key_.Receive(), nullptr);
    }
    ~ProgramSettings() override { RegDeleteTreeA(HKEY_CURRENT_USER, "SOFTWARE\\VelkTests"); }

    void Set(const wchar_t* property, VARIANT value) {
        EXPECT_EQ(S_OK, Let(settings_.get(), property, {value}).result);
    }
    void Set(const wchar_t* property, const std::wstring& text) { Set(property, Arg(Bstr(text).get())); }
    std::wstring Read(const wchar_t* entry) {
        return TextOf(Call(settings_.get(), L"ReadEntry", {Arg(Bstr(entry).get()), Arg(Bstr(L"default").get())}).value);
    }
    LONG ReadLong(const wchar_t* entry) {
        return Call(settings_.get(), L"ReadEntryLong", {Arg(Bstr(entry).get()), Arg(LONG{-99})}).value.lVal;
    }
    void Write(const wchar_t* entry, const std::wstring& text) {
        const Bstr value(text);
        EXPECT_EQ(S_OK, Call(settings_.get(), L"WriteEntry", {Arg(Bstr(entry).get()), Arg(value.get())}).result);
    }
    void WriteLong(const wchar_t* entry, LONG number) {
        EXPECT_EQ(S_OK, Call(settings_.get(), L"WriteEntryLong", {Arg(Bstr(entry).get()), Arg(number)}).result);
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

struct Opened {
    HKEY root;
    std::string path;
    REGSAM access;
} opened;

LSTATUS WINAPI RecordOpen(HKEY root, LPCSTR path, DWORD, REGSAM access, HKEY*) {
    opened = {root, path, access};
    return ERROR_ACCESS_DENIED;
}
LSTATUS WINAPI RecordCreate(HKEY root, LPCSTR path, DWORD, LPSTR, DWORD, REGSAM access, SECURITY_ATTRIBUTES*, HKEY*,
                            DWORD*) {
    opened = {root, path, access};
    return ERROR_ACCESS_DENIED;
}

TEST_F(ProgramSettings, ComposeTheirPath) {
    settings_ = CreateObject<IDispatch>(__uuidof(::CProgramSettings));
    EXPECT_EQ(L"SOFTWARE", TextOf(Get(settings_.get(), L"MainBranch").value));
    EXPECT_EQ(psrHKEY_LOCAL_MACHINE, Get(settings_.get(), L"RootKey").value.lVal);
    const ImportPatch open(Library(), "RegOpenKeyExA", reinterpret_cast<void*>(&RecordOpen));
    const ImportPatch create(Library(), "RegCreateKeyExA", reinterpret_cast<void*>(&RecordCreate));
    struct Change {
        const wchar_t* property;
        const wchar_t* value;
        const char* path;
    };
    const Change changes[] = {
        {L"Program", L"P", "SOFTWARE\\\\P\\Settings"},
        {L"RegBase", L"Acme", "SOFTWARE\\Acme\\P\\Settings"},
        {L"Section", L"", "SOFTWARE\\Acme\\P"},
        {L"Program", L"", "SOFTWARE\\Acme\\"},
        {L"Section", L"x\\y\\\\", "SOFTWARE\\Acme\\\\x\\y\\"},
        {L"MainBranch", L"", "\\Acme\\\\x\\y\\"},
    };
    for (const Change& change : changes) {
        Set(change.property, change.value);
        EXPECT_EQ(change.value, TextOf(Get(settings_.get(), change.property).value));
        EXPECT_EQ(L"default", Read(L"v"));
        EXPECT_EQ(change.path, opened.path);
        opened = {};
        WriteLong(L"v", 1);
        EXPECT_EQ(change.path, opened.path);
        EXPECT_EQ(HKEY_LOCAL_MACHINE, opened.root);
        EXPECT_EQ(0x3Fu, opened.access);
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
    EXPECT_EQ(L"default", Read(L"v"));
    EXPECT_EQ(-99, ReadLong(L"v"));
    for (const Value& value : values) {
        Store(value.type, value.bytes);
        EXPECT_EQ(value.text, Read(L"v"));
        EXPECT_EQ(value.number, ReadLong(L"v")) << ToAnsi(value.text);
    }
    Set(L"Program", L"none");
    EXPECT_EQ(L"default", Read(L"v"));
}

TEST_F(ProgramSettings, StoreANumberInTheSizeOfItsText) {
    struct Number {
        LONG value;
        DWORD size;
        LONG readBack;
    };
    const Number numbers[] = {{7, 1, 7},
                              {-5, 2, 0xFFFB},
                              {42, 2, 42},
                              {-99, 3, 0xFFFF9D},
                              {999, 3, 999},
                              {-100, 4, -100},
                              {1234, 4, 1234},
                              {65536, 5, 65536},
                              {-65536, 6, -65536},
                              {1234567, 7, 1234567},
                              {16777216, 8, 16777216},
                              {123456789, 9, 123456789},
                              {INT_MAX, 10, INT_MAX},
                              {INT_MIN, 11, INT_MIN}};
    for (const Number& number : numbers) {
        WriteLong(L"v", number.value);
        std::string bytes(reinterpret_cast<const char*>(&number.value), 4);
        bytes.resize(number.size, '\0');
        EXPECT_EQ(bytes, Stored(REG_DWORD)) << number.value;
        EXPECT_EQ(number.readBack, ReadLong(L"v")) << number.value;
    }
}

TEST_F(ProgramSettings, StoreStringsWholeAndMakeTheirKey) {
    for (const std::wstring& text :
         {std::wstring(L"value"), std::wstring(100'001, L'\xE9'), std::wstring(L"a\0b", 3)}) {
        Write(L"v", text);
        EXPECT_EQ(ToAnsi(text) + '\0', Stored(REG_SZ));
        EXPECT_EQ(text, Read(L"v"));
    }
    Write(L"v", L"");
    EXPECT_EQ(std::string(1, '\0'), Stored(REG_SZ));
    Set(L"Section", L"New\\Deeper");
    Write(L"", L"unnamed");
    EXPECT_EQ(L"unnamed", Read(L""));
}

TEST_F(ProgramSettings, GiveDefaultsWhereTheyMayNotWrite) {
    Write(L"v", L"text");
    EXPECT_EQ(L"text", Read(L"v"));
    SECURITY_DESCRIPTOR readOnly;
    alignas(ACL) std::byte room[256];
    auto* const list = reinterpret_cast<ACL*>(room);
    BYTE everyone[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof everyone;
    ASSERT_TRUE(CreateWellKnownSid(WinWorldSid, nullptr, everyone, &size));
    ASSERT_TRUE(InitializeAcl(list, sizeof room, ACL_REVISION));
    ASSERT_TRUE(AddAccessAllowedAce(list, ACL_REVISION, KEY_READ | WRITE_DAC | DELETE, everyone));
    ASSERT_TRUE(InitializeSecurityDescriptor(&readOnly, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&readOnly, TRUE, list, FALSE));
    ASSERT_EQ(ERROR_SUCCESS, RegSetKeySecurity(key_.get(), DACL_SECURITY_INFORMATION, &readOnly));
    EXPECT_EQ(L"default", Read(L"v"));
    Write(L"v", L"other");
    EXPECT_EQ(std::string("text\0", 5), Stored(REG_SZ));
    Set(L"RootKey", Arg(LONG{psrHKEY_USERS + 0x100}));  // no root key at all
    EXPECT_EQ(-99, ReadLong(L"v"));
    WriteLong(L"v", 1);
}

TEST_F(ProgramSettings, ReportWhereMemoryRanOut) {
    const std::wstring large(100'000, L'x');
    Write(L"v", large);
    const ReportRecorder recorder(Library());
    {
        const ScarceMemory scarce(100'000, SIZE_MAX);
        EXPECT_EQ(L"default", Read(L"v"));
        EXPECT_EQ(-99, ReadLong(L"v"));
        Write(L"v", large);
    }
    EXPECT_EQ(large, Read(L"v"));
    Set(L"MainBranch", large);
    {
        const ScarceMemory scarce(100'000, SIZE_MAX);
        EXPECT_EQ(L"", Read(L"v"));
        EXPECT_EQ(0, ReadLong(L"v"));
        Write(L"v", L"text");
        WriteLong(L"v", 1);
    }
    std::wstring titles;
    for (const auto& report : recorder.reports()) {
        EXPECT_EQ(L"Error: 7. Out of memory", report.text);
        titles += report.title + L' ';
    }
    EXPECT_EQ(L"GetKeyValue GetKeyValue SetKeyValue ReadEntry ReadEntry WriteEntry WriteEntry ", titles);
}

}  // namespace
}  // namespace velk::test
