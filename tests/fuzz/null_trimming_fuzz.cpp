#include "fuzz/fuzz.h"
#include "platform/run_time_error.h"
#include "shell/file_dialog_text.h"

using namespace velk;
using namespace velk::test;

// One character after the other, as the rule is told: up to the first pair of NULs that something follows.
static std::u16string Trimmed(const std::u16string& buffer) {
    std::u16string text;
    for (std::size_t i = 0; i + 2 < buffer.size(); ++i) {
        if (buffer[i] == 0 && buffer[i + 1] == 0) return text;
        text += buffer[i] ? buffer[i] : u' ';
    }
    return {};
}

static void CheckPadding(const std::u16string& text, int size) try {
    const std::u16string padded = file_dialog::Padded(text, static_cast<std::int16_t>(size));
    Require(padded.size() == static_cast<std::size_t>(size) && padded.compare(0, text.size(), text) == 0);
    Require(padded.find_first_not_of(u'\0', text.size()) == padded.npos);
} catch (const RuntimeError& error) {
    Require(error.number() == 5 && static_cast<int>(text.size()) > size);
}

// Only the end of a longer name goes; the text before the first NUL and the length stay.
static void CheckRemains(const std::u16string& text) {
    const std::string answer(text.begin(), text.end());
    std::string before = answer, after = answer;
    file_dialog::DropRemains(after, before);
    Require(after == answer);
    const std::size_t end = answer.find('\0');
    if (end == answer.npos) return;
    before[end] = 'x';
    file_dialog::DropRemains(after, before + 'y');
    Require(after == answer);
    file_dialog::DropRemains(after, before);
    Require(after == answer.substr(0, end) + std::string(answer.size() - end, '\0'));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const int padding = bytes.Next() - 8;
    const std::u16string buffer = bytes.Rest();
    Require(file_dialog::TrimNulls(buffer) == Trimmed(buffer));
    CheckPadding(buffer, padding);
    CheckRemains(buffer);
    const std::u16string list = file_dialog::FilterList(buffer);
    Require(list.size() == buffer.size() + 2 && list.find(u'|') == list.npos && list.ends_with(std::u16string(2, 0)));
    return 0;
}
