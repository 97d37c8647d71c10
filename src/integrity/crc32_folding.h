// CRC-32 by carry-less multiplication, shared by the files for the three instruction sets.
//
// After V. Gopal, E. Ozturk, J. Guilford, G. Wolrich, W. Feghali, M. Dixon, D. Karakoyunlu, "Fast CRC Computation for
// Generic Polynomials Using PCLMULQDQ Instruction", Intel, December 2009.
//
// The register after a message M, read as a polynomial over GF(2), is M * x^32 mod P; the register before it is added
// to the first 32 bits of M. A 16-byte block is loaded as it stands in memory, so its bit i is the coefficient of
// x^(127 - i), and the high coefficients are in the low half: block = low * x^64 + high.
//
// Folding. Everything read so far is kept as one block that is equal to it modulo P. Moving that block on by n bytes
// multiplies it by x^(8n). The instruction multiplies 64-bit halves; its product of a and b, read as a block, is
// x * a * b (two 64-bit factors have only 127 bits of product). So
//     block * x^(8n) = low (*) (x^(8n + 63) mod P)  +  high (*) (x^(8n - 1) mod P)        modulo P,
// two multiplications whose sum fits a block again, whatever n is. The next block is then added. A wide register holds
// several blocks that move on together, and several registers hide the time a multiplication takes.
//
// Tails. n need not be a multiple of 16: the last 1..15 (31, 63) bytes are one more fold, by just so many bytes, with
// those bytes placed at the end of a block whose start is zero. Zeros in front of a message change nothing.
//
// Reduction. A fold by four bytes multiplies by x^32 and leaves 96 bits, in the upper three quarters of the block.
// Adding the right multiple q of P clears the 64 high coefficients, and the 32 that remain are the register. As those
// 64 stand lowest, q is their product with the inverse of P taken modulo 2^64: a division without a remainder.
#pragma once

#include <immintrin.h>

#include <cstring>

#include "integrity/crc32_variants.h"

namespace velk::crc32 {
// Unnamed in a header on purpose: each file that includes it compiles its own copy for its own instruction set, and the
// linker must never put one file's copy in place of another's. For the same reason nothing here calls inline functions
// of the standard library.
namespace {

using Byte = unsigned char;

struct alignas(16) Factors {
    std::uint64_t low, high;
};

// x^exponent mod P, reflected: a 64-bit factor whose lower half is zero.
consteval std::uint64_t PowerOfX(std::size_t exponent) {
    std::uint32_t power = 0x80000000;
    for (; exponent > 0; --exponent) power = TimesX(power);
    return std::uint64_t{power} << 32;
}

// What moves a block on by that many bytes.
consteval Factors FactorsFor(std::size_t bytes) { return {PowerOfX(8 * bytes + 63), PowerOfX(8 * bytes - 1)}; }

constexpr std::size_t kWidest = 64;

struct Moves {
    Factors by[kWidest + 1];  // by[0] is not used
};

consteval Moves MakeMoves() {
    Moves moves{};
    for (std::size_t bytes = 1; bytes <= kWidest; ++bytes) moves.by[bytes] = FactorsFor(bytes);
    return moves;
}

constexpr Moves kMove = MakeMoves();

// What moves each block of the widest register on to the register's end and by four bytes more, for the reduction. A
// narrower register uses the last of these.
constexpr Factors kToEnd[] = {FactorsFor(52), FactorsFor(36), FactorsFor(20), FactorsFor(4)};

inline const Factors* ToEnd(std::size_t blocks) noexcept { return kToEnd + 4 - blocks; }

// Zeros, then ones: a register's width of them, so placed that the last `count` bytes are ones, is a mask for those.
struct Mask {
    Byte bytes[2 * kWidest];
};

consteval Mask MakeMask() {
    Mask mask{};
    for (std::size_t i = kWidest; i < 2 * kWidest; ++i) mask.bytes[i] = 0xFF;
    return mask;
}

constexpr Mask kMask = MakeMask();

inline const Byte* MaskForLast(std::size_t count, std::size_t width) noexcept {
    return kMask.bytes + kWidest - width + count;
}

// The polynomial with the coefficient of x^32 lowest, and its inverse modulo 2^64.
constexpr std::uint64_t kFullPolynomial = std::uint64_t{kPolynomial} << 1 | 1;

consteval std::uint64_t InverseOfPolynomial() {
    std::uint64_t inverse = 0;
    std::uint64_t rest = 1;
    for (int bit = 0; bit < 64; ++bit) {
        if ((rest >> bit & 1) == 0) continue;
        inverse |= std::uint64_t{1} << bit;
        rest ^= kFullPolynomial << bit;
    }
    return inverse;
}

constexpr Factors kReduction = {InverseOfPolynomial(), kFullPolynomial};

// The operations on a register of 16 bytes. The files for wider ones define theirs with the same members.
struct Vector128 {
    using Block = __m128i;
    static constexpr std::size_t kBytes = 16;

    static Block Load(const void* data) noexcept { return _mm_loadu_si128(static_cast<const __m128i*>(data)); }
    static Block Repeat(const Factors& factors) noexcept { return Load(&factors); }
    static Block AddToFront(Block block, std::uint32_t running) noexcept {
        return _mm_xor_si128(block, _mm_cvtsi32_si128(static_cast<int>(running)));
    }
    // `block` moved on, plus `next`.
    static Block Fold(Block block, Block factors, Block next) noexcept {
        const Block low = _mm_clmulepi64_si128(block, factors, 0x00);
        const Block high = _mm_clmulepi64_si128(block, factors, 0x11);
        return _mm_xor_si128(_mm_xor_si128(low, next), high);
    }
    // The last `count` bytes before `end`, behind zeros. A whole register before `end` must be readable.
    static Block LoadLast(const Byte* end, std::size_t count) noexcept {
        return _mm_and_si128(Load(end - kBytes), Load(MaskForLast(count, kBytes)));
    }
    // All blocks of the register as one, moved on by four bytes.
    static __m128i Join(Block block) noexcept { return Fold(block, Repeat(*ToEnd(1)), _mm_setzero_si128()); }
};

inline __m128i LoadWord(const Byte* data) noexcept {
    int word;
    std::memcpy(&word, data, sizeof word);
    return _mm_cvtsi32_si128(word);
}

inline __m128i LoadTwoWords(const Byte* data) noexcept {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(data));
}

// 1 to 15 bytes behind zeros. Two loads that overlap cover them without a step outside; the bytes that both hold are
// shifted out of the first.
inline __m128i LoadShort(const Byte* data, std::size_t size) noexcept {
    if (size >= 8) {
        const __m128i excess = _mm_cvtsi32_si128(static_cast<int>(8 * (16 - size)));
        return _mm_unpacklo_epi64(_mm_sll_epi64(LoadTwoWords(data), excess), LoadTwoWords(data + size - 8));
    }
    if (size >= 4) {
        const __m128i excess = _mm_cvtsi32_si128(static_cast<int>(8 * (8 - size)));
        const __m128i words = _mm_unpacklo_epi32(_mm_sll_epi32(LoadWord(data), excess), LoadWord(data + size - 4));
        return _mm_slli_si128(words, 8);
    }
    const unsigned first = data[0], middle = data[size / 2], last = data[size - 1];
    const unsigned word = first << (8 * (4 - size)) | middle << (8 * (4 - size + size / 2)) | last << 24;
    return _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(word)), 12);
}

// Takes what Join gives.
inline std::uint32_t Reduce(__m128i block) noexcept {
    const __m128i reduction = Vector128::Repeat(kReduction);
    const __m128i rest = _mm_srli_si128(block, 4);
    const __m128i quotient = _mm_clmulepi64_si128(rest, reduction, 0x00);
    const __m128i cleared = _mm_xor_si128(rest, _mm_clmulepi64_si128(quotient, reduction, 0x10));
    return static_cast<std::uint32_t>(_mm_extract_epi32(cleared, 2));
}

// A message that need not hold the register: `message` stands behind zeros and the register is moved on by itself.
template <class Vector>
std::uint32_t FoldShort(std::uint32_t running, typename Vector::Block message, std::size_t size) noexcept {
    const __m128i before = _mm_slli_si128(_mm_cvtsi32_si128(static_cast<int>(running)), 12);
    return Reduce(Vector128::Fold(before, Vector128::Repeat(kMove.by[size]), Vector::Join(message)));
}

// Four registers at a time. `first` is what stands before `data`, and at least three registers follow it; less than
// four are left to read.
template <class Vector>
typename Vector::Block FoldFours(typename Vector::Block first, const Byte*& data, std::size_t& size) noexcept {
    constexpr std::size_t kWidth = Vector::kBytes;
    static constexpr Factors kByFour = FactorsFor(4 * Vector::kBytes), kByTwo = FactorsFor(2 * Vector::kBytes);
    auto a = first, b = Vector::Load(data), c = Vector::Load(data + kWidth), d = Vector::Load(data + 2 * kWidth);
    data += 3 * kWidth, size -= 3 * kWidth;
    const auto byFour = Vector::Repeat(kByFour);
    for (; size >= 4 * kWidth; data += 4 * kWidth, size -= 4 * kWidth) {
        a = Vector::Fold(a, byFour, Vector::Load(data));
        b = Vector::Fold(b, byFour, Vector::Load(data + kWidth));
        c = Vector::Fold(c, byFour, Vector::Load(data + 2 * kWidth));
        d = Vector::Fold(d, byFour, Vector::Load(data + 3 * kWidth));
    }
    const auto byTwo = Vector::Repeat(kByTwo), byOne = Vector::Repeat(kMove.by[kWidth]);
    return Vector::Fold(Vector::Fold(a, byTwo, c), byOne, Vector::Fold(b, byTwo, d));
}

// At least one whole register.
template <class Vector>
std::uint32_t FoldLong(std::uint32_t running, const Byte* data, std::size_t size) noexcept {
    constexpr std::size_t kWidth = Vector::kBytes;
    auto block = Vector::AddToFront(Vector::Load(data), running);
    data += kWidth, size -= kWidth;
    if (size >= 3 * kWidth) block = FoldFours<Vector>(block, data, size);
    const auto byOne = Vector::Repeat(kMove.by[kWidth]);
    for (; size >= kWidth; data += kWidth, size -= kWidth) block = Vector::Fold(block, byOne, Vector::Load(data));
    if (size != 0) {
        block = Vector::Fold(block, Vector::Repeat(kMove.by[size]), Vector::LoadLast(data + size, size));
    }
    return Reduce(Vector::Join(block));
}

inline std::uint32_t Update128(std::uint32_t running, const Byte* data, std::size_t size) noexcept {
    if (size >= Vector128::kBytes) return FoldLong<Vector128>(running, data, size);
    return size != 0 ? FoldShort<Vector128>(running, LoadShort(data, size), size) : running;
}

}  // namespace
}  // namespace velk::crc32
