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
    for (int step = 0; step < 24 && !bytes.empty(); ++step) {
        const int chosen = bytes.Next();
        const auto index = [&] { return bytes.Next() % (literal.upper() + 7) - 3; };
        const Operands with{chosen >> 4, index(), index(), bytes.Next() % 2 == 1};
        Require(Operate(literal, chosen % kOperations, with) == Operate(list, chosen % kOperations, with));
        if (step % 8 == 7) Require(Seen(literal) == Seen(list));
    }
    Require(Seen(literal) == Seen(list));
    return 0;
}
