#include <algorithm>

#include "containers/list_operations.h"
#include "containers/literal_list.h"
#include "containers/node_list.h"
#include "fuzz/fuzz.h"

using namespace velk;
using namespace velk::test;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    LiteralList literal;
    NodeList<int> list;
    list.Create();
    for (int step = 0; step < 20 && !bytes.empty(); ++step) {
        const int chosen = bytes.Next();
        // Mostly an item, sometimes none, one that is not there yet or any node.
        const auto index = [&] {
            const int byte = bytes.Next(), items = std::max(literal.count(), 1);
            return byte < 160 ? 1 + byte % items : byte < 232 ? byte % (items + 2) : byte % (literal.upper() + 7) - 3;
        };
        const Operands with{chosen >> 4, index(), index(), bytes.Next() % 2 == 1};
        Require(Operate(literal, chosen % kOperations, with) == Operate(list, chosen % kOperations, with));
    }
    Require(Seen(literal) == Seen(list));
    return 0;
}
