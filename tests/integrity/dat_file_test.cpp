// CDatFile as its clients see it.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "frame/handles.h"
#include "frame/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"
#include "velksprt.h"

namespace velk::test {
namespace {

// The seal over a text of single-byte characters: each is two bytes, the second of them 0.
std::string SealOver(std::string_view region) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char character : region) {
        for (const unsigned byte : {static_cast<unsigned>(static_cast<unsigned char>(character)), 0u}) {
            crc ^= byte;
            for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
        }
    }
    return std::to_string(static_cast<std::int32_t>(~crc));
}

constexpr std::string_view kBody = "[BEGIN]\r\nGROSS.HR=Gross weight\r\nGROSS.IND=GROSS KG\r\nA.HR=x=y\r\n";

std::string Sealed(std::string_view body = kBody) {
    return std::string(body) + "[END]\r\n@CRC=" + SealOver(std::string(body) + "[") + "\r\n";
}

constexpr HRESULT kNoSuchFile = static_cast<HRESULT>(0x80042714);
constexpr HRESULT kCorrupt = static_cast<HRESULT>(0x80042715);
constexpr HRESULT kNotInitialised = static_cast<HRESULT>(0x80042716);
constexpr HRESULT Runtime(int number) { return static_cast<HRESULT>(0x800A0000 + number); }

class DatFile : public testing::Test {
  protected:
    Outcome Load(const std::wstring& path) { return Call(dat_.get(), L"Initialize", {Arg(Bstr(path).get())}); }
    Outcome LoadText(std::string_view text) { return Load(folder_.Write(L"file.dat", text)); }
    Outcome Name(const wchar_t* parameter) { return Let(dat_.get(), L"Parameter", {Arg(Bstr(parameter).get())}); }
    std::wstring Human() { return TextOf(Call(dat_.get(), L"GetHumanReadable").value); }
    std::wstring Indicator() { return TextOf(Call(dat_.get(), L"GetIndicatorReadable").value); }

    ComPtr<IDispatch> dat_ = CreateObject<IDispatch>(__uuidof(::CDatFile));
    ScratchFolder folder_;
};

TEST_F(DatFile, LooksUpTheTextsOfASealedFile) {
    ASSERT_EQ(S_OK, LoadText(Sealed()).result);
    EXPECT_EQ(L"", TextOf(Get(dat_.get(), L"Parameter").value));
    Name(L"GROSS");
    EXPECT_EQ(L"GROSS", TextOf(Get(dat_.get(), L"Parameter").value));
    EXPECT_EQ(L"Gross weight", Human());
    EXPECT_EQ(L"GROSS KG", Indicator());
    Name(L"gross");
    EXPECT_EQ(L"", Human());
    Name(L"A");
    EXPECT_EQ(L"x", Human());
    EXPECT_EQ(L"", Indicator());
    const std::string seal = SealOver(std::string(kBody) + "[");
    EXPECT_EQ(std::wstring(seal.begin(), seal.end()), TextOf(Get(dat_.get(), L"DatFileCRC").value));
}

TEST_F(DatFile, EveryMemberNeedsInitialize) {
    const Outcome outcomes[] = {Call(dat_.get(), L"GetHumanReadable"), Call(dat_.get(), L"GetIndicatorReadable"),
                                Get(dat_.get(), L"DatFileCRC"), Get(dat_.get(), L"Parameter"), Name(L"x")};
    for (const Outcome& outcome : outcomes) {
        EXPECT_EQ(DISP_E_EXCEPTION, outcome.result);
        EXPECT_EQ(kNotInitialised, outcome.code);
        EXPECT_EQ(L"Object not initialized", outcome.description);
        EXPECT_EQ(L"VelkSupport", outcome.source);
    }
}

struct Refusal {
    const char* what;
    std::string text;
    HRESULT code;
    const wchar_t* description;
};

TEST_F(DatFile, RefusesWhatIsNotProperlySealed) {
    constexpr const wchar_t* corrupt = L".Dat file corrupt.";
    const std::string body(kBody);
    std::string tampered = Sealed();
    tampered[12] ^= 1;
    const Refusal refusals[] = {
        {"a changed byte", tampered, kCorrupt, corrupt},
        {"no seal", body + "[END]\r\n", kCorrupt, corrupt},
        {"an empty seal", body + "[END]\r\n@CRC=\r\n", kCorrupt, corrupt},
        {"no seal and no markers", "a=b", kCorrupt, corrupt},
        {"an empty file", "", kCorrupt, corrupt},
        {"one byte", "=", kCorrupt, corrupt},
        {"junk", std::string("\0\1\xFF\r\n=\x1A\r=\n\0[", 12), kCorrupt, corrupt},
        {"no [BEGIN]", "a=b\r\n[END]\r\n@CRC=0", Runtime(5), L"Invalid procedure call or argument"},
        {"markers reversed", "[END]\r\n[BEGIN]\r\n@CRC=1", kCorrupt, corrupt},
        {"no [END], seal not 0", "[BEGIN]\r\na=b\r\n@CRC=1", kCorrupt, corrupt},
        {"a seal that is no number", body + "[END]\r\n@CRC=abc\r\n", Runtime(13), L"Type mismatch"},
        {"a seal beyond a Long", body + "[END]\r\n@CRC=3000000000\r\n", Runtime(6), L"Overflow"},
        {"a key twice", "[BEGIN]\r\na=1\r\na=2\r\n[END]\r\n@CRC=0", Runtime(457),
         L"This key is already associated with an element of this collection"},
    };
    for (const Refusal& refusal : refusals) {
        const Outcome outcome = LoadText(refusal.text);
        EXPECT_EQ(DISP_E_EXCEPTION, outcome.result) << refusal.what;
        EXPECT_EQ(refusal.code, outcome.code) << refusal.what;
        EXPECT_EQ(refusal.description, outcome.description) << refusal.what;
        EXPECT_EQ(L"VelkSupport", outcome.source) << refusal.what;
    }
}

TEST_F(DatFile, TheEndMarkersPositionIsTheLengthOfTheSealedRegion) {
    // With text before "[BEGIN]" the region reaches as far past "[END]" as that text is long.
    const std::string head = "# scale\r\n";
    const std::string text = head + std::string(kBody) + "[END]\r\n; padding\r\n@CRC=";
    const std::string covered = text.substr(head.size(), head.size() + kBody.size() + 1);
    EXPECT_EQ(S_OK, LoadText(text + SealOver(covered)).result);
    // Without "[END]" the region is empty, and so its checksum is 0.
    EXPECT_EQ(S_OK, LoadText("[BEGIN]\r\na=b\r\n@CRC=0").result);
    EXPECT_EQ(L"0", TextOf(Get(dat_.get(), L"DatFileCRC").value));
}

TEST_F(DatFile, KeepsWhatItHadReachedWhenLoadingFails) {
    const std::wstring missing[] = {folder_.Path(L"none.dat"), folder_.path(), L"", L"Q:\\x.dat",
                                    L"C:\\" + std::wstring(300, L'n')};
    for (const std::wstring& path : missing) {
        const Outcome outcome = Load(path);
        EXPECT_EQ(kNoSuchFile, outcome.code);
        EXPECT_EQ(L"File does not exist.", outcome.description);
    }
    // Initialised all the same, but there is nothing to look up in.
    EXPECT_EQ(S_OK, Name(L"B").result);
    EXPECT_EQ(Runtime(91), Call(dat_.get(), L"GetHumanReadable").code);
    EXPECT_EQ(L"", TextOf(Get(dat_.get(), L"DatFileCRC").value));

    EXPECT_EQ(kCorrupt, LoadText("[BEGIN]\r\nB.HR=kept\r\n[END]\r\n@CRC=7").code);
    EXPECT_EQ(L"kept", Human());
    EXPECT_NE(L"7", TextOf(Get(dat_.get(), L"DatFileCRC").value));
    EXPECT_EQ(Runtime(457), LoadText("B.HR=first\r\nB.HR=second\r\nB.IND=after").code);
    EXPECT_EQ(L"first", Human());
    EXPECT_EQ(L"", Indicator());
}

TEST_F(DatFile, ReadsAFileThatOthersUseAndRefusesALockedOne) {
    const std::wstring path = folder_.Write(L"shared.dat", Sealed());
    const std::size_t handles = OpenHandles();
    {
        const FileHandle writer(
            CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(S_OK, Load(path).result);
    }
    {
        const FileHandle lock(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        const Outcome outcome = Load(path);
        EXPECT_EQ(Runtime(70), outcome.code);
        EXPECT_EQ(L"Permission denied", outcome.description);
    }
    EXPECT_EQ(Runtime(52), Load(folder_.Path(L"shared.*")).code);  // found by the search, not a name to open
    EXPECT_EQ(kNoSuchFile, Load(path + std::wstring(L"\0", 1)).code);
    EXPECT_EQ(handles, OpenHandles());
}

TEST_F(DatFile, ShowsTheSealWhenAsked) {
    const std::wstring path = folder_.Write(L"file.dat", Sealed());
    wchar_t host[MAX_PATH];
    GetModuleFileNameW(nullptr, host, MAX_PATH);
    const std::wstring_view file = std::wstring_view(host).substr(std::wstring_view(host).rfind(L'\\') + 1);
    const ReportRecorder recorder(Library());
    EXPECT_EQ(S_OK, Call(dat_.get(), L"Initialize", {Arg(Bstr(path).get()), Arg(false)}).result);
    EXPECT_EQ(S_OK, Call(dat_.get(), L"Initialize", {Arg(Bstr(path).get()), Missing()}).result);
    EXPECT_EQ(0u, recorder.reports().size());
    EXPECT_EQ(S_OK, Call(dat_.get(), L"Initialize", {Arg(Bstr(path).get()), Arg(true)}).result);
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(L"File CRC: " + TextOf(Get(dat_.get(), L"DatFileCRC").value), recorder.reports()[0].text);
    EXPECT_EQ(file.substr(0, file.rfind(L'.')), recorder.reports()[0].title);
    EXPECT_EQ(static_cast<UINT>(MB_OK), recorder.reports()[0].type & (MB_TYPEMASK | MB_ICONMASK));
}

}  // namespace
}  // namespace velk::test
