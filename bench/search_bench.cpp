// Searching a list through the DLL, as a client calls it, against comparing each value by the platform's means.
#include <cstdio>
#include <initializer_list>
#include <vector>

#include "list_values.h"
#include "platform/text.h"
#include "ratio.h"
#include "support/client.h"

namespace {

using namespace velk;
using namespace bench;

LONG FindByPlatform(const std::vector<VARIANT>& values, VARIANT wanted) {
    LONG index = 0;
    for (const VARIANT& value : values) {
        ++index;
        if (VarCmp(const_cast<VARIANT*>(&value), &wanted, LOCALE_USER_DEFAULT, 0) == VARCMP_EQ) return index;
    }
    return 0;
}

bool MeasureFinding(const char* name, std::vector<VARIANT> values, VARIANT wanted, double target) {
    const auto list = NewList();
    LONG found = 0, expected = 0;
    for (VARIANT& value : values) list->Add(&value, nullptr, nullptr, &found);
    const auto times =
        MedianTimes<9>([&] { found = Find(list.get(), wanted); }, [&] { expected = FindByPlatform(values, wanted); });
    if (found != expected) std::puts("The results differ.");
    return Report(name, times[0], times[1], target) && found == expected;
}

// A number as a value of another type, which the numbers here all fit.
VARIANT Numbered(LONG number, VARTYPE type) {
    VARIANT from = LongOf(number), made;
    VariantInit(&made);
    VariantChangeType(&made, &from, 0, type);
    return made;
}

std::vector<VARIANT> Numbers(LONG count, std::initializer_list<VARTYPE> types) {
    std::vector<VARIANT> made;
    for (LONG i = 0; i < count; ++i) made.push_back(Numbered(i, types.begin()[static_cast<size_t>(i) % types.size()]));
    return made;
}

bool MeasureFinding() {
    const std::vector<Bstr> texts = Texts(kMillion / 4);
    std::vector<VARIANT> strings;
    for (const Bstr& text : texts) strings.push_back(StringOf(text.get()));
    bool met = MeasureFinding("Find last string, VarCmp", strings, strings.back(), 40);
    met &= MeasureFinding("Find last of 1M, VarCmp", Numbers(kMillion, {VT_I4}), LongOf(kMillion - 1), 20);

    const LONG last = 29'999;
    const struct {
        const char* name;
        std::initializer_list<VARTYPE> types;
        VARTYPE wanted;
    } kinds[] = {{"Find, Doubles", {VT_R8}, VT_R8},
                 {"Find, Integers", {VT_I2}, VT_I2},
                 {"Find, Dates", {VT_DATE}, VT_DATE},
                 {"Find, Currency", {VT_CY}, VT_CY},
                 {"Find, a Long in Doubles", {VT_R8}, VT_I4},
                 {"Find, a Double in Longs", {VT_I4}, VT_R8},
                 {"Find, a Long in mixed", {VT_R8, VT_BOOL, VT_EMPTY, VT_DATE, VT_I2, VT_I4}, VT_I4}};
    for (const auto& kind : kinds) {
        met &= MeasureFinding(kind.name, Numbers(last + 1, kind.types), Numbered(last, kind.wanted), 12);
    }
    return met;
}

// A number's digits are made for each item, as the platform makes them too.
bool MeasureFindingText() {
    std::vector<VARIANT> longs = Numbers(30'000, {VT_I4});
    const auto list = NewList();
    FindConditionConstants condition = fccInStr;
    LONG found = 0, start = -1, expected = 0;
    for (VARIANT& value : longs) list->Add(&value, nullptr, nullptr, &found);
    const Bstr text(L"29999");
    VARIANT wanted = StringOf(text.get());
    const auto find = [&] { list->Find(&wanted, &condition, &start, nullptr, &found); };
    const auto findByPlatform = [&] {
        expected = 0;
        for (const VARIANT& value : longs) {
            Bstr digits;
            ++expected;
            VarBstrFromI4(value.lVal, LOCALE_USER_DEFAULT, 0, digits.Receive());
            if (View(digits.get()).find(View(text.get())) != std::wstring_view::npos) break;
        }
    };
    const bool met = Compare("InStr in Longs, platform", 2, find, findByPlatform);
    if (found != expected) std::puts("The results differ.");
    return met && found == expected;
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const bool met = MeasureFinding();
    return MeasureFindingText() && met ? 0 : 1;
}
