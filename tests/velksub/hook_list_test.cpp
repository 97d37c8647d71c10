#include "velksub/hook_list.h"

#include <gtest/gtest.h>

#include <string>

namespace velk {
namespace {

using List = HookList<char>;

// The hooks for a message from the top down.
std::string Downwards(const List& list, List::Message message) {
    std::string all;
    List::Place place = List::kTop;
    while (const List::Hook* const hook = list.Below(message, place)) {
        all += hook->target;
        place = hook->place;
    }
    return all;
}

TEST(HookList, KeepsEachMessagesHooksInTheirOrder) {
    List list;
    for (const auto& [message, target] :
         {std::pair{5u, 'a'}, {2u, 'b'}, {5u, 'c'}, {9u, 'd'}, {~0u, 'e'}, {2u, 'a'}, {5u, 'a'}}) {
        list.Add(message, target);
    }
    EXPECT_EQ("ca", Downwards(list, 5));
    EXPECT_EQ("ab", Downwards(list, 2));
    EXPECT_EQ("d", Downwards(list, 9));
    EXPECT_EQ("e", Downwards(list, ~0u));
    for (const List::Message unwanted : {0u, 3u, 0xFFFFFFFEu}) EXPECT_FALSE(list.Wants(unwanted));
    for (const List::Message wanted : {2u, 5u, ~0u}) EXPECT_TRUE(list.Wants(wanted));
    EXPECT_EQ('a', list.Remove(5, 'a'));
    for (const List::Message gone : {5u, 7u}) EXPECT_EQ(std::nullopt, list.Remove(gone, 'a'));
    EXPECT_EQ("c", Downwards(list, 5));
    EXPECT_EQ("ab", Downwards(list, 2));
    EXPECT_EQ(5u, list.TakeAll().size());
    EXPECT_TRUE(list.empty());
}

TEST(HookList, APlaceIsNeverGivenTwice) {
    List list;
    list.Add(1, 'a');
    const List::Place first = list.Below(1, List::kTop)->place;
    list.Remove(1, 'a');
    list.Add(1, 'a');
    EXPECT_FALSE(list.Holds(1, first));
    const List::Place second = list.Below(1, List::kTop)->place;
    list.Add(1, 'b');
    EXPECT_TRUE(list.Holds(1, second));
    EXPECT_EQ(nullptr, list.Below(1, first)) << "what was attached later stands above";
}

}  // namespace
}  // namespace velk
