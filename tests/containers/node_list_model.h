// The linked list as it is described, one step after the other: what NodeList must not differ from.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "containers/node_list.h"
#include "fuzz/model.h"

namespace velk::test {

class LiteralList {
  public:
    LiteralList() { Create(); }

    void Create() {
        nodes_.assign(1, Node{});
        ExpandList(100);
    }

    int Add(int value, int before, int after) {
        if (freeHead_ == 0) ExpandList(100);
        const int added = freeHead_;
        const int nextFree = At(added).next;
        if (before < 0) before = head_;
        if (before > 0) {
            CheckIndex(before);
            At(added).next = before;
            At(added).prev = At(before).prev;
            At(before).prev = added;
            (before == head_ ? head_ : At(At(added).prev).next) = added;
        } else if (after < 1) {
            (tail_ == 0 ? head_ : At(tail_).next) = added;
            At(added).prev = tail_;
            tail_ = added;
            At(added).next = 0;
        } else {
            CheckIndex(after);
            At(added).prev = after;
            At(added).next = At(after).next;
            At(after).next = added;
            (after == tail_ ? tail_ : At(At(added).next).prev) = added;
        }
        At(added).value = value;
        ++count_;
        freeHead_ = nextFree;
        return added;
    }

    bool IsItem(int index) { return index >= 1 && index <= upper() && At(index).prev >= 0; }
    void CheckIndex(int index) {
        if (!IsItem(index)) throw RuntimeError(Error::InvalidProcedureCall);
    }

    int Remove(int index) {
        if (index == 0) index = cursor_;
        CheckIndex(index);
        const auto [value, prev, next] = At(index);
        if (index == head_) {
            At(head_ = next).prev = 0;
        } else if (index == tail_) {
            At(tail_ = prev).next = 0;
        } else {
            At(prev).next = next;
            At(next).prev = prev;
        }
        --count_;
        if (index == cursor_) {
            cursor_ = At(index).next;
            if (cursor_ == 0) movedForward_ = true;
        }
        At(index) = {0, -1, freeHead_};
        freeHead_ = index;
        return value;
    }

    void SetSize(int size, int chunk) {
        if (size < 1 || chunk < 0) throw RuntimeError(Error::InvalidProcedureCall);
        if (size > upper()) ExpandList(size - upper());
    }

    int& Item(int index) {
        if (index == 0) index = cursor_;
        CheckIndex(index);
        return At(index).value;
    }

    int SearchStart(int start, bool descending) {
        if (start == 0) return cursor_;
        if (start < 0) return descending ? tail_ : head_;
        CheckIndex(start);
        return descending ? At(start).prev : At(start).next;
    }
    // A walk that comes back to where it was ends.
    int Find(int start, bool descending, auto&& matches) {
        std::vector<bool> visited(nodes_.size());
        for (int at = start; at != 0; at = descending ? At(at).prev : At(at).next) {
            if (matches(At(at).value)) return at;
            if (visited[static_cast<std::size_t>(at)]) return 0;
            visited[static_cast<std::size_t>(at)] = true;
        }
        return 0;
    }

    void Move(int index) {
        CheckIndex(index);
        cursor_ = index;
    }
    void MoveFirst() { cursor_ = head_; }
    void MoveLast() { cursor_ = tail_; }
    void MoveNext() {
        cursor_ = At(cursor_).next;
        movedForward_ = true;
    }
    void MovePrevious() {
        cursor_ = At(cursor_).prev;
        movedForward_ = false;
    }
    void SetCursor(int index) { cursor_ = index; }

    int upper() const { return static_cast<int>(nodes_.size()) - 1; }
    int count() const { return count_; }
    int cursor() const { return cursor_; }
    bool AtBeginning() const { return count_ == 0 || (cursor_ == 0 && !movedForward_); }
    bool AtEnd() const { return count_ == 0 || (cursor_ == 0 && movedForward_); }

  private:
    struct Node {
        int value = 0, prev = 0, next = 0;
    };

    Node& At(int index) {
        if (index < 0 || index > upper()) throw RuntimeError(Error::SubscriptOutOfRange);
        return nodes_[static_cast<std::size_t>(index)];
    }

    void ExpandList(int by) {
        const int old = upper();
        nodes_.resize(nodes_.size() + static_cast<std::size_t>(by));
        for (int i = freeHead_; i <= upper(); ++i) {
            At(i).next = i + 1;
            At(i).prev = -1;
        }
        At(upper()).next = freeHead_;
        freeHead_ = old + 1;
    }

    std::vector<Node> nodes_;
    int count_ = 0, head_ = 0, tail_ = 0, freeHead_ = 0, cursor_ = 0;
    bool movedForward_ = false;
};

// The operations by their letters, from a on.
template <class List>
constexpr int (*kOperations[])(List&, int value, int a, int b, bool flag) = {
    [](auto& list, int value, int, int, bool) { return list.Add(value, 0, 0); },
    [](auto& list, int value, int a, int b, bool flag) { return list.Add(value, a, flag ? b : 0); },
    [](auto& list, int value, int a, int, bool) { return list.Add(value, 0, a); },
    [](auto& list, int value, int, int, bool) { return list.Add(value, -1, 0); },
    [](auto& list, int, int a, int, bool) { return list.Remove(a); },
    [](auto& list, int, int, int, bool) { return list.Remove(0); },
    [](auto& list, int value, int a, int, bool) { return list.Item(a) = value; },
    [](auto& list, int, int a, int, bool) { return list.Move(a), 0; },
    [](auto& list, int, int, int, bool) { return list.MoveFirst(), 0; },
    [](auto& list, int, int, int, bool) { return list.MoveLast(), 0; },
    [](auto& list, int, int, int, bool) { return list.MoveNext(), 0; },
    [](auto& list, int, int, int, bool) { return list.MovePrevious(), 0; },
    [](auto& list, int value, int a, int, bool flag) {
        return list.Find(list.SearchStart(a, flag), flag, [value](int item) { return item == value; });
    },
    [](auto& list, int value, int a, int, bool flag) {
        return list.Find(list.SearchStart(a, flag), flag, [value](int item) { return item < value; });
    },
    [](auto& list, int value, int, int b, bool) { return list.SetSize(list.upper() - 20 + 8 * value, b), 0; },
    [](auto& list, int, int a, int, bool) { return list.SetCursor(a), 0; },
    [](auto& list, int, int, int, bool) { return list.Create(), 0; }};

// All that a client can see.
std::vector<int> Seen(auto& list) {
    std::vector<int> seen = {list.upper(), list.count(), list.cursor(), list.AtBeginning(), list.AtEnd()};
    for (int i = -1; i <= list.upper() + 1; ++i) seen.push_back(list.IsItem(i) ? list.Item(i) : -1);
    return seen;
}

inline void NodeListModel(Bytes& bytes) {
    // Lists that grow, that churn, that are sized ahead and that are often emptied meet different oddities.
    constexpr std::string_view kTempers[] = {"aaaaaaaaaaaaaaabbccddefgghijkklmmnn", "aabbccddeeffgghijkklmnp",
                                             "aaaabbccddeffgghijkkllmmnnop",
                                             "aaaaaaaabbbbccccdddeeeffffggghhijkkkllmmnnoopq"};
    const std::string_view temper = kTempers[bytes.Next() % 4];
    LiteralList literal;
    NodeList<int> list;
    list.Create();
    for (int step = 1; !bytes.empty(); ++step) {
        const char operation = temper[static_cast<std::size_t>(bytes.Next()) % temper.size()];
        const int value = bytes.Next();
        // Mostly an item, sometimes none, one that is not there yet or any node.
        const auto index = [&] {
            const int kind = bytes.Next(), at = kind + 256 * bytes.Next(), items = std::max(literal.count(), 1);
            return kind < 160 ? 1 + at % items : kind < 232 ? kind % (items + 2) : at % (literal.upper() + 7) - 3;
        };
        const int a = index(), b = index();
        const auto operate = [&]<class List>(List& on) {
            return Answer([&] { return kOperations<List>[operation - 'a'](on, value % 16, a, b, value >= 128); });
        };
        Require(operate(literal) == operate(list));
        if (step % 16 == 0 || bytes.empty()) Require(Seen(literal) == Seen(list));
    }
}

}  // namespace velk::test
