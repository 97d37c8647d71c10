#include "containers/text_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "containers/padded_buffer.h"

namespace velk::test {
namespace {

std::u16string TextOf(const TextBuffer& buffer) {
    std::u16string text(buffer.length(), u'\0');
    buffer.CopyTo(text.data());
    return text;
}

TEST(TextBuffer, HoldsWhatTheDescribedBufferHoldsAfterEveryStep) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        std::mt19937 random(seed);
        const auto pick = [&](std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random); };
        std::u16string source(50000, u'\0');
        for (char16_t& unit : source) unit = static_cast<char16_t>(random());
        TextBuffer buffer;
        PaddedBuffer padded;
        for (int step = 0; step < 400; ++step) {
            const std::size_t sizes[] = {0,    1, pick(40), pick(600), pick(20000), buffer.capacity() - buffer.length(),
                                         15000};
            const std::size_t size = std::min(sizes[pick(step % 50 ? 3 : 6)], source.size());
            const auto piece = std::u16string_view(source).substr(pick(source.size() - size), size);
            if (pick(99) == 0) {
                buffer.Assign(piece);
                padded.Assign(piece);
            } else {
                buffer.Append(piece);
                padded.Append(piece);
            }
            ASSERT_EQ(padded.capacity(), buffer.capacity()) << "seed " << seed << ", step " << step;
            ASSERT_EQ(padded.Text(), TextOf(buffer)) << "seed " << seed << ", step " << step;
        }
    }
}

}  // namespace
}  // namespace velk::test
