// Loading a large parameter file (read, convert, parse, checksum of the sealed region) against reading it and the
// platform's conversion alone; and keys that a weak hash would throw together, thousands of times as slow, against an
// ordered map.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "integrity/crc32_engine.h"
#include "integrity/dat_entries.h"
#include "integrity/dat_seal.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "ratio.h"

namespace {

constexpr int kEntries = 1'000'000;
constexpr double kMostTimes = 1.2;

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

    std::wstring path() const { return path_.wstring(); }

  private:
    const std::filesystem::path path_ = std::filesystem::temp_directory_path() / "velk_dat_entries_bench.dat";
};

std::size_t ReadAndConvert(const SealedFile& file) {
    const velk::FileHandle open = velk::OpenForReading(file.path());
    std::string bytes(static_cast<std::size_t>(velk::FileLength(open)), '\0');
    const int size = static_cast<int>(velk::ReadBytes(open, bytes.data(), bytes.size()));
    std::u16string text(bytes.size(), u'\0');
    text.resize(MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, reinterpret_cast<wchar_t*>(text.data()), size));
    return text.size();
}

std::uint32_t Load(const SealedFile& file, velk::DatEntries& entries) {
    entries.Parse(velk::GetFile(file.path()));
    const auto region = velk::SealedRegion(entries.text());
    return ~velk::crc32::Update(velk::crc32::kSeed, region.data(), region.size() * sizeof(char16_t));
}

bool AlikeKeysStayFast(const char* name, const std::u16string& before, const std::u16string& after, int base) {
    std::vector<std::u16string> keys;
    std::u16string text;
    for (int i = 0x10000; i < 0x14000; ++i) {
        std::u16string key = before;
        for (int left = i; left > 0; left /= base) {
            key += static_cast<char16_t>(u'A' + left % base);
            if (base == 2) key += u'a';  // what differs lies in every other unit
        }
        text += keys.emplace_back(key + after) + u"=1\r\n";
    }
    velk::DatEntries entries;
    const auto parse = [&] { entries.Parse(text); };
    return velk::bench::Compare(name, 0.25, parse, [&] {
        std::map<std::u16string_view, int> map;
        for (const auto& key : keys) map.emplace(key, 0);
        velk::bench::Keep(map.size());
    });
}

}  // namespace

int main() {
    const std::u16string longText(200, u'x');
    const bool fast[] = {AlikeKeysStayFast("keys of few characters", u"", u"", 0x4000),
                         AlikeKeysStayFast("keys of two letters", u"", u"", 2),
                         AlikeKeysStayFast("keys that begin alike", longText, u"", 10),
                         AlikeKeysStayFast("keys that end alike", u"", longText, 10)};
    const SealedFile file;
    velk::DatEntries entries;
    const bool met = velk::bench::Compare(
        "load 50 MB, 1e6 entries", 1 / kMostTimes, [&] { velk::bench::Keep(Load(file, entries)); },
        [&] { velk::bench::Keep(ReadAndConvert(file)); });
    constexpr std::size_t kWithSeal = kEntries + 1;
    if (entries.size() != kWithSeal) std::printf("%zu entries instead of %zu\n", entries.size(), kWithSeal);
    return met && std::ranges::count(fast, false) == 0 && entries.size() == kWithSeal ? 0 : 1;
}
