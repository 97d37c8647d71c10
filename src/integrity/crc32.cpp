#include "integrity/crc32.h"

#include <span>
#include <vector>

#include "frame/failure/report.h"
#include "integrity/crc32_blocks.h"
#include "integrity/crc32_engine.h"
#include "platform/files.h"
#include "platform/text.h"

namespace velk {
namespace {

constexpr DISPID kProgress = 1;

LONG Finish(std::uint32_t running) noexcept { return static_cast<LONG>(~running); }

// Reads a file's blocks one after the other, or several at once where nobody watches.
class BlockReader {
  public:
    BlockReader(const FileHandle& file, std::size_t blocksAtOnce)
        : file_(file),
          length_(FileLength(file)),
          blocks_(blocksAtOnce),
          buffer_(static_cast<std::size_t>(crc32::NextStretch(0, length_, blocksAtOnce))) {}

    // Empty at the end of the file. A block that cannot be read ends it too, with a report of its own.
    std::span<const std::byte> Next() noexcept try {
        const std::uint64_t wanted = crc32::NextStretch(position_, length_, blocks_);
        const std::size_t count = ReadBytes(file_, buffer_.data(), static_cast<std::size_t>(wanted));
        position_ += count;
        return {buffer_.data(), count};
    } catch (...) {
        if (blocks_ > 1) return RetryOneByOne();
        ReportFailure(CaughtFailure(), L"ReadFile");
        return {};
    }

    double Fraction() const noexcept { return static_cast<double>(position_) / static_cast<double>(length_); }

  private:
    // The blocks before the one that cannot be read still count.
    std::span<const std::byte> RetryOneByOne() noexcept {
        blocks_ = 1;
        SeekTo(file_, position_);
        return Next();
    }

    const FileHandle& file_;
    const std::uint64_t length_;
    std::size_t blocks_;
    std::vector<std::byte> buffer_;
    std::uint64_t position_ = 0;
};

// Measured: fewer cost more calls, more touch more memory than a file of a megabyte is worth.
constexpr std::size_t kBlocksAtOnce = 4;

}  // namespace

constinit const ClassInfo CCRC32::kInfo{
    .name = L"CCRC32",
    .clsid = __uuidof(::CCRC32),
    .iid = __uuidof(_CCRC32),
    .events = &__uuidof(__CCRC32),
    .policy = FailurePolicy::Report,
};

void* CCRC32::ExtraInterface(REFIID iid) noexcept {
    return iid == IID_IConnectionPointContainer ? static_cast<IConnectionPointContainer*>(&events_) : nullptr;
}

STDMETHODIMP CCRC32::get_InputFileName(BSTR* result) noexcept { return Get(result, inputFileName_); }

STDMETHODIMP CCRC32::put_InputFileName(BSTR strName) noexcept { return Let(&strName, inputFileName_); }

STDMETHODIMP CCRC32::GetCRCFromFile(LONG* result) noexcept {
    return Guard(result, [&] { return ChecksumOfFile(); });
}

STDMETHODIMP CCRC32::GetCRCFromString(BSTR* strInput, LONG* result) noexcept {
    return Guard(result, [&] {
        const std::wstring_view text = View(Given(strInput));  // all is read before the first event
        return ChecksumOf(text.data(), text.size() * sizeof(wchar_t));
    });
}

STDMETHODIMP CCRC32::GetCRCFromStringAscii(BSTR* strInput, LONG* result) noexcept {
    return Guard(result, [&] {
        const std::string bytes = ToAnsi(View(Given(strInput)));
        return ChecksumOf(bytes.data(), bytes.size());
    });
}

LONG CCRC32::ChecksumOfFile() {
    const FileHandle file = OpenForReading(inputFileName_);
    BlockReader reader(file, events_.point().HasSinks() ? 1 : kBlocksAtOnce);
    std::uint32_t running = crc32::kSeed;
    RaiseProgress(0);
    for (auto block = reader.Next(); !block.empty(); block = reader.Next()) {
        running = crc32::Update(running, block.data(), block.size());
        RaiseProgress(reader.Fraction());
    }
    return Finish(running);
}

LONG CCRC32::ChecksumOf(const void* bytes, std::size_t size) noexcept {
    const std::uint32_t running = crc32::Update(crc32::kSeed, bytes, size);
    if (events_.point().HasSinks()) RaiseStringProgress(size);
    return Finish(running);
}

void CCRC32::RaiseStringProgress(std::size_t size) noexcept {
    RaiseProgress(0);
    for (std::size_t i = 0; i < size; ++i) {
        if (i % 4096 != 0) RaiseProgress(static_cast<double>(i) / static_cast<double>(size - 1));
    }
    RaiseProgress(1);
}

void CCRC32::RaiseProgress(double fraction) noexcept {
    if (events_.point().HasSinks()) events_.point().Raise(kProgress, {ByReference(static_cast<FLOAT>(fraction))});
}

}  // namespace velk
