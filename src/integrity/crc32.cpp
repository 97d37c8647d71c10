#include "integrity/crc32.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <tuple>
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

using Fractions = std::array<FLOAT, 64>;

// Some at a time, as the compiler divides several numbers at once then; one division takes as long as an event.
[[gnu::noinline]] Fractions FractionsFrom(double first, double last) noexcept {
    Fractions all;
    for (int i = 0; FLOAT & fraction : all) fraction = static_cast<FLOAT>((first + i++) / last);
    return all;
}

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

// The register after a text's bytes, if each character is one. They are made piece by piece: a block for all would
// come from the heap, and some heaps fetch one of that size anew each time.
std::optional<std::uint32_t> ChecksumOfAscii(std::wstring_view text) noexcept {
    std::array<char, 4096> bytes;
    std::uint32_t running = crc32::kSeed;
    for (std::wstring_view piece; !text.empty(); text.remove_prefix(piece.size())) {
        piece = text.substr(0, bytes.size());
        if (!CopyAscii(bytes.data(), piece)) return std::nullopt;
        running = crc32::Update(running, bytes.data(), piece.size());
    }
    return running;
}

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
        const std::wstring_view text = View(Given(strInput));
        if (const auto running = ChecksumOfAscii(text)) return EndOfString(*running, text.size());
        const std::string bytes = ToAnsi(text);
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
        RaiseProgress(static_cast<FLOAT>(reader.Fraction()));
    }
    return Finish(running);
}

LONG CCRC32::ChecksumOf(const void* bytes, std::size_t size) noexcept {
    return EndOfString(crc32::Update(crc32::kSeed, bytes, size), size);
}

LONG CCRC32::EndOfString(std::uint32_t running, std::size_t size) noexcept {
    if (events_.point().HasSinks()) RaiseStringProgress(size);
    return Finish(running);
}

void CCRC32::RaiseStringProgress(std::size_t size) noexcept {
    RaiseProgress(0);
    for (std::size_t first = 0; first < size; first += std::tuple_size_v<Fractions>) {
        const Fractions all = FractionsFrom(static_cast<double>(first), std::max(static_cast<double>(size) - 1, 1.0));
        const std::span<const FLOAT> some(all.data(), std::min(all.size(), size - first));
        events_.point().Raise(kProgress, some.subspan(first % 4096 == 0 ? 1 : 0));
    }
    RaiseProgress(1);
}

void CCRC32::RaiseProgress(FLOAT fraction) noexcept { events_.point().Raise(kProgress, {&fraction, 1}); }

}  // namespace velk
