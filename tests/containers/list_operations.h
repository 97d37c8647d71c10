// The steps that the list and its literal model take side by side, and values that call back.
#pragma once

#include <memory>
#include <type_traits>
#include <vector>

#include "platform/run_time_error.h"

namespace velk::test {

// What a member answers: its result, or -1000 - n for run-time error n.
int Answer(auto&& member) try {
    if constexpr (std::is_void_v<decltype(member())>) {
        return member(), 0;
    } else {
        return member();
    }
} catch (const RuntimeError& error) {
    return -1000 - error.number();
}

// A value that runs code when it goes.
using Farewell = std::shared_ptr<void>;
Farewell FarewellWith(auto onGone) {
    return {nullptr, [onGone](void*) { onGone(); }};
}

struct Operands {
    int value;
    int a, b;  // as a rule indices within the array
    bool flag;
};

constexpr int kOperations = 16;

int Operate(auto& list, int operation, const Operands& with) {
    const int value = with.value, a = with.a, b = with.b;  // not a structured binding: lambdas use them
    const bool flag = with.flag;
    const auto equal = [value](int item) { return item == value; };
    const auto less = [value](int item) { return item < value; };
    return Answer([&]() -> int {
        if (operation == 0) return list.Add(value, 0, 0);
        if (operation == 1) return list.Add(value, a, flag ? b : 0);
        if (operation == 2) return list.Add(value, 0, a);
        if (operation == 3) return list.Add(value, -1, 0);
        if (operation == 4) return list.Remove(a);
        if (operation == 5) return list.Remove(0);
        if (operation == 6) return list.Item(a) = value;
        if (operation == 7) return list.Move(a), 0;
        if (operation == 8) return list.MoveFirst(), 0;
        if (operation == 9) return list.MoveLast(), 0;
        if (operation == 10) return list.MoveNext(), 0;
        if (operation == 11) return list.MovePrevious(), 0;
        if (operation == 12) return list.Find(list.SearchStart(a, flag), flag, equal);
        if (operation == 13) return list.Find(list.SearchStart(a, flag), flag, less);
        if (operation == 14) return flag ? list.SetCursor(a) : list.SetSize(list.upper() - 20 + 4 * value, b), 0;
        return list.Create(), 0;
    });
}

// All that a client can see, without what only some steps ask for.
std::vector<int> Seen(auto& list) {
    std::vector<int> seen;
    seen.reserve(static_cast<std::size_t>(list.upper() + 8));
    seen = {list.upper(), list.count(), list.cursor(), list.AtBeginning(), list.AtEnd()};
    for (int i = -1; i <= list.upper() + 1; ++i) seen.push_back(list.IsItem(i) ? list.Item(i) : -1);
    return seen;
}

}  // namespace velk::test
