// The linked list as it is described, one step after the other: what NodeList must not differ from.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/run_time_error.h"

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
        int value = 0;
        int prev = 0;
        int next = 0;
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

}  // namespace velk::test
