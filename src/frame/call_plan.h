// What a late-bound call needs to know of each member, read once for each interface from the type library.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "frame/com_ptr.h"
#include "frame/name_table.h"
#include "frame/platform.h"
#include "frame/variant.h"

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

class InterfacePlan {
  public:
    explicit InterfacePlan(REFIID iid);

    // The id of a member, or of one of a member's parameters; NameTable::kUnknown when there is none.
    DISPID MemberId(const wchar_t* name) const noexcept;
    DISPID ParameterId(DISPID member, std::u16string_view name) const noexcept;

    // The way to call a member for the DISPATCH_ flags of an Invoke; null when it has none.
    const CallPlan* Find(DISPID id, WORD flags) const noexcept;

  private:
    struct Member {
        std::array<std::optional<CallPlan>, 4> ways;  // function, property get, let, set
    };
    void Add(ITypeInfo* info, const FUNCDESC& function);

    NameTable names_;
    std::vector<Member> members_;  // by dispatch identifier
};

}  // namespace velk
