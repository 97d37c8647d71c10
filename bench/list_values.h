// Values that benches pass, and what the containers among them are filled with and searched for.
#pragma once

#include <cwchar>
#include <iterator>
#include <vector>

#include "platform/text.h"
#include "support/client.h"

namespace velk::bench {

constexpr LONG kMillion = 1'000'000;

inline ComPtr<_CLinkedList> NewList() { return test::CreateObject<_CLinkedList>(__uuidof(::CLinkedList)); }

// A value as clients make it.
inline VARIANT ValueOf(VARTYPE type, auto value) {
    VARIANT made{};
    made.vt = type;
    *reinterpret_cast<decltype(value)*>(&made.byref) = value;
    return made;
}
inline VARIANT LongOf(LONG number) { return ValueOf(VT_I4, number); }
inline VARIANT StringOf(BSTR text) { return ValueOf(VT_BSTR, text); }

inline LONG Find(_CLinkedList* list, VARIANT value) {
    LONG start = -1, index = 0;
    list->Find(&value, nullptr, &start, nullptr, &index);
    return index;
}

// Twenty characters, the last ones different in each.
inline std::vector<Bstr> Texts(LONG count) {
    std::vector<Bstr> texts;
    wchar_t text[32];
    for (LONG i = 0; i < count; ++i) {
        std::swprintf(text, std::size(text), L"Item number %08ld", i);
        texts.emplace_back(text);
    }
    return texts;
}

}  // namespace velk::bench
