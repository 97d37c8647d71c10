// The containers through the DLL, as a client calls them, against the standard library's and the platform's own means.
// With an argument it also writes the chart of cost against size to the file of that name.
#include <cstdio>
#include <list>
#include <stack>
#include <string>
#include <vector>

#include "chart.h"
#include "containers/node_list_model.h"
#include "containers/variant_search.h"
#include "list_values.h"
#include "platform/text.h"
#include "ratio.h"
#include "support/client.h"

namespace {

using namespace velk;
using namespace bench;

ComPtr<_CStack> NewStack() { return test::CreateObject<_CStack>(__uuidof(::CStack)); }
ComPtr<_CConCat> NewBuilder() { return test::CreateObject<_CConCat>(__uuidof(::CConCat)); }

void Fill(_CLinkedList* list, LONG count) {
    LONG index = 0;
    for (LONG i = 0; i < count; ++i) {
        VARIANT value = LongOf(i);
        list->Add(&value, nullptr, nullptr, &index);
    }
}

// Strings that stay with the vector's variants until it goes.
struct CopiedStrings {
    std::vector<VARIANT> values;
    ~CopiedStrings() {
        for (VARIANT& value : values) VariantClear(&value);
    }
};

bool MeasureAdding() {
    const auto ours = [] {
        const auto list = NewList();
        return TimeOf([&] { Fill(list.get(), kMillion); });
    };
    const auto filled = [](auto container) {
        return TimeOf([&] {
            for (LONG i = 0; i < kMillion; ++i) container.push_back(LongOf(i));
        });
    };
    const auto times = bench::MedianTimes<31>(
        ours, [&] { return filled(std::vector<VARIANT>()); }, [&] { return filled(std::list<VARIANT>()); });
    const bool againstVector = bench::Report("1M Longs, std::vector", times[0], times[1], 1.0);
    const bool againstList = bench::Report("1M Longs, std::list", times[0], times[2], 1 / 0.4);
    return againstVector && againstList;
}

bool MeasureAddingStrings() {
    const Bstr text(L"Item number 00000000");
    const auto ours = [&] {
        const auto list = NewList();
        LONG index = 0;
        return TimeOf([&] {
            for (LONG i = 0; i < kMillion; ++i) {
                VARIANT value = StringOf(text.get());
                list->Add(&value, nullptr, nullptr, &index);
            }
        });
    };
    const auto peer = [&] {
        CopiedStrings copied;
        return TimeOf([&] {
            for (LONG i = 0; i < kMillion; ++i) {
                VARIANT value = StringOf(text.get()), copy;
                VariantInit(&copy);
                VariantCopy(&copy, &value);
                copied.values.push_back(copy);
            }
        });
    };
    const auto times = bench::MedianTimes<15>(ours, peer);
    return bench::Report("1M strings, std::vector", times[0], times[1], 1.0);
}

// What the list's own walk costs, and what a client's costs that gets a copy of each value.
bool MeasureWalking() {
    const std::vector<VARIANT> values = [] {
        std::vector<VARIANT> made;
        for (LONG i = 0; i < kMillion; ++i) made.push_back(LongOf(i));
        return made;
    }();
    VariantList storage;
    storage.Create();
    for (LONG i = 0; i < kMillion; ++i) {
        Variant value;
        static_cast<VARIANT&>(value) = LongOf(i);
        storage.Add(std::move(value), 0, 0);
    }
    const std::list<VARIANT> peer(values.begin(), values.end());
    LONG sum = 0;
    const auto walk = [&] {
        storage.MoveFirst();
        storage.Find(storage.cursor(), false, [&](const Variant& value) {
            sum += value.lVal;
            return false;
        });
    };
    const auto walkPeer = [&] {
        for (const VARIANT& value : peer) sum += value.lVal;
    };
    const bool met = bench::Compare("walk of 1M, std::list", 1 / 1.5, walk, walkPeer);

    const auto list = NewList();
    LONG size = kMillion;
    list->SetSize(&size, nullptr);
    Fill(list.get(), kMillion);
    const auto walkByCalls = [&] {
        VARIANT value;
        list->MoveFirst();
        for (LONG i = 0; i < kMillion; ++i) {
            list->get_Item(nullptr, &value);
            sum += value.lVal;
            list->MoveNext();
        }
    };
    const auto copyFromPeer = [&] {
        VARIANT copy = LongOf(0);
        for (const VARIANT& value : peer) {
            VariantCopy(&copy, const_cast<VARIANT*>(&value));
            sum += copy.lVal;
        }
    };
    const bool metByCalls = bench::Compare("walk by calls, copies", 1 / 1.5, walkByCalls, copyFromPeer);
    bench::Keep(sum);
    return met && metByCalls;
}

bool MeasurePushing() {
    const auto stack = NewStack();
    std::stack<VARIANT> peer;
    VARIANT value = LongOf(1), popped;
    VariantInit(&popped);
    return bench::Compare(
        "Push and Pop, std::stack", 0.9,
        [&] {
            stack->Push(&value);
            stack->Pop(&popped);
        },
        [&] {
            VARIANT& kept = peer.emplace();
            VariantInit(&kept);
            VariantCopy(&kept, &value);
            VariantCopy(&popped, &kept);
            VariantClear(&kept);
            peer.pop();
        });
}

bool MeasureCharacters() {
    const Bstr character(L"x");
    BSTR piece = character.get();
    constexpr int kMany = 10'000;
    return bench::Compare(
        "Append of a character", 0.8,
        [&] {
            const auto builder = NewBuilder();
            for (int i = 0; i < kMany; ++i) builder->Append(&piece);
        },
        [&] {
            std::wstring text;
            for (int i = 0; i < kMany; ++i) {
                asm volatile("" : "+r"(piece));  // a caller does not know the piece
                text.append(piece, SysStringLen(piece));
            }
            bench::Keep(static_cast<LONG>(text.size()));
        });
}

void Build(LONG count, BSTR piece) {
    const auto builder = NewBuilder();
    Bstr text;
    for (LONG i = 0; i < count; ++i) builder->Append(&piece);
    builder->get_Text(text.Receive());
}

bool MeasureBuilding() {
    const Bstr piece(L"twenty characters...");
    const auto peer = [&] {
        std::wstring text;
        for (LONG i = 0; i < kMillion; ++i) text += View(piece.get());
        const Bstr result(text);
    };
    const auto times = bench::MedianTimes<15>([&] { Build(kMillion, piece.get()); }, peer);
    return bench::Report("1M appends, std::wstring", times[0], times[1], 1.0);
}

// Where the stack's memory begins a new block, against where it does not.
bool MeasureBlockEdge() {
    const auto pushAndPopFrom = [](LONG depth) {
        const auto stack = NewStack();
        for (LONG i = 0; i < depth; ++i) {
            VARIANT value = LongOf(i);
            stack->Push(&value);
        }
        return [stack] {
            VARIANT value = LongOf(1);
            stack->Push(&value);
            stack->Pop(&value);
        };
    };
    return bench::Compare("Push and Pop at an edge", 0.5, pushAndPopFrom(1024), pushAndPopFrom(1000));
}

// ---- Cost against size: each line is the cost of one item ----

double ListCost(LONG count) {
    const auto list = NewList();
    return TimeOf([&] { Fill(list.get(), count); });
}

double FindCost(LONG count) {
    const auto list = NewList();
    Fill(list.get(), count);
    return TimeOf([&] { Find(list.get(), LongOf(-1)); });
}

double StackCost(LONG count) {
    const auto stack = NewStack();
    return TimeOf([&] {
        for (LONG i = 0; i < count; ++i) {
            VARIANT value = LongOf(i);
            stack->Push(&value);
        }
        for (LONG i = 0; i < count; ++i) {
            VARIANT value;
            stack->Pop(&value);
        }
    });
}

double BuilderCost(LONG count) {
    static const Bstr piece(L"twenty characters...");
    return TimeOf([&] { Build(count, piece.get()); });
}

double LiteralCost(LONG count) {
    test::LiteralList list;
    return TimeOf([&] {
        for (LONG i = 0; i < count; ++i) list.Add(static_cast<int>(i), 0, 0);
    });
}

struct Growing {
    const char* name;
    double (*cost)(LONG count);
    LONG most;
    bool hasTarget;
};

constexpr Growing kGrowing[] = {
    {"list: Add", &ListCost, kMillion, true},
    {"list: Find, an item passed by", &FindCost, kMillion, true},
    {"stack: Push and Pop", &StackCost, kMillion, true},
    {"builder: Append of 20", &BuilderCost, kMillion, true},
    {"a list that does what is described step by step", &LiteralCost, 100'000, false},
};

double CostOfOne(const Growing& growing, LONG count) {
    const auto cost = [&] { return growing.cost(count); };
    return growing.hasTarget ? bench::MedianTimes<9>(cost)[0] / count : cost() / count;
}

bool MeasureGrowing() {
    bool met = true;
    for (const Growing& growing : kGrowing) {
        if (!growing.hasTarget) continue;
        met &= bench::Report(growing.name, CostOfOne(growing, kMillion), CostOfOne(growing, kMillion / 10), 0.5);
    }
    return met;
}

bool DrawChart(const char* path) {
    bench::Chart chart("What one item costs, by the number of items", {"items", 1e4, 1e6}, {"ns an item", 1, 1e3});
    for (const Growing& growing : kGrowing) {
        std::vector<bench::Chart::Point> points;
        for (const LONG size : {10'000, 20'000, 50'000, 100'000, 200'000, 500'000, 1'000'000}) {
            if (size <= growing.most) points.push_back({static_cast<double>(size), CostOfOne(growing, size)});
        }
        chart.Add(growing.name, std::move(points));
    }
    return chart.Write(path);
}

}  // namespace

int main(int count, char** arguments) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    bool met = MeasureAdding();
    met &= MeasureAddingStrings();
    met &= MeasureWalking();
    met &= MeasurePushing();
    met &= MeasureCharacters();
    met &= MeasureBuilding();
    met &= MeasureBlockEdge();
    met &= MeasureGrowing();
    if (count > 1 && !DrawChart(arguments[1])) {
        std::printf("%s cannot be written.\n", arguments[1]);
        return 1;
    }
    return met ? 0 : 1;
}
