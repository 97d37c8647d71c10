#include "containers/padded_buffer.h"
#include "containers/text_buffer.h"
#include "fuzz/fuzz.h"

using namespace velk;
using namespace velk::test;

// Every piece is cut from this text, so that pieces that are mixed up do not look alike. The long ones are about as
// long as the least growth.
static const std::u16string source = [] {
    std::u16string text;
    for (char16_t unit = 0; unit < 16000; ++unit) text += unit;
    return text;
}();

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    TextBuffer buffer;
    PaddedBuffer padded;
    for (int step = 0; step < 8 && !bytes.empty(); ++step) {
        const auto length = static_cast<std::size_t>(bytes.Next()), start = static_cast<std::size_t>(bytes.Next());
        const auto piece = std::u16string_view(source).substr(
            start, length < 253 || buffer.length() > 15000 ? length : length + 14746);
        if (start % 8 == 0) {
            buffer.Assign(piece);
            padded.Assign(piece);
        } else {
            buffer.Append(piece);
            padded.Append(piece);
        }
        Require(buffer.length() == padded.length() && buffer.capacity() == padded.capacity());
    }
    std::u16string text(buffer.length(), u' ');
    buffer.CopyTo(text.data());
    Require(text == padded.Text());
    return 0;
}
