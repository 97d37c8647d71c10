#include "integrity/crc32.h"

#include <vector>

#include "frame/files.h"
#include "frame/report.h"
#include "frame/text.h"
#include "integrity/crc32_blocks.h"
#include "integrity/crc32_engine.h"

namespace velk {
namespace {

constexpr DISPID kProgress = 1;

LONG Finish(std::uint32_t running) noexcept { return static_cast<LONG>(~running); }

// A block that cannot be read ends the file, with a report of its own.
std::size_t ReadBlock(const FileHandle& file, std::byte* buffer, std::uint64_t count) noexcept try {
    return count == 0 ? 0 : ReadBytes(file, buffer, static_cast<std::size_t>(count));
} catch (...) {
    ReportFailure(CaughtFailure(), L"ReadFile");
    return 0;
}

}  // namespace

constinit const ClassInfo CCRC32::kInfo{
    .name = L"CCRC32",
    .clsid = __uuidof(::CCRC32),
    .iid = __uuidof(_CCRC32),
    .events = &__uuidof(__CCRC32),
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

void* CCRC32::ExtraFace(REFIID iid) noexcept {
    return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(&events_) : nullptr;
}

STDMETHODIMP CCRC32::get_InputFileName(BSTR* result) noexcept {
    return Guard(L"InputFileName", result, [&] { return Bstr(inputFileName_); });
}

STDMETHODIMP CCRC32::put_InputFileName(BSTR strName) noexcept {
    return Guard(L"InputFileName", [&] { inputFileName_ = View(strName); });
}

STDMETHODIMP CCRC32::GetCRCFromFile(LONG* result) noexcept {
    return Guard(L"GetCRCFromFile", result, [&] { return ChecksumOfFile(); });
}

STDMETHODIMP CCRC32::GetCRCFromString(BSTR* strInput, LONG* result) noexcept {
    return Guard(L"GetCRCFromString", result, [&] {
        const std::wstring_view text = View(Given(strInput));
        return ChecksumOf(text.data(), text.size() * sizeof(wchar_t));
    });
}

STDMETHODIMP CCRC32::GetCRCFromStringAscii(BSTR* strInput, LONG* result) noexcept {
    return Guard(L"GetCRCFromStringAscii", result, [&] {
        const std::string bytes = ToAnsi(View(Given(strInput)));
        return ChecksumOf(bytes.data(), bytes.size());
    });
}

LONG CCRC32::ChecksumOfFile() {
    const ComPtr<_CCRC32> alive(this);  // a sink may drop the client's reference
    const FileHandle file = OpenForReading(inputFileName_);
    const std::uint64_t length = FileLength(file);
    std::vector<std::byte> buffer(crc32::kBlock);
    std::uint32_t running = crc32::kSeed;
    std::uint64_t total = 0;
    RaiseProgress(0);
    while (const std::size_t count = ReadBlock(file, buffer.data(), crc32::NextBlock(total, length))) {
        running = crc32::Update(running, buffer.data(), count);
        total += count;
        RaiseProgress(static_cast<double>(total) / static_cast<double>(length));
    }
    return Finish(running);
}

LONG CCRC32::ChecksumOf(const void* bytes, std::size_t size) noexcept {
    const std::uint32_t running = crc32::Update(crc32::kSeed, bytes, size);
    if (events_.point().HasSinks()) RaiseStringProgress(size);
    return Finish(running);
}

void CCRC32::RaiseStringProgress(std::size_t size) noexcept {
    const ComPtr<_CCRC32> alive(this);
    RaiseProgress(0);
    for (std::size_t i = 0; i < size; ++i) {
        if (i % 4096 != 0) RaiseProgress(static_cast<double>(i) / static_cast<double>(size - 1));
    }
    RaiseProgress(1);
}

void CCRC32::RaiseProgress(double fraction) noexcept {
    if (!events_.point().HasSinks()) return;
    FLOAT value = static_cast<FLOAT>(fraction);
    VARIANT argument;
    argument.vt = VT_R4 | VT_BYREF;
    argument.pfltVal = &value;  // a handler may write into it; nobody looks
    events_.point().Raise(kProgress, {&argument, 1});
}

}  // namespace velk
