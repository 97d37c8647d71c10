// What a late-bound call needs to know of each member, read once for each interface from the type library.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "frame/dispatch/name_table.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk {

inline constexpr std::size_t kMaxArguments = 16;

struct Parameter {
    std::u16string name;
    VARTYPE type = VT_EMPTY;  // an automation type, or VT_ARRAY | VT_BSTR
    bool byReference = false;
    bool optional = false;
    Variant defaultValue;  // of `type`; for an optional VARIANT the "missing" value
    IID iid = IID_NULL;    // for VT_DISPATCH and VT_UNKNOWN: the interface that the member takes

    bool IsObject() const noexcept { return type == VT_DISPATCH || type == VT_UNKNOWN; }
};

struct CallPlan {
    unsigned slot = 0;  // index in the vtable
    std::vector<Parameter> parameters;
    VARTYPE result = VT_EMPTY;
    bool isLet = false;  // a property let or set: the last argument is the new value
};

// A member with a result and without arguments: what late-bound clients call most.
struct GetterCall {
    unsigned slot = 0;
    VARTYPE result = VT_EMPTY;
    WORD flags = 0;  // the DISPATCH_ flag that it answers to; 0 for no such member
};

class InterfacePlan {
  public:
    explicit InterfacePlan(REFIID iid);

    // The id of a member, or of one of a member's parameters; NameTable::kUnknown when there is none.
    DISPID MemberId(const wchar_t* name) const noexcept;
    DISPID ParameterId(DISPID member, std::u16string_view name) const noexcept;

    // The way to call a member for the DISPATCH_ flags of an Invoke; null when it has none.
    const CallPlan* Find(DISPID id, WORD flags) const noexcept;

    GetterCall Getter(DISPID id) const noexcept {
        return static_cast<std::size_t>(id) < getters_.size() ? getters_[static_cast<std::size_t>(id)] : GetterCall{};
    }

  private:
    struct Member {
        std::array<std::optional<CallPlan>, 4> ways;  // function, property get, let, set
    };
    void Add(ITypeInfo* info, const FUNCDESC& function);

    NameTable names_;
    std::vector<Member> members_;      // by dispatch identifier
    std::vector<GetterCall> getters_;  // likewise
};

}  // namespace velk
