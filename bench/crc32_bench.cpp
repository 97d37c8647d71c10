// The CRC engine's variants against zlib, and against libdeflate where that is to be had: in the native build. Each
// call continues from the one before, as a caller's would: no side can run two calls at once.
#include <zlib.h>
#ifdef VELK_LIBDEFLATE
#include <libdeflate.h>
#endif

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "integrity/crc32_engine.h"
#include "ratio.h"

namespace {

using velk::crc32::Variant;
using Bytes = std::vector<unsigned char>;

struct Size {
    const char* name;
    std::size_t bytes;
    double zlib;        // target of the widest variant
    double libdeflate;  // target of the best variant that this processor has, as libdeflate takes its own best
};

constexpr Size kSizes[] = {
    {"16 B", 16, 4, 0.9},
    {"64 B", 64, 4, 1},
    {"1 KiB", 1024, 8, 0.95},
    {"32 KiB", 32 * 1024, 10, 0.85},
    {"1 MiB", 1024 * 1024, 10, 0.85},
};

// A vector variant owes the share of the target that its step has of the widest variant's 64 bytes; the portable one
// is as fast as zlib.
double ZlibTarget(const Size& size, std::string_view variant) {
    if (variant == "portable") return 1;
    const double step = variant == "vpclmul512" ? 64 : variant == "vpclmul256" ? 32 : 16;
    return size.zlib * step / 64;
}

template <class Peer>
bool Measure(const Variant& variant, const Bytes& bytes, const std::string& name, double target, Peer&& peer) {
    std::uint32_t ours = velk::crc32::kSeed;
    const bool met = velk::bench::Compare(
        name.c_str(), target, [&] { ours = variant.function(ours, bytes.data(), bytes.size()); }, peer);
    velk::bench::Keep(ours);
    return met;
}

bool MeasureAll(const Variant& variant, const Size& size) {
    Bytes bytes(size.bytes);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 31);
    const std::string name = size.name + std::string(", ");
    uLong zlib = 0;
    bool met = Measure(variant, bytes, name + "zlib", ZlibTarget(size, variant.name),
                       [&] { zlib = ::crc32(zlib, bytes.data(), static_cast<uInt>(bytes.size())); });
    velk::bench::Keep(zlib);
#ifdef VELK_LIBDEFLATE
    if (variant.name == velk::crc32::VariantName()) {
        std::uint32_t libdeflate = 0;
        met &= Measure(variant, bytes, name + "libdeflate", size.libdeflate,
                       [&] { libdeflate = libdeflate_crc32(libdeflate, bytes.data(), bytes.size()); });
        velk::bench::Keep(libdeflate);
    }
#endif
    return met;
}

}  // namespace

int main() {
    bool met = true;
    for (const Variant& variant : velk::crc32::Variants()) {
        if (!variant.supported) continue;
        std::printf("variant %.*s\n", static_cast<int>(variant.name.size()), variant.name.data());
        for (const Size& size : kSizes) met &= MeasureAll(variant, size);
    }
    return met ? 0 : 1;
}
