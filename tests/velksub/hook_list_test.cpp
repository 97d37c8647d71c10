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
    while (const List::Hook* const hook = list.Below(message, place)) all += hook->target, place = hook->place;
    EXPECT_EQ(!all.empty(), list.Wants(message)) << message;
    return all;
}

TEST(HookList, KeepsEachMessagesHooksInTheirOrderAndNoPlaceTwice) {
    List list;
    for (const auto& [message, target] :
         {std::pair{5u, 'a'}, {2u, 'b'}, {5u, 'c'}, {9u, 'd'}, {~0u, 'e'}, {2u, 'a'}, {5u, 'a'}}) {
        list.Add(message, target);
    }
    for (const auto& [message, hooks] :
         {std::pair{5u, "ca"}, {2u, "ab"}, {9u, "d"}, {~0u, "e"}, {0u, ""}, {3u, ""}, {~1u, ""}}) {
        EXPECT_EQ(hooks, Downwards(list, message));
    }
    const List::Place top = list.Below(5, List::kTop)->place, bottom = list.Below(5, top)->place;
    EXPECT_TRUE(list.Holds(5, bottom));
    EXPECT_EQ('a', list.Remove(5, 'a'));
    for (const List::Message gone : {5u, 7u}) EXPECT_EQ(std::nullopt, list.Remove(gone, 'a'));
    list.Add(5, 'a');
    EXPECT_FALSE(list.Holds(5, bottom));
    EXPECT_EQ(nullptr, list.Below(5, top)) << "what was attached later stands above";
    EXPECT_EQ("ac", Downwards(list, 5));
    EXPECT_EQ("ab", Downwards(list, 2));
    EXPECT_EQ(6u, list.TakeAll().size());
    EXPECT_TRUE(list.empty());
}

}  // namespace
}  // namespace velk
