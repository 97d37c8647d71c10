#include "fuzz/fuzz.h"
#include "integrity/dat_entries.h"
#include "integrity/dat_seal.h"
#include "integrity/literal_reading.h"
#include "platform/run_time_error.h"

using namespace velk;

static int ErrorOf(auto&& member) try {
    member();
    return 0;
} catch (const RuntimeError& thrown) {
    return thrown.number();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::u16string text = test::Bytes(data, size).Rest();
    const std::size_t begin = text.find(u"[BEGIN]");
    std::u16string_view sealed;
    test::Require(ErrorOf([&] { sealed = SealedRegion(text); }) == (begin == text.npos ? 5 : 0));
    test::Require(sealed.empty() || sealed.data() == text.data() + begin);
    const test::LiteralReading expected(text);
    DatEntries entries;
    const int error = ErrorOf([&] { entries.Parse(text); });
    test::Require(error == expected.error && entries.size() == expected.entries.size());
    for (const auto& [key, value] : expected.entries) test::Require(entries.Find(key) == value);
    return 0;
}
