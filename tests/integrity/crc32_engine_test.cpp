#include "integrity/crc32_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

namespace velk::crc32 {
namespace {

constexpr std::size_t kEverySizeTo = 1100;  // past four of the widest registers and all their tails

// Between two places that must not be touched: a read one byte outside ends the process.
std::span<unsigned char> GuardedBytes() {
    constexpr std::size_t kPage = 4096;
#ifdef _WIN32
    static auto* const pages =
        static_cast<unsigned char*>(VirtualAlloc(nullptr, 3 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    return {static_cast<unsigned char*>(VirtualAlloc(pages + kPage, kPage, MEM_COMMIT, PAGE_READWRITE)), kPage};
#else  // by the address sanitizer
    static const auto page = std::make_unique<unsigned char[]>(kPage);
    return {page.get(), kPage};
#endif
}

// The definition, bit by bit from the polynomial: element n is the register after n bytes.
std::vector<std::uint32_t> DefineEach(std::uint32_t running, std::span<const unsigned char> bytes) {
    std::vector<std::uint32_t> registers = {running};
    for (const unsigned char byte : bytes) {
        running ^= byte;
        for (int bit = 0; bit < 8; ++bit) running = running >> 1 ^ ((running & 1) != 0 ? 0xEDB88320 : 0);
        registers.push_back(running);
    }
    return registers;
}

TEST(Crc32Test, EachVariantAgreesWithTheDefinitionAtEverySizeAndAlignmentAndStaysBetweenGuardPages) {
    std::vector<Variant> tried(Variants().begin(), Variants().end());
    std::erase_if(tried, [](const Variant& variant) { return !variant.supported; });
    tried.push_back({"Update", Update, true});
    const std::span<unsigned char> bytes = GuardedBytes();
    std::ranges::generate(bytes, std::mt19937(20240611));
    const auto expect = [&](std::uint32_t expected, std::uint32_t running, std::span<const unsigned char> part) {
        for (const auto& [name, function, supported] : tried) {
            EXPECT_EQ(expected, function(running, part.data(), part.size())) << name << " " << part.size();
        }
    };
    expect(0x12345678, 0x12345678, {});
    for (std::size_t offset = 0; offset < 64; ++offset) {
        const std::uint32_t running = 0x9E3779B9U * static_cast<std::uint32_t>(offset);
        const auto expected = DefineEach(running, bytes.subspan(offset, kEverySizeTo));
        for (std::size_t size = 0; size <= kEverySizeTo && !HasFailure(); ++size) {
            expect(expected[size], running, bytes.subspan(offset, size));
        }
    }
    for (std::size_t size = 0; size <= kEverySizeTo && !HasFailure(); ++size) {
        expect(DefineEach(kSeed, bytes.last(size)).back(), kSeed, bytes.last(size));
    }
}

TEST(Crc32Test, TakesASupportedNameAndElseTheBest) {
    const std::string_view best = std::ranges::find_if(Variants(), &Variant::supported)->name;
    std::vector<std::string_view> names;
    for (const Variant& variant : Variants()) {
        names.push_back(variant.name);
        EXPECT_EQ(Select(variant.name).name, variant.supported ? variant.name : best);
    }
    EXPECT_EQ(names, (std::vector<std::string_view>{"vpclmul512", "vpclmul256", "pclmul", "portable"}));
    EXPECT_TRUE(Variants().back().supported);  // so that there is always one
    for (const std::string_view unknown : {"", "PORTABLE", "portable ", "vpclmul"}) {
        EXPECT_EQ(Select(unknown).name, best) << unknown;
    }
    const char* const wanted = std::getenv("VELKSPRT_CRC32");
    EXPECT_EQ(VariantName(), Select(wanted ? wanted : "").name);
}

}  // namespace
}  // namespace velk::crc32
