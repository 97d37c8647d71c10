// CCRC32 as its clients see it: results, events one by one, and what is shown when a file cannot be read.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "integrity/crc32_engine.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/event_sink.h"
#include "support/report_recorder.h"
#include "support/scratch_folder.h"
#include "velksprt.h"

namespace velk::test {
namespace {

LONG ReferenceCrc(std::string_view bytes) {
    return static_cast<LONG>(~crc32::Update(crc32::kSeed, bytes.data(), bytes.size()));
}

std::string Bytes(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 31 + i / 251);
    return bytes;
}

class Crc32 : public testing::Test {
  protected:
    LONG Of(HRESULT (STDMETHODCALLTYPE _CCRC32::*member)(BSTR*, LONG*), std::wstring_view text) {
        Bstr argument(text);
        BSTR raw = argument.get();
        LONG result = 99;
        EXPECT_EQ(S_OK, (crc_.get()->*member)(&raw, &result));
        return result;
    }
    LONG OfString(std::wstring_view text) { return Of(&_CCRC32::GetCRCFromString, text); }
    LONG OfAscii(std::wstring_view text) { return Of(&_CCRC32::GetCRCFromStringAscii, text); }
    LONG OfFile(const std::wstring& path) {
        EXPECT_EQ(S_OK, crc_->put_InputFileName(Bstr(path).get()));
        LONG result = 99;
        EXPECT_EQ(S_OK, crc_->GetCRCFromFile(&result));
        return result;
    }
    std::vector<double> EventsOf(auto&& computation) {
        const auto sink = EventSink::Make();
        const Connection connection(crc_.get(), __uuidof(__CCRC32), sink.get());
        EXPECT_EQ(S_OK, connection.result());
        computation();
        std::vector<double> values;
        for (const EventSink::Event& event : sink->events) {
            EXPECT_EQ(1, event.id);
            values.push_back(event.value);
        }
        return values;
    }

    ComPtr<_CCRC32> crc_ = CreateObject<_CCRC32>(__uuidof(::CCRC32));
    ScratchFolder folder_;
};

double Single(double value) { return static_cast<float>(value); }

TEST_F(Crc32, OfStrings) {
    EXPECT_EQ(ReferenceCrc(std::string_view("\xAC\x20\0\0\x34\x12", 6)),
              OfString(std::wstring_view(L"\u20AC\0\u1234", 3)));
    // In code page 1252 the euro sign is one byte and the Chinese character becomes "?".
    EXPECT_EQ(ReferenceCrc("\x80?\xE9"), OfAscii(L"\u20AC\u6F22\u00E9"));

    LONG result = 99;
    BSTR none = nullptr;
    EXPECT_EQ(S_OK, crc_->GetCRCFromString(&none, &result));
    EXPECT_EQ(0, result);
}

// The fraction read comes after each block; nobody watching, the blocks are read together.
TEST_F(Crc32, FilesAreReadInBlocksWatchedOrNot) {
    struct Case {
        std::size_t length, covered;
        std::vector<double> fractions;
    };
    const Case cases[] = {
        {0, 0, {0}},
        {1, 0, {0}},
        {32768, 32767, {0, Single(32767.0 / 32768)}},
        {100000, 100000, {0, Single(32767.0 / 100000), Single(65534.0 / 100000), Single(98301.0 / 100000), 1}},
    };
    const std::size_t handles = OpenHandles();
    for (const Case& c : cases) {
        const std::wstring path = folder_.Write(L"file", Bytes(c.length));
        const LONG expected = ReferenceCrc(Bytes(c.length).substr(0, c.covered));
        EXPECT_EQ(expected, OfFile(path)) << c.length;
        EXPECT_EQ(c.fractions, EventsOf([&] { EXPECT_EQ(expected, OfFile(path)); })) << c.length;
    }
    EXPECT_EQ(handles, OpenHandles());
}

TEST_F(Crc32, StringEventsComeForEveryByteButMultiplesOf4096) {
    EXPECT_EQ((std::vector<double>{0, 1}), EventsOf([&] { OfString(L""); }));
    EXPECT_EQ((std::vector<double>{0, 1, 1}), EventsOf([&] { OfString(L"x"); }));
    EXPECT_EQ((std::vector<double>{0, Single(1.0 / 3), Single(2.0 / 3), 1, 1}), EventsOf([&] { OfAscii(L"wxyz"); }));

    std::vector<double> expected{0};
    for (int i = 1; i < 4096; ++i) expected.push_back(Single(i / 4096.0));
    expected.push_back(1);
    EXPECT_EQ(expected, EventsOf([&] { OfAscii(std::wstring(4097, L'a')); }));
}

TEST_F(Crc32, SinksCannotChangeAResult) {
    const std::wstring path = folder_.Write(L"file", Bytes(70000));
    const LONG undisturbed = OfFile(path);
    const auto sink = EventSink::Make();
    Connection connection(crc_.get(), __uuidof(__CCRC32), sink.get());
    sink->onEvent = [&](VARIANT* argument) {
        *argument->pfltVal = 77;
        crc_->put_InputFileName(Bstr(L"elsewhere").get());
        if (sink->events.size() == 3) connection.Disconnect();
    };
    EXPECT_EQ(undisturbed, OfFile(path));
    EXPECT_EQ(3u, sink->events.size());
}

TEST_F(Crc32, ReportsAFileThatCannotBeOpened) {
    const ReportRecorder recorder(Library());
    EXPECT_EQ(std::vector<double>{}, EventsOf([&] { EXPECT_EQ(0, OfFile(folder_.Path(L"missing\\file"))); }));
    ASSERT_EQ(1u, recorder.reports().size());
    EXPECT_EQ(L"GetCRCFromFile", recorder.reports()[0].title);
    EXPECT_EQ(L"Error: 76. Path not found", recorder.reports()[0].text);
}

// Lets a file be read up to 70000 bytes, as if the rest were locked.
BOOL WINAPI ReadUpToALock(HANDLE file, void* buffer, DWORD count, DWORD* got, OVERLAPPED*) {
    const LARGE_INTEGER nowhere{};
    LARGE_INTEGER position;
    SetFilePointerEx(file, nowhere, &position, FILE_CURRENT);
    if (position.QuadPart + count > 70000) {
        SetLastError(ERROR_LOCK_VIOLATION);
        return FALSE;
    }
    return ReadFile(file, buffer, count, got, nullptr);
}

// A block that cannot be read has its own report and ends the file: the result covers the blocks before it, whether
// anybody watches them go by or not.
TEST_F(Crc32, AFailingBlockEndsTheFile) {
    const std::wstring path = folder_.Write(L"file", Bytes(100000));
    const ImportPatch patch(Library(), "ReadFile", reinterpret_cast<void*>(&ReadUpToALock));
    const ReportRecorder recorder(Library());
    const LONG expected = ReferenceCrc(Bytes(2 * 32767));
    EXPECT_EQ(expected, OfFile(path));
    EXPECT_EQ(3u, EventsOf([&] { EXPECT_EQ(expected, OfFile(path)); }).size());
    ASSERT_EQ(2u, recorder.reports().size());
    for (const ReportRecorder::Report& report : recorder.reports()) {
        EXPECT_EQ(L"ReadFile", report.title);
        EXPECT_EQ(L"Error: 70. Permission denied", report.text);
    }
}

// A file beyond 4 GB, stood in for by the length that the system reports and by blocks that are not on any disk.
TEST_F(Crc32, CountsPastFourGigabytes) {
    static constexpr std::uint64_t length = (std::uint64_t{1} << 32) + 3;
    static std::uint64_t delivered;
    delivered = 0;
    const auto size = [](HANDLE, LARGE_INTEGER * answer) __attribute__((stdcall))->BOOL {
        answer->QuadPart = static_cast<LONGLONG>(length);
        return TRUE;
    };
    const auto read = [](HANDLE, void* buffer, DWORD count, DWORD* got, OVERLAPPED*) __attribute__((stdcall))->BOOL {
        memset(buffer, 0, count);
        delivered += count;
        *got = count;
        return TRUE;
    };
    const std::wstring path = folder_.Write(L"file", "x");
    const ImportPatch patchedSize(Library(), "GetFileSizeEx", reinterpret_cast<void*>(+size));
    const ImportPatch patchedRead(Library(), "ReadFile", reinterpret_cast<void*>(+read));
    const std::vector<char> zeros(1 << 20);
    std::uint32_t expected = crc32::kSeed;
    for (std::uint64_t i = 0; i < length / zeros.size(); ++i) {
        expected = crc32::Update(expected, zeros.data(), zeros.size());
    }
    expected = crc32::Update(expected, zeros.data(), length % zeros.size());
    EXPECT_EQ(static_cast<LONG>(~expected), OfFile(path));
    EXPECT_EQ(length, delivered);
}

}  // namespace
}  // namespace velk::test
