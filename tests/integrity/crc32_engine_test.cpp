#include "integrity/crc32_engine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "support/guarded_buffer.h"
#include "support/misaligned_call.h"

namespace velk::crc32 {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kEverySizeTo = 1100;  // past four of the widest registers and all their tails

// The definition: bit by bit, from the polynomial.
std::uint32_t AddByte(std::uint32_t running, unsigned char byte) {
    running ^= byte;
    for (int bit = 0; bit < 8; ++bit) running = running >> 1 ^ ((running & 1) != 0 ? 0xEDB88320 : 0);
    return running;
}

std::uint32_t Define(std::uint32_t running, std::span<const unsigned char> bytes) {
    for (const unsigned char byte : bytes) running = AddByte(running, byte);
    return running;
}

// Element n is the register after n bytes.
std::vector<std::uint32_t> DefineEach(std::uint32_t running, std::span<const unsigned char> bytes) {
    std::vector<std::uint32_t> registers = {running};
    for (const unsigned char byte : bytes) registers.push_back(AddByte(registers.back(), byte));
    return registers;
}

void Randomise(std::span<unsigned char> bytes, std::mt19937& random) {
    for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
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
    std::uint32_t Run(std::uint32_t running, std::span<const unsigned char> bytes) const {
        return GetParam().function(running, bytes.data(), bytes.size());
    }
    std::mt19937 random_{20240611};
};

INSTANTIATE_TEST_SUITE_P(Each, Crc32Test, testing::ValuesIn(Subjects()),
                         [](const auto& subject) { return subject.param.name; });

TEST_P(Crc32Test, GivesTheCheckValue) {
    const std::string digits = "123456789";
    EXPECT_EQ(~GetParam().function(kSeed, digits.data(), digits.size()), 0xCBF43926U);
}

TEST_P(Crc32Test, KeepsTheRegisterForNoBytes) { EXPECT_EQ(GetParam().function(0x12345678, nullptr, 0), 0x12345678U); }

TEST_P(Crc32Test, AgreesWithTheDefinitionAtEverySizeAndAlignment) {
    alignas(64) static unsigned char buffer[64 + kEverySizeTo + 64];
    Randomise(buffer, random_);
    for (std::size_t offset = 0; offset < 64; ++offset) {
        const std::span<const unsigned char> bytes(buffer + offset, kEverySizeTo);
        const auto running = static_cast<std::uint32_t>(random_());
        const auto expected = DefineEach(running, bytes);
        for (std::size_t size = 0; size <= kEverySizeTo; ++size) {
            ASSERT_EQ(Run(running, bytes.first(size)), expected[size]) << "size " << size << " offset " << offset;
        }
    }
}

TEST_P(Crc32Test, ContinuesFromAnySplitPoint) {
    for (int round = 0; round < 300; ++round) {
        Bytes bytes(random_() % 40000);
        Randomise(bytes, random_);
        const auto running = static_cast<std::uint32_t>(random_());
        const std::size_t split = random_() % (bytes.size() + 1);
        const auto all = std::span<const unsigned char>(bytes);
        ASSERT_EQ(Run(Run(running, all.first(split)), all.subspan(split)), Define(running, all))
            << "size " << bytes.size() << " split " << split;
    }
}

TEST_P(Crc32Test, StaysBetweenGuardPages) {
    const test::GuardedBuffer buffer(kEverySizeTo);
    Randomise(buffer.All(), random_);
    for (std::size_t size = 0; size <= kEverySizeTo; ++size) {
        ASSERT_EQ(Run(kSeed, buffer.First(size)), Define(kSeed, buffer.First(size))) << "first " << size;
        ASSERT_EQ(Run(kSeed, buffer.Last(size)), Define(kSeed, buffer.Last(size))) << "last " << size;
    }
}

#if defined(__i386__)
[[gnu::naked]] std::uint32_t MisalignmentAtCall() {
    asm("leal 4(%esp), %eax\n\t"  // above the return address
        "negl %eax\n\t"
        "andl $15, %eax\n\t"
        "ret");
}
#endif

TEST_P(Crc32Test, RunsOnAMisalignedStack) {
#if defined(__i386__)
    Bytes bytes(2 * kEverySizeTo);
    Randomise(bytes, random_);
    const auto expected = DefineEach(kSeed, bytes);
    for (const std::uint32_t shift : {0, 4, 8, 12}) {
        ASSERT_EQ(test::CallMisaligned(shift, MisalignmentAtCall), shift);
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            ASSERT_EQ(test::CallMisaligned(shift, GetParam().function, kSeed, bytes.data(), size), expected[size])
                << "size " << size << " shift " << shift;
        }
    }
#else
    GTEST_SKIP() << "the 64-bit calling convention keeps the stack aligned";
#endif
}

std::string_view BestSupported() {
    for (const Variant& variant : Variants()) {
        if (variant.supported) return variant.name;
    }
    return "none";
}

TEST(Crc32SelectionTest, OffersEveryVariantBestFirst) {
    std::vector<std::string_view> names;
    for (const Variant& variant : Variants()) names.push_back(variant.name);
    EXPECT_EQ(names, (std::vector<std::string_view>{"vpclmul512", "vpclmul256", "pclmul", "portable"}));
    EXPECT_TRUE(Variants().back().supported);
}

TEST(Crc32SelectionTest, TakesASupportedNameAndElseTheBest) {
    for (const Variant& variant : Variants()) {
        EXPECT_EQ(Select(variant.name).name, variant.supported ? variant.name : BestSupported());
    }
    for (const std::string_view unknown : {"", "PORTABLE", "portable ", "vpclmul", "sse2"}) {
        EXPECT_EQ(Select(unknown).name, BestSupported()) << unknown;
    }
}

TEST(Crc32SelectionTest, ObeysTheEnvironmentVariable) {
    const char* wanted = std::getenv("VELKSPRT_CRC32");
    for (const Variant& variant : Variants()) {
        if (wanted != nullptr && variant.name == wanted && variant.supported) {
            EXPECT_EQ(VariantName(), wanted);
            return;
        }
    }
    EXPECT_EQ(VariantName(), BestSupported());
}

}  // namespace
}  // namespace velk::crc32
