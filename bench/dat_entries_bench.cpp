// Loading a large parameter file (read, convert, parse, checksum of the sealed region) against reading and
// converting it.
#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "integrity/crc32_engine.h"
#include "integrity/dat_entries.h"
#include "integrity/dat_seal.h"
#include "ratio.h"

namespace {

constexpr int kEntries = 1'000'000;
constexpr double kMostTimes = 3;

// 50 MB in lines of 50 bytes. Removed with the object.
class SealedFile {
  public:
    SealedFile() {
        std::ofstream file(path_, std::ios::binary);
        file << "[BEGIN]\r\n";
        char line[64];
        for (int i = 0; i < kEntries; ++i) {
            std::snprintf(line, sizeof(line), "SCALE.CELL%06d.HR=Dead load of cell %06d, kg\r\n", i, i);
            file << line;
        }
        file << "[END]\r\n@CRC=0\r\n";
    }
    SealedFile(const SealedFile&) = delete;
    SealedFile& operator=(const SealedFile&) = delete;
    ~SealedFile() { std::filesystem::remove(path_); }

    std::string Read() const {
        std::string bytes(std::filesystem::file_size(path_), '\0');
        std::ifstream(path_, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }

  private:
    const std::filesystem::path path_ = std::filesystem::temp_directory_path() / "velk_dat_entries_bench.dat";
};

std::u16string Convert(const std::string& bytes) {
#ifdef _WIN32
    const int size = static_cast<int>(bytes.size());
    std::u16string text(bytes.size(), u'\0');
    text.resize(MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, reinterpret_cast<wchar_t*>(text.data()), size));
    return text;
#else
    std::u16string text;
    text.reserve(bytes.size());
    for (const unsigned char byte : bytes) text += byte;
    return text;
#endif
}

std::uint32_t Load(const SealedFile& file, velk::DatEntries& entries) {
    entries.Parse(Convert(file.Read()));
    const auto region = velk::SealedRegion(entries.text());
    return ~velk::crc32::Update(velk::crc32::kSeed, region.data(), region.size() * sizeof(char16_t));
}

}  // namespace

int main() {
    const SealedFile file;
    velk::DatEntries entries;
    const bool met = velk::bench::Compare(
        "load 50 MB, 1e6 entries", 1 / kMostTimes, [&] { velk::bench::Keep(Load(file, entries)); },
        [&] { velk::bench::Keep(Convert(file.Read()).size()); });
    constexpr std::size_t kWithSeal = kEntries + 1;
    if (entries.size() != kWithSeal) std::printf("%zu entries instead of %zu\n", entries.size(), kWithSeal);
    return met && entries.size() == kWithSeal ? 0 : 1;
}
