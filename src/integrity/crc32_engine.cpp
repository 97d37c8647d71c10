#include "integrity/crc32_engine.h"

#include <algorithm>
#include <cstdlib>

#include "integrity/crc32_variants.h"

namespace velk::crc32 {
namespace {

// __builtin_cpu_supports answers for the operating system too: it checks that the wide registers are saved.
bool HasPclmul() noexcept { return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1"); }

bool HasVpclmul256() noexcept {
    return HasPclmul() && __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("avx2");
}

bool HasVpclmul512() noexcept {
    return HasVpclmul256() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl");
}

std::string_view WantedName() noexcept {
    const char* name = std::getenv("VELKSPRT_CRC32");
    return name != nullptr ? name : "";
}

const Variant& Active() noexcept {
    static const Variant& active = Select(WantedName());
    return active;
}

}  // namespace

std::span<const Variant> Variants() noexcept {
    static const Variant variants[] = {
        {"vpclmul512", UpdateVpclmul512, HasVpclmul512()},
        {"vpclmul256", UpdateVpclmul256, HasVpclmul256()},
        {"pclmul", UpdatePclmul, HasPclmul()},
        {"portable", UpdatePortable, true},
    };
    return variants;
}

const Variant& Select(std::string_view name) noexcept {
    const auto variants = Variants();
    const auto named = std::ranges::find_if(
        variants, [&](const Variant& variant) { return variant.supported && variant.name == name; });
    return named != variants.end() ? *named : *std::ranges::find_if(variants, &Variant::supported);
}

std::uint32_t Update(std::uint32_t running, const void* data, std::size_t size) noexcept {
    return Active().function(running, data, size);
}

std::string_view VariantName() noexcept { return Active().name; }

}  // namespace velk::crc32
