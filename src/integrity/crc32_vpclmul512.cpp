// Compiled with -mvpclmulqdq -mpclmul -mavx512f -mavx512bw -mavx512vl.

#include "integrity/crc32_folding.h"

namespace velk::crc32 {
namespace {

struct Vector512 {
    using Block = __m512i;
    static constexpr std::size_t kBytes = 64;

    static Block Load(const void* data) noexcept { return _mm512_loadu_si512(data); }
    static Block Repeat(const Factors& factors) noexcept { return _mm512_broadcast_i32x4(Vector128::Repeat(factors)); }
    static Block AddToFront(Block block, std::uint32_t running) noexcept {
        return _mm512_xor_si512(block, _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(running))));
    }
    static Block Fold(Block block, Block factors, Block next) noexcept {
        const Block low = _mm512_clmulepi64_epi128(block, factors, 0x00);
        const Block high = _mm512_clmulepi64_epi128(block, factors, 0x11);
        return _mm512_ternarylogic_epi64(low, high, next, 0x96);  // the sum of the three
    }
    // What the mask leaves out cannot fault, only cost some 150 ns if it lies on a page that cannot be read. So this
    // one needs no whole register before `end`.
    static Block LoadLast(const Byte* end, std::size_t count) noexcept {
        const auto start = reinterpret_cast<std::uintptr_t>(end) - kBytes;  // may lie before the buffer
        const __mmask64 last = _mm512_movepi8_mask(Load(MaskForLast(count, kBytes)));
        return _mm512_maskz_loadu_epi8(last, reinterpret_cast<const void*>(start));
    }
    static __m128i Join(Block block) noexcept {
        const Block moved = Fold(block, Load(ToEnd(4)), _mm512_setzero_si512());
        const __m256i half = _mm256_xor_si256(_mm512_castsi512_si256(moved), _mm512_extracti64x4_epi64(moved, 1));
        return _mm_xor_si128(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1));
    }
};

}  // namespace

std::uint32_t UpdateVpclmul512(std::uint32_t running, const void* data, std::size_t size) noexcept {
    const auto* bytes = static_cast<const Byte*>(data);
    if (size == 0) return running;
    if (size > Vector512::kBytes) return FoldLong<Vector512>(running, bytes, size);
    return FoldShort<Vector512>(running, Vector512::LoadLast(bytes + size, size), size);
}

}  // namespace velk::crc32
