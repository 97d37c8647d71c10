#include "fuzz/fuzz.h"
#include "winhelpers/hooks/column_fit.h"

using namespace velk;
using namespace velk::test;

constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();

static bool Fits(std::int64_t value) { return value >= kLeast && value <= kMost; }

// The same in arithmetic of twice the width: what does not fit is refused, and refused numbers change nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const std::int32_t width = bytes.Number(), lastWidth = bytes.Number();
    const double ratio = StretchRatio(width, lastWidth);
    Require(lastWidth > 0 ? ratio == static_cast<double>(width) / lastWidth : ratio == 1);
    ColumnFit fit(width, ratio);
    std::int64_t taken = 0;
    for (int columns = 0; columns < 8 && !bytes.empty(); ++columns) {
        const std::int32_t column = bytes.Number();
        const double exact = column * ratio;
        try {
            const std::int64_t scaled = fit.Scale(column);
            const double away = static_cast<double>(scaled) - exact;
            Require(away >= -0.5 && away <= 0.5 && (away != 0.5 || scaled % 2 == 0) &&
                    (away != -0.5 || scaled % 2 == 0));
            Require(lastWidth > 0 || scaled == column);
            taken += scaled;
            Require(Fits(taken));
        } catch (const RuntimeError& error) {
            const bool tooWide = !(exact > static_cast<double>(kLeast) && exact < static_cast<double>(kMost));
            Require(error.number() == 6 &&
                    (tooWide || !Fits(taken + static_cast<std::int64_t>(std::nearbyint(exact)))));
        }
        try {
            Require(fit.Rest() == width - taken);
        } catch (const RuntimeError&) {
            Require(!Fits(width - taken));
        }
    }
    return 0;
}
