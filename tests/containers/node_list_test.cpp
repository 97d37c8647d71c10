#include "containers/node_list.h"

#include <gtest/gtest.h>

#include <array>
#include <new>
#include <random>
#include <vector>

#include "containers/list_operations.h"
#include "containers/literal_list.h"

namespace velk::test {
namespace {

// Lists that grow, that churn, that are sized ahead and that are often emptied meet different oddities.
constexpr std::array<std::array<double, kOperations>, 4> kTempers = {{
    {40, 5, 5, 5, 2, 4, 3, 2, 2, 2, 4, 2, 5, 5, 0, 0},
    {10, 8, 8, 8, 9, 9, 6, 3, 3, 3, 5, 5, 5, 5, 0, 0},
    {15, 8, 8, 5, 5, 5, 6, 3, 3, 3, 5, 5, 5, 5, 4, 0},
    {15, 8, 8, 5, 7, 7, 6, 3, 3, 3, 5, 5, 5, 5, 1, 1.5},
}};

class NodeListModel : public testing::TestWithParam<unsigned> {};

TEST_P(NodeListModel, AnswersAsDescribedAfterEveryStep) {
    std::mt19937 random(GetParam());
    const auto pick = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    const auto& temper = kTempers[GetParam() % kTempers.size()];
    std::discrete_distribution<int> operations(temper.begin(), temper.end());
    LiteralList literal;
    NodeList<int> list;
    list.Create();
    const auto index = [&] {
        int picked = pick(-3, literal.upper() + 3);
        for (int tries = pick(0, 20); tries > 0 && !literal.IsItem(picked); --tries) picked = pick(0, literal.upper());
        return picked;
    };
    for (int step = 0; step < 3000; ++step) {
        const int operation = operations(random);
        const Operands with{pick(1, 40), index(), index(), pick(0, 1) == 1};
        ASSERT_EQ(Operate(literal, operation, with), Operate(list, operation, with))
            << "step " << step << ", operation " << operation << " of " << with.value << ", " << with.a << ", "
            << with.b;
        ASSERT_EQ(Seen(literal), Seen(list)) << "step " << step << ", operation " << operation;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, NodeListModel, testing::Range(1u, 17u));

TEST(NodeList, FindsItselfInOrderWhenAValueGoes) {
    using List = NodeList<Farewell>;
    List list;
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

TEST(NodeList, TheWayBackFromAFreeNodeLeadsToNone) {
    NodeList<int> list;
    list.Create();
    list.Remove(list.Add(7, 0, 0));
    for (const int freed : {1, 50}) {
        list.SetCursor(freed);
        list.MovePrevious();
        EXPECT_EQ(-1, list.cursor());
    }
}

TEST(NodeList, ASearchMayStartAtANodeThatWasNeverUsed) {
    NodeList<int> list;
    list.Create();
    list.SetSize(1000, 0);
    list.SetCursor(500);
    EXPECT_EQ(500, list.Find(list.SearchStart(0, false), false, [](int item) { return item == 0; }));
}

}  // namespace
}  // namespace velk::test
