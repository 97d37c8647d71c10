// The nodes of a linked list by index: each a value and two links, kept in blocks that never move.
//
// A growing list sets the links of all its nodes, old and new, to the initial ones: previous -1, next the index that
// follows. Done node by node that would cost quadratic time. So a block has no links of its own, initial ones are
// implied, until one of them is written; and setting initial links takes them away again from the few blocks that were
// written since the last time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/run_time_error.h"

namespace velk {

template <class Value>
class NodeArray {
    static_assert(std::is_nothrow_default_constructible_v<Value>);
    struct Block;

  public:
    using Index = std::int32_t;

    // One node, for as long as the array does not grow.
    class Node {
      public:
        Index previous() const noexcept { return block_.links ? Own().previous : kFree; }
        Index next() const noexcept { return block_.links ? Own().next : index_ + 1; }
        void SetPrevious(Index to) noexcept { Written().previous = to; }
        void SetNext(Index to) noexcept { Written().next = to; }
        void SetLinks(Index previous, Index next) noexcept { Written() = {previous, next}; }
        Value& value() noexcept {
            if (!block_.values) MakeValues(block_);
            return block_.values[Inside(index_)];
        }

      private:
        friend NodeArray;
        Node(NodeArray& nodes, Block& block, Index index) noexcept : nodes_(nodes), block_(block), index_(index) {}

        // Only for a block that has links; the lint does not see that GiveLinks gave them.
        // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn)
        auto& Own() const noexcept { return block_.links[Inside(index_)]; }
        auto& Written() noexcept {
            if (!block_.links) nodes_.GiveLinks(index_ / kBlock);
            return Own();
        }

        NodeArray& nodes_;
        Block& block_;
        Index index_;
    };

    NodeArray() = default;
    NodeArray(NodeArray&& other) noexcept { Swap(other); }
    NodeArray& operator=(NodeArray other) noexcept {
        Swap(other);
        return *this;
    }
    ~NodeArray() {
        for (const Block& block : blocks_) {
            if (block.values) std::destroy_n(block.values, kBlock);
        }
    }

    // The highest index; -1 while there are no nodes.
    Index upper() const noexcept { return static_cast<Index>(count_) - 1; }

    Node At(Index index) {
        if (static_cast<std::uint32_t>(index) >= count_) ThrowOutOfRange();
        return Node(*this, blocks_[static_cast<std::uint32_t>(index) / std::uint32_t{kBlock}], index);
    }

    // The values from `index` on, for as long as they lie side by side and each next link leads to the one behind.
    std::span<const Value> Run(Index index) {
        const Value* const values = &At(index).value();
        const Links* const links = At(index).block_.links;
        const Index first = Inside(index);
        const Index most = std::min(kBlock - first, upper() - index + 1);
        Index count = links ? 1 : most;
        while (count < most && links[first + count - 1].next == index + count) ++count;
        return {values, static_cast<std::size_t>(count)};
    }

    // Puts a node behind the one that lies before it, as the last of a list, where that takes few steps: both lie in
    // one block that has links and values, and the node's own next link leads to the one that lies behind it. Null
    // where it takes more.
    Value* TryAppend(Index index) noexcept {
        const Index inside = Inside(index);
        if (static_cast<std::uint32_t>(index) >= count_ || inside < 2) return nullptr;
        const Block& block = blocks_[static_cast<std::uint32_t>(index) / std::uint32_t{kBlock}];
        if (!block.links || !block.values || block.links[inside].next != index + 1) return nullptr;
        block.links[inside - 1].next = index;
        block.links[inside] = {index - 1, 0};
        return block.values + inside;
    }

    // Adds `count` nodes. Then every node from `initial` on has the initial links; a new node before it has links 0.
    void Extend(std::int64_t count, Index initial) {
        if (count > kMostNodes - 1 - upper()) throw std::bad_alloc();
        AddBlocks(static_cast<std::size_t>(upper() + count) / kBlock + 1);
        const Index first = upper() + 1;
        count_ += static_cast<std::uint32_t>(count);
        for (Index i = first; i <= std::min(upper(), initial - 1); ++i) At(i).SetLinks(0, 0);
        SetInitialLinks(initial);
    }

  private:
    static constexpr Index kBlock = 128;
    static constexpr Index kFree = -1;  // the previous link of a free node
    static constexpr std::size_t kMostSpareBlocks = 8192;

    struct Links {
        Index previous;
        Index next;
    };
    static constexpr std::size_t kNodeSize = sizeof(Links) + sizeof(Value);
    // What a 32-bit process can address; so no link ever overflows.
    static constexpr Index kMostNodes = std::numeric_limits<Index>::max() / kNodeSize;

    struct Block {
        Value* values = nullptr;  // null before the first use
        Links* links = nullptr;   // null: the initial ones
        Value* valuePlace;        // memory that a block may use, not initialised and not touched before it does
        Links* linkPlace;         // likewise, for this or another block
        std::unique_ptr<std::byte[]> slab;  // the memory of this block and those that follow, for the first of them
    };

    // Memory of links that a block has given back. It lies there.
    struct UsedLinks {
        UsedLinks* next;
    };
    static_assert(sizeof(UsedLinks) <= sizeof(Links[kBlock]) && sizeof(Value[kBlock]) % alignof(UsedLinks) == 0);

    static Index Inside(Index index) noexcept {
        return static_cast<Index>(static_cast<std::uint32_t>(index) % std::uint32_t{kBlock});
    }

    [[noreturn, gnu::noinline]] static void ThrowOutOfRange() { throw RuntimeError(Error::SubscriptOutOfRange); }

    static void MakeValues(Block& block) noexcept {
        block.values = block.valuePlace;
        std::uninitialized_value_construct_n(block.values, kBlock);
    }

    // There is a place for every block's links, but those that were used before are in the processor's cache.
    [[gnu::noinline]] void GiveLinks(Index number) noexcept {
        Links* links = nullptr;
        if (usedLinks_) {
            links = reinterpret_cast<Links*>(std::exchange(usedLinks_, usedLinks_->next));
        } else {
            links = blocks_[freshLinks_++].linkPlace;
        }
        for (Index i = 0; i < kBlock; ++i) links[i] = {kFree, number * kBlock + i + 1};
        blocks_[static_cast<std::size_t>(number)].links = links;
        if (number == 0) return;
        linked_.push_back(number);
        std::ranges::push_heap(linked_);
    }

    void TakeLinks(Index number) noexcept {
        Links* const links = std::exchange(blocks_[static_cast<std::size_t>(number)].links, nullptr);
        if (links) usedLinks_ = new (links) UsedLinks{usedLinks_};
    }

    void SetInitialLinks(Index first) noexcept {
        if (first > upper()) return;
        const Index number = (first + kBlock - 1) / kBlock;
        if (Inside(first) != 0) SetInitialLinksInside(blocks_[static_cast<std::size_t>(number - 1)], first);
        while (!linked_.empty() && linked_.front() >= number) {
            std::ranges::pop_heap(linked_);
            TakeLinks(linked_.back());
            linked_.pop_back();
        }
        if (number == 0) TakeLinks(0);
    }

    static void SetInitialLinksInside(Block& block, Index first) noexcept {
        if (!block.links) return;
        for (Index i = first; Inside(i) != 0; ++i) block.links[Inside(i)] = {kFree, i + 1};
    }

    // One allocation for all that is missing, and for some more as the array grows.
    void AddBlocks(std::size_t wanted) {
        if (wanted <= blocks_.size()) return;
        const std::size_t count = std::max(wanted - blocks_.size(), std::min(blocks_.size() / 4, kMostSpareBlocks));
        auto slab = std::make_unique_for_overwrite<std::byte[]>(count * kBlock * kNodeSize);
        ReserveForBlocks(blocks_.size() + count);
        auto* values = reinterpret_cast<Value*>(slab.get());
        auto* links = reinterpret_cast<Links*>(values + count * kBlock);
        const std::size_t first = blocks_.size();
        for (std::size_t at = 0; at < count * kBlock; at += kBlock) {
            blocks_.push_back({.valuePlace = values + at, .linkPlace = links + at, .slab = nullptr});
        }
        blocks_[first].slab = std::move(slab);
    }

    // So that giving links never fails.
    void ReserveForBlocks(std::size_t count) {
        if (count <= blocks_.capacity()) return;
        count = std::max(count, 2 * blocks_.capacity());
        linked_.reserve(count - 1);
        blocks_.reserve(count);
    }

    void Swap(NodeArray& other) noexcept {
        std::swap(count_, other.count_);
        std::swap(freshLinks_, other.freshLinks_);
        std::swap(usedLinks_, other.usedLinks_);
        blocks_.swap(other.blocks_);
        linked_.swap(other.linked_);
    }

    std::uint32_t count_ = 0;
    std::size_t freshLinks_ = 0;      // the first block whose place for links was never used
    UsedLinks* usedLinks_ = nullptr;  // free again
    std::vector<Block> blocks_;
    std::vector<Index> linked_;  // the blocks behind the first that have links: a heap, the highest first
};

}  // namespace velk
