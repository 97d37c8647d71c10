// Values of every kind that a client can pass, and arguments made of them. The order is random but always the same.
#pragma once

#include <deque>
#include <random>
#include <vector>

#include "support/late_bound.h"
#include "support/value_object.h"

namespace velk::test {

inline constexpr unsigned kSeed = 20030117;
inline std::mt19937 engine(kSeed);

inline int Below(int limit) { return static_cast<int>(engine() % static_cast<unsigned>(limit)); }
inline bool OneIn(int count) { return Below(count) == 0; }
template <class Values>
auto& AnyOf(Values& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(std::size(values))))];
}

// What calls may meet: windows, texts that name something, and objects. Reading an object or asking it who it is runs
// the client's code.
inline std::vector<LONG> realWindows;
inline std::vector<std::wstring> furtherTexts;
inline std::vector<ComPtr<IDispatch>> furtherObjects;
std::vector<ComPtr<ValueObject>>& Objects();
inline std::function<void()> clientCode;

std::wstring AnyText();
Variant AnyValue();
Variant ExactValue(VARTYPE type);  // of just this type

// What a member takes.
struct Taken {
    VARTYPE type;
    bool byReference, optional;
};

// The client's side of one call: its values and variables, which are destroyed with it.
class Client {
  public:
    Client() noexcept : outer_(std::exchange(current_, this)) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { current_ = outer_; }

    VARIANT Sane(Taken taken);  // as a client that knows the member passes it
    VARIANT Any();

    static void ChangeAVariable();  // of the call that runs

  private:
    VARIANT Plain(Variant value) { return values_.emplace_back(std::move(value)); }
    VARIANT Variable(Variant value) {
        variables_.push_back(&values_.emplace_back(std::move(value)));
        return Arg(variables_.back());
    }
    VARIANT Reference(Variant value) {
        Variant& kept = values_.emplace_back(std::move(value));
        const bool whole = kept.vt == VT_DECIMAL || kept.vt == VT_VARIANT;
        return Ref(kept.vt, whole || kept.vt & VT_BYREF ? nullptr : &kept.llVal);
    }

    static inline Client* current_ = nullptr;
    Client* const outer_;
    std::deque<Variant> values_;
    std::vector<VARIANT*> variables_;
};

}  // namespace velk::test
