// The checksum of a file, through the class as a client calls it, against a plain reference and against only reading.
#include <zlib.h>

#include <cstdio>
#include <string>
#include <vector>

#include "integrity/crc32_engine.h"
#include "platform/files.h"
#include "platform/text.h"
#include "ratio.h"
#include "support/client.h"
#include "support/scratch_folder.h"

namespace {

using namespace velk;

constexpr std::size_t kMiB = 1 << 20;

// Reads in the same blocks and takes zlib's table path.
uLong Reference(const std::wstring& path) {
    const FileHandle file = OpenForReading(path);
    std::vector<unsigned char> block(32767);
    uLong crc = 0;
    while (const std::size_t count = ReadBytes(file, block.data(), block.size())) {
        crc = ::crc32(crc, block.data(), static_cast<uInt>(count));
    }
    return crc;
}

void OnlyRead(const std::wstring& path) {
    const FileHandle file = OpenForReading(path);
    std::vector<unsigned char> block(1 << 17);
    while (ReadBytes(file, block.data(), block.size())) {
    }
}

bool Measure(const test::ScratchFolder& folder, std::size_t size, double mostReading) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 131 + (i >> 9));
    const std::wstring path = folder.Write(L"large", bytes);
    const auto crc = test::CreateObject<_CCRC32>(__uuidof(::CCRC32));
    crc->put_InputFileName(Bstr(path).get());
    LONG result = 0;
    const auto ours = [&] { crc->GetCRCFromFile(&result); };
    uLong expected = 0;
    const auto medians = bench::MedianTimes(
        ours, [&] { expected = Reference(path); }, [&] { OnlyRead(path); });
    if (static_cast<LONG>(expected) != result) {
        std::puts("The results differ.");
        return false;
    }
    std::printf("%zu MiB\n", size / kMiB);
    const bool met = bench::Report("against 32767-byte reference", medians[0], medians[1], 1.1);
    return bench::Report("against only reading", medians[0], medians[2], 1 / mostReading) && met;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const test::ScratchFolder folder;
    const auto variant = crc32::VariantName();
    std::printf("variant %.*s\n", static_cast<int>(variant.size()), variant.data());
    const bool met = Measure(folder, 64 * kMiB, 1.43);
    return Measure(folder, kMiB, 1.4) && met ? 0 : 1;
}
