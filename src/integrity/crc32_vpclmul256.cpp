// Compiled with -mvpclmulqdq -mpclmul -mavx2.
#include "integrity/crc32_folding.h"

namespace velk::crc32 {
namespace {

struct Vector256 {
    using Block = __m256i;
    static constexpr std::size_t kBytes = 32;

    static Block Load(const void* data) noexcept { return _mm256_loadu_si256(static_cast<const __m256i*>(data)); }
    static Block Repeat(const Factors& factors) noexcept {
        return _mm256_broadcastsi128_si256(Vector128::Repeat(factors));
    }
    static Block AddToFront(Block block, std::uint32_t running) noexcept {
        return _mm256_xor_si256(block, _mm256_zextsi128_si256(_mm_cvtsi32_si128(static_cast<int>(running))));
    }
    static Block Fold(Block block, Block factors, Block next) noexcept {
        const Block low = _mm256_clmulepi64_epi128(block, factors, 0x00);
        const Block high = _mm256_clmulepi64_epi128(block, factors, 0x11);
        return _mm256_xor_si256(_mm256_xor_si256(low, next), high);
    }
    static Block LoadLast(const Byte* end, std::size_t count) noexcept {
        return _mm256_and_si256(Load(end - kBytes), Load(MaskForLast(count, kBytes)));
    }
    static __m128i Join(Block block) noexcept {
        const Block moved = Fold(block, Load(ToEnd(2)), _mm256_setzero_si256());
        return _mm_xor_si128(_mm256_castsi256_si128(moved), _mm256_extracti128_si256(moved, 1));
    }
};

}  // namespace

std::uint32_t UpdateVpclmul256(std::uint32_t running, const void* data, std::size_t size) noexcept {
    const auto* bytes = static_cast<const Byte*>(data);
    return size < Vector256::kBytes ? Update128(running, bytes, size) : FoldLong<Vector256>(running, bytes, size);
}

}  // namespace velk::crc32
