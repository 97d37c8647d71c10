// A doubly linked list in an array of nodes, with a free list and a cursor. An item is known by the index of its node,
// which stays the same for as long as it is in the list; 0 stands for none.
//
// Kept deliberately, since clients see it:
// - Growing sets the links of every node from the head of the free list on to the initial ones. When Add grows the list
//   the free list is empty, so that is every node: the items count as free for CheckIndex from then on, only the way
//   forward through items that lie in index order stays, and node 0, which is no item, leads to node 1.
// - Growing by SetSize joins the new nodes to the free list's nodes in a ring. Once all of them are in use, Add takes
//   used ones again.
// - Removing the only item leaves the tail as it was. RemoveAll gives new nodes, but keeps count, head, tail, cursor
//   and, until it is set anew, the head of the free list from which on the new nodes get initial links.
// So links may lead to freed nodes, in a circle, or out of the array; an index out of the array is
// RuntimeError(Error::SubscriptOutOfRange).
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>

#include "containers/node_array.h"
#include "platform/run_time_error.h"

namespace velk {

template <class Value>
class NodeList {
  public:
    using Index = std::int32_t;

    NodeList() = default;
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;
    // A value's destructor may call back into the list and may even add to it.
    ~NodeList() {
        while (nodes_.upper() >= 0) std::exchange(nodes_, NodeArray<Value>());
    }

    // Add makes room itself, but a caller that wants to tell a failure of that apart does it beforehand.
    bool IsFull() const noexcept { return freeHead_ == 0; }
    void Grow() { Expand(nodes_, kChunk); }

    // A list is made empty; what RemoveAll does is the same again. The old values are destroyed when all is in order.
    void Create() {
        NodeArray<Value> nodes;
        Expand(nodes, kChunk);
        std::swap(nodes_, nodes);
    }

    Index Add(Value value, Index before, Index after) {
        const Index index = freeHead_;
        const bool isNext = before == 0 && after < 1 && index == tail_ + 1 && count_ != kMostItems;
        Value* const place = isNext ? nodes_.TryAppend(index) : nullptr;
        if (!place) return AddAnywhere(value, before, after);
        tail_ = index;
        freeHead_ = index + 1;
        ++count_;
        using std::swap;
        swap(*place, value);  // a value that was still there is destroyed when all is in order
        return index;
    }
    bool IsItem(Index index) { return index >= 1 && index <= nodes_.upper() && nodes_.At(index).previous() >= 0; }
    void CheckIndex(Index index) {
        if (!IsItem(index)) throw RuntimeError(Error::InvalidProcedureCall);
    }
    // The value that was removed, for the caller to drop.
    Value Remove(Index index);
    static void CheckSize(Index size, Index chunk) {
        if (size < 1 || chunk < 0) throw RuntimeError(Error::InvalidProcedureCall);
    }
    void SetSize(Index size, Index chunk);

    // The item at an index, or for 0 at the cursor.
    Value& Item(Index index) { return nodes_.At(Checked(index)).value(); }

    // The first index from `start` on, itself included, whose value matches; 0 when there is none. A way that leads in
    // a circle ends after as many steps as there are nodes. `matches` must not call back into the list.
    template <class Match>
    Index Find(Index start, bool descending, Match&& matches);
    // Where a search begins: 0 is the cursor, an item means the one beyond it, negative the end of the list.
    Index SearchStart(Index start, bool descending);
    Index Beyond(Index index, bool descending) { return Link(nodes_.At(index), descending ? kBefore : kAfter); }

    // Visits every value in walking order, with the same end to a circle.
    template <class Visit>
    void ForEach(Visit&& visit) {
        Index left = nodes_.upper();
        for (Index index = head_; index != 0 && left > 0; index = Beyond(index, false), --left) {
            visit(std::as_const(nodes_.At(index).value()));
        }
    }

    void Move(Index index) {
        CheckIndex(index);
        cursor_ = index;
    }
    void MoveFirst() noexcept { cursor_ = head_; }
    void MoveLast() noexcept { cursor_ = tail_; }
    void MoveNext() {
        cursor_ = nodes_.At(cursor_).next();
        movedForward_ = true;
    }
    void MovePrevious() {
        cursor_ = nodes_.At(cursor_).previous();
        movedForward_ = false;
    }
    Index cursor() const noexcept { return cursor_; }
    void SetCursor(Index index) noexcept { cursor_ = index; }

    Index count() const noexcept { return count_; }
    Index upper() const noexcept { return nodes_.upper(); }
    bool IsEmpty() const noexcept { return count_ == 0; }
    bool AtBeginning() const noexcept { return IsEmpty() || (cursor_ == 0 && !movedForward_); }
    bool AtEnd() const noexcept { return IsEmpty() || (cursor_ == 0 && movedForward_); }

  private:
    using Node = typename NodeArray<Value>::Node;
    static constexpr Index kChunk = 100;
    static constexpr Index kMostItems = std::numeric_limits<Index>::max();

    [[gnu::noinline]] void Expand(NodeArray<Value>& nodes, std::int64_t by) {
        const Index old = std::max(nodes.upper(), 0);
        nodes.Extend(old - nodes.upper() + by, freeHead_);  // node 0 comes with the first
        nodes.At(nodes.upper()).SetNext(freeHead_);
        freeHead_ = old + 1;
    }

    [[gnu::noinline]] Index AddAnywhere(Value& value, Index before, Index after);

    Index Checked(Index index) {
        if (index == 0) index = cursor_;
        CheckIndex(index);
        return index;
    }

    enum Side { kBefore, kAfter };
    static Index Link(Node node, Side side) noexcept { return side == kBefore ? node.previous() : node.next(); }
    static void SetLink(Node node, Side side, Index to) noexcept {
        side == kBefore ? node.SetPrevious(to) : node.SetNext(to);
    }
    Index& End(Side side) noexcept { return side == kBefore ? head_ : tail_; }

    [[gnu::noinline]] void InsertBeside(Index index, Side side, Index other);
    void Append(Node node, Index index);
    void Unlink(Node node, Index index);

    NodeArray<Value> nodes_;
    Index count_ = 0;
    Index head_ = 0;
    Index tail_ = 0;
    Index freeHead_ = 0;
    Index cursor_ = 0;
    bool movedForward_ = false;
};

template <class Value>
auto NodeList<Value>::AddAnywhere(Value& value, Index before, Index after) -> Index {
    if (count_ == kMostItems) throw RuntimeError(Error::Overflow);
    if (IsFull()) Grow();
    const Index index = freeHead_;
    Node node = nodes_.At(index);
    const Index nextFree = node.next();
    if (before < 0) before = head_;
    if (before > 0) {
        InsertBeside(index, kBefore, before);
    } else if (after < 1) {
        Append(node, index);
    } else {
        InsertBeside(index, kAfter, after);
    }
    ++count_;
    freeHead_ = nextFree;
    using std::swap;
    swap(node.value(), value);
    return index;
}

template <class Value>
void NodeList<Value>::InsertBeside(Index index, Side side, Index other) {
    CheckIndex(other);
    const Side back = side == kBefore ? kAfter : kBefore;
    const Node node = nodes_.At(index), neighbour = nodes_.At(other);
    SetLink(node, back, other);
    SetLink(node, side, Link(neighbour, side));
    SetLink(neighbour, side, index);
    if (other == End(side)) {
        End(side) = index;
    } else {
        SetLink(nodes_.At(Link(node, side)), back, index);
    }
}

template <class Value>
void NodeList<Value>::Append(Node node, Index index) {
    if (tail_ != 0) {
        nodes_.At(tail_).SetNext(index);
    } else {
        head_ = index;
    }
    node.SetLinks(tail_, 0);
    tail_ = index;
}

template <class Value>
Value NodeList<Value>::Remove(Index index) {
    index = Checked(index);
    Node node = nodes_.At(index);
    Unlink(node, index);
    Value removed = std::exchange(node.value(), Value());
    --count_;
    if (index == cursor_) {
        cursor_ = node.next();
        if (cursor_ == 0) movedForward_ = true;
    }
    node.SetLinks(-1, freeHead_);
    freeHead_ = index;
    return removed;
}

template <class Value>
void NodeList<Value>::Unlink(Node node, Index index) {
    if (index == head_) {
        head_ = node.next();
        nodes_.At(head_).SetPrevious(0);  // node 0 when the list is empty now
    } else if (index == tail_) {
        tail_ = node.previous();
        nodes_.At(tail_).SetNext(0);
    } else {
        nodes_.At(node.previous()).SetNext(node.next());
        nodes_.At(node.next()).SetPrevious(node.previous());
    }
}

template <class Value>
void NodeList<Value>::SetSize(Index size, Index chunk) {
    CheckSize(size, chunk);
    if (size > nodes_.upper()) Expand(nodes_, std::int64_t{size} - nodes_.upper());
}

template <class Value>
auto NodeList<Value>::SearchStart(Index start, bool descending) -> Index {
    if (start == 0) return cursor_;
    if (start < 0) return End(descending ? kAfter : kBefore);
    CheckIndex(start);
    return Beyond(start, descending);
}

template <class Value>
template <class Match>
auto NodeList<Value>::Find(Index start, bool descending, Match&& matches) -> Index {
    Index left = nodes_.upper();
    for (Index index = start; index != 0 && left >= 0; index = Beyond(index, descending)) {
        const std::span<const Value> run = descending ? nodes_.Run(index).first(1) : nodes_.Run(index);
        const auto found = std::ranges::find_if(run, matches);
        index += static_cast<Index>(found - run.begin());
        if (found != run.end()) return index;
        left -= static_cast<Index>(run.size());
        --index;
    }
    return 0;
}

}  // namespace velk
