#include "containers/node_list.h"

#include <gtest/gtest.h>

#include <memory>

#include "containers/value_stack.h"
#include "fuzz/model.h"

namespace velk::test {
namespace {

// Those that are destroyed before are among the classes' facts.
TEST(NodeList, AndAStackMayBeAddedToByTheirLastValues) {
    using Farewell = std::shared_ptr<void>;
    int gone = 0;
    const auto value = [&](auto add) { return Farewell(nullptr, [&, add](void*) { ++gone, Answer(add); }); };
    {
        NodeList<Farewell> list;
        ValueStack<Farewell> stack;
        list.Create();
        list.SetSize(200, 0);  // the 200 nodes are a ring now
        for (int i = 1; i < 200; ++i) list.Add(value([] {}), 0, 0);
        list.Add(value([&] { list.Add(value([] {}), 0, 0); }), 0, 0);
        stack.Push(value([&] { stack.Push(value([] {})); }));
    }
    EXPECT_EQ(200 + 1 + 2, gone);
}

}  // namespace
}  // namespace velk::test
