#include "containers/node_list.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>

#include "containers/farewell.h"
#include "containers/node_list_model.h"
#include "fuzz/replay.h"

namespace velk::test {
namespace {

TEST(NodeList, AnswersAsDescribedAfterEveryStep) { Replay(&NodeListModel, corpus::node_list, 64, 12000); }

TEST(NodeList, FindsItselfInOrderWhenAValueGoes) {
    NodeList<Farewell> list;
    list.Create();
    int gone = 0;
    // Each value, when it goes, sees a list that holds one item, and adds and removes one.
    const auto value = [&] {
        return FarewellWith([&] {
            ++gone;
            EXPECT_EQ(1, list.count());
            list.Remove(list.Add(Farewell(), 0, 0));
        });
    };
    list.Add(value(), 0, 0);
    list.Remove(list.Add(value(), 0, 0));
    EXPECT_EQ(1, gone);
    std::exchange(list.Item(1), value());
    EXPECT_EQ(2, gone);
    list.Create();  // the count stays
    EXPECT_EQ(3, gone);
}

TEST(NodeList, GivesBackTheValueOfAUsedNodeThatIsTakenAgainAndMayBeAddedToWhileItGoes) {
    int gone = 0;
    {
        NodeList<Farewell> list;
        list.Create();
        list.SetSize(200, 0);  // the 200 nodes are a ring now
        const auto add = [&] { return list.Add(FarewellWith([&] { ++gone; }), 0, 0); };
        for (int i = 0; i < 200; ++i) add();
        EXPECT_EQ(0, gone);
        EXPECT_EQ(101, list.Add(FarewellWith([&, add] { Answer(add); }), 0, 0));
        EXPECT_EQ(1, gone);
        EXPECT_EQ(201, list.count());
    }
    EXPECT_EQ(201, gone);
}

TEST(NodeList, ASizeBeyondAllMemoryChangesNothing) {
    NodeList<int> list;
    list.Create();
    list.Add(7, 0, 0);
    const auto before = Seen(list);
    for (const int size : {std::numeric_limits<int>::max(), 1'000'000'000}) {
        EXPECT_THROW(list.SetSize(size, 0), std::bad_alloc);
    }
    EXPECT_EQ(before, Seen(list));
    EXPECT_EQ(2, list.Add(8, 0, 0));
}

}  // namespace
}  // namespace velk::test
