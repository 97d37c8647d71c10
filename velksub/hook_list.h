// The hooks of one window: for each message those that want it, in the order in which they were attached.
//
// A hook is found by its place in that order, never by its index: a place never changes and is never used twice, so
// that hooks may be attached and detached while a message is passed from one to the next. Needs no Windows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace velk {

// A Target owns a hook object; two that compare equal are the same hook.
template <class Target>
class HookList {
  public:
    using Message = std::uint32_t;
    using Place = std::uint64_t;

    struct Hook {
        Message message;
        Place place;
        Target target;
    };

    // Above every hook.
    static constexpr Place kTop = std::numeric_limits<Place>::max();

    bool empty() const noexcept { return hooks_.empty(); }

    bool Wants(Message message) const noexcept {
        const auto found = FirstFor(message);
        return found != hooks_.end() && found->message == message;
    }

    // Once is enough: the same target for the same message stays where it is.
    void Add(Message message, Target target) {
        if (Find(message, target) != hooks_.end()) return;
        hooks_.insert(FirstFor(message + 1ULL), {message, next_, std::move(target)});
        ++next_;
    }

    // What was removed. The caller destroys it when its own state is consistent again.
    std::optional<Target> Remove(Message message, const Target& target) noexcept {
        const auto found = Find(message, target);
        if (found == hooks_.end()) return std::nullopt;
        std::optional<Target> removed(std::move(found->target));
        hooks_.erase(found);
        return removed;
    }

    std::vector<Hook> TakeAll() noexcept { return std::exchange(hooks_, {}); }

    // The hook that was attached last among those below a place; null when there is none.
    const Hook* Below(Message message, Place place) const noexcept {
        const Hook* last = nullptr;
        for (auto hook = FirstFor(message); hook != hooks_.end() && hook->message == message && hook->place < place;
             ++hook) {
            last = &*hook;
        }
        return last;
    }

    bool Holds(Message message, Place place) const noexcept {
        const Hook* const hook = Below(message, place + 1);
        return hook && hook->place == place;
    }

  private:
    using Hooks = std::vector<Hook>;

    typename Hooks::const_iterator FirstFor(std::uint64_t message) const noexcept {
        return std::partition_point(hooks_.begin(), hooks_.end(),
                                    [message](const Hook& hook) { return hook.message < message; });
    }
    typename Hooks::iterator Find(Message message, const Target& target) noexcept {
        return std::find_if(hooks_.begin(), hooks_.end(),
                            [&](const Hook& hook) { return hook.message == message && hook.target == target; });
    }

    Hooks hooks_;  // by message, then by place
    Place next_ = 0;
};

}  // namespace velk
