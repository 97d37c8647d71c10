// The CRC engine against zlib. Each call continues from the one before, as a caller's would: neither side can run two
// calls at once.
#include <zlib.h>

#include <cstdio>
#include <string_view>
#include <vector>

#include "integrity/crc32_engine.h"
#include "ratio.h"

namespace {

struct Case {
    const char* name;
    std::size_t size;
    double target;  // for the widest variant
};

constexpr Case kCases[] = {
    {"64 B", 64, 4},
    {"1 KiB", 1024, 8},
    {"32 KiB", 32 * 1024, 10},
    {"1 MiB", 1024 * 1024, 10},
};

// A variant owes the share of the target that its step has of the widest variant's 64 bytes; the portable one steps
// through words of four.
double Share(std::string_view variant) {
    const double step = variant == "vpclmul512" ? 64 : variant == "vpclmul256" ? 32 : variant == "pclmul" ? 16 : 4;
    return step / 64;
}

bool Measure(const Case& wanted, double share) {
    std::vector<unsigned char> bytes(wanted.size);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 31);
    std::uint32_t ours = velk::crc32::kSeed;
    uLong peer = 0;
    const bool met = velk::bench::Compare(
        wanted.name, wanted.target * share, [&] { ours = velk::crc32::Update(ours, bytes.data(), bytes.size()); },
        [&] { peer = ::crc32(peer, bytes.data(), static_cast<uInt>(bytes.size())); });
    velk::bench::Keep(ours);
    velk::bench::Keep(peer);
    return met;
}

}  // namespace

int main() {
    const auto variant = velk::crc32::VariantName();
    std::printf("variant %.*s\n", static_cast<int>(variant.size()), variant.data());
    bool met = true;
    for (const Case& wanted : kCases) met &= Measure(wanted, Share(variant));
    return met ? 0 : 1;
}
