#include "containers/padded_buffer.h"
#include "containers/text_buffer.h"
#include "fuzz/fuzz.h"

using namespace velk;
using namespace velk::test;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    TextBuffer buffer;
    PaddedBuffer padded;
    for (char16_t mark = u'!'; !bytes.empty() && mark < u'+'; ++mark) {
        const int size = bytes.Next();
        const std::u16string piece(static_cast<std::size_t>(size < 240 ? size : size * 100), mark);
        if (bytes.Next() % 8 == 0) {
            buffer.Assign(piece);
            padded.Assign(piece);
        } else {
            buffer.Append(piece);
            padded.Append(piece);
        }
        Require(buffer.capacity() == padded.capacity());
    }
    std::u16string text(buffer.length(), u' ');
    buffer.CopyTo(text.data());
    Require(text == padded.Text());
    return 0;
}
