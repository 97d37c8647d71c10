// CDatFile as its clients see it.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "integrity/crc32_engine.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"
#include "velksprt.h"

namespace velk::test {
namespace {

// The seal over a text of single-byte characters: each is two bytes, the second of them 0.
std::string SealOver(std::string_view region) {
    std::string bytes;
    for (const char character : region) bytes += {character, '\0'};
    return std::to_string(static_cast<std::int32_t>(~crc32::Update(crc32::kSeed, bytes.data(), bytes.size())));
}

constexpr std::string_view kBody = "[BEGIN]\r\nGROSS.HR=Gross weight\r\n";

const std::string kSeal = SealOver(std::string(kBody) + "[");
const std::string kSealed = std::string(kBody) + "[END]\r\n@CRC=" + kSeal + "\r\n";

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

TEST_F(DatFile, RefusesWhatIsNotProperlySealed) {
    const std::string body(kBody);
    std::string tampered = kSealed;
    tampered[12] ^= 1;
    const std::pair<std::string, HRESULT> cases[] = {
        {tampered, kCorrupt}, {body + "[END]\r\n", kCorrupt},         {body + "[END]\r\n@CRC=\r\n", kCorrupt},
        {"a=b", kCorrupt},    {"a=b\r\n[END]\r\n@CRC=0", Runtime(5)}, {body + "[END]\r\n@CRC=abc\r\n", Runtime(13)},
    };
    for (const auto& [text, code] : cases) EXPECT_EQ(code, LoadText(text).code) << text;
}

TEST_F(DatFile, KeepsWhatItHadReachedWhenLoadingFails) {
    EXPECT_EQ(kNoSuchFile, Load(folder_.path()).code);
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

TEST_F(DatFile, ShowsTheSealWhenAsked) {
    const Bstr path(folder_.Write(L"file.dat", kSealed));
    const ReportRecorder recorder(Library());
    for (const VARIANT& display : {Arg(false), Missing(), Arg(true)}) {
        EXPECT_TRUE(recorder.reports().empty());
        EXPECT_EQ(S_OK, Call(dat_.get(), L"Initialize", {Arg(path.get()), display}).result);
    }
    ASSERT_EQ(1u, recorder.reports().size());
    const std::wstring seal(kSeal.begin(), kSeal.end());
    EXPECT_EQ(seal, TextOf(Get(dat_.get(), L"DatFileCRC").value));
    EXPECT_EQ(L"File CRC: " + seal, recorder.reports()[0].text);
    EXPECT_EQ(L"integrity_tests", recorder.reports()[0].title);  // the host's
    EXPECT_EQ(static_cast<UINT>(MB_OK), recorder.reports()[0].type & (MB_TYPEMASK | MB_ICONMASK));
}

}  // namespace
}  // namespace velk::test
