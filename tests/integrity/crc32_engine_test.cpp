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

struct Subject {
    std::string name;
    UpdateFunction function;
};

std::vector<Subject> Subjects() {
    std::vector<Subject> subjects = {{"Update", Update}};
    for (const Variant& variant : Variants()) {
        if (variant.supported) subjects.push_back({std::string(variant.name), variant.function});
    }
    return subjects;
}

class Crc32Test : public testing::TestWithParam<Subject> {
  protected:
    Crc32Test() { std::ranges::generate(bytes_, std::mt19937(20240611)); }
    std::uint32_t Run(std::uint32_t running, std::span<const unsigned char> bytes) const {
        return GetParam().function(running, bytes.data(), bytes.size());
    }

    const std::span<unsigned char> bytes_ = GuardedBytes();
};

INSTANTIATE_TEST_SUITE_P(Each, Crc32Test, testing::ValuesIn(Subjects()),
                         [](const auto& subject) { return subject.param.name; });

TEST_P(Crc32Test, AgreesWithTheDefinitionAtEverySizeAndAlignmentAndStaysBetweenGuardPages) {
    EXPECT_EQ(Run(0x12345678, {}), 0x12345678U);
    for (std::size_t offset = 0; offset < 64; ++offset) {
        const std::uint32_t running = 0x9E3779B9U * static_cast<std::uint32_t>(offset);
        const auto expected = DefineEach(running, bytes_.subspan(offset, kEverySizeTo));
        for (std::size_t size = 0; size <= kEverySizeTo; ++size) {
            ASSERT_EQ(Run(running, bytes_.subspan(offset, size)), expected[size]) << size << " from " << offset;
        }
    }
    for (std::size_t size = 0; size <= kEverySizeTo; ++size) {
        ASSERT_EQ(Run(kSeed, bytes_.last(size)), DefineEach(kSeed, bytes_.last(size)).back()) << size;
    }
}

TEST(Crc32SelectionTest, TakesASupportedNameAndElseTheBest) {
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
