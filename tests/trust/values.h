// Values of every kind that a client can pass, and arguments made of them. The order is random but always the same.
#pragma once

#include <deque>
#include <random>
#include <vector>

#include "support/late_bound.h"
#include "support/value_object.h"
#include "trust/members.h"

namespace velk::test {

inline constexpr unsigned kSeed = 20030117;
inline std::mt19937 engine(kSeed);

inline int Below(int limit) { return static_cast<int>(engine() % static_cast<unsigned>(limit)); }
inline bool OneIn(int count) { return Below(count) == 0; }
template <class Values>
auto& AnyOf(Values& values) {
    return values[static_cast<std::size_t>(Below(static_cast<int>(std::size(values))))];
}

// The objects that calls pass. Reading one runs foreign code, which may change the client's variables.
std::vector<ComPtr<ValueObject>>& Objects();

// What a campaign has beyond that: a window, and further objects.
inline LONG realWindow = 0;
inline std::vector<ComPtr<IDispatch>> furtherObjects;

std::wstring AnyText();
Variant SimpleValue();
Variant AnyValue();
Variant SaneValue(VARTYPE type);

// The client's side of one call: its values and variables, which go with it.
class Client {
  public:
    Client() noexcept { current_ = this; }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() { current_ = nullptr; }

    // An argument as a client that knows the member passes it.
    VARIANT Sane(Taken taken);

    VARIANT Any();

    // While a default property is read or an event handled, foreign code changes one of the client's variables.
    static void Interfere();

  private:
    Variant& Keep(Variant value) { return values_.emplace_back(std::move(value)); }

    VARIANT Plain(Variant value) { return Keep(std::move(value)); }
    VARIANT Variable(Variant value) {
        variables_.push_back(&Keep(std::move(value)));
        return Arg(variables_.back());
    }
    VARIANT Reference(Variant value) {
        Variant& kept = Keep(std::move(value));
        const bool whole = kept.vt == VT_DECIMAL || kept.vt == VT_VARIANT;
        return Ref(kept.vt, whole || kept.vt & VT_BYREF ? nullptr : &kept.llVal);
    }

    static inline Client* current_ = nullptr;
    std::deque<Variant> values_;
    std::vector<VARIANT*> variables_;
};

}  // namespace velk::test
