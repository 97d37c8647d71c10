// What a late-bound call needs to know of each member. The build makes it from the type library and embeds it beside
// that one; it is read once for each interface.
#pragma once

#include <array>
#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "frame/dispatch/name_table.h"
#include "platform/com_ptr.h"
#include "platform/platform.h"
#include "platform/variant.h"

namespace velk {

inline constexpr std::size_t kMaxArguments = 16;

inline constexpr const wchar_t* kCallPlans = L"CALLPLANS";  // the kind of the resource

struct Parameter {
    std::u16string name;
    VARTYPE type = VT_EMPTY;  // an automation type, or VT_ARRAY | VT_BSTR
    bool byReference = false;
    bool optional = false;
    bool isColour = false;  // a Long that may also be given as the unsigned number of the same bits
    Variant defaultValue;   // of `type`; for an optional VARIANT the "missing" value
    IID iid = IID_NULL;     // for VT_DISPATCH and VT_UNKNOWN: the interface that the member takes

    bool IsObject() const noexcept { return type == VT_DISPATCH || type == VT_UNKNOWN; }
};

struct CallPlan {
    unsigned slot = 0;  // index in the vtable
    std::vector<Parameter> parameters;
    VARTYPE result = VT_EMPTY;
    bool isLet = false;  // a property let or set: the last argument is the new value
};

inline constexpr std::size_t kMaxQuickArguments = 4;

// A member that takes at most a few numbers, texts and variants, all by reference: what late-bound clients call most.
struct QuickCall {
    unsigned slot = 0;
    VARTYPE result = VT_EMPTY;
    WORD flags = 0;                         // the DISPATCH_ flag that it answers to; 0 for no such member
    const Parameter* parameters = nullptr;  // null for none
    UINT count = 0;                         // of them
    UINT named = 0;                         // of the arguments: the new value of a property
};

class PlanReader;

class InterfacePlan {
  public:
    explicit InterfacePlan(REFIID iid);

    // The id of a member, or of one of a member's parameters; NameTable::kUnknown when there is none.
    DISPID MemberId(const wchar_t* name) const noexcept;
    DISPID ParameterId(DISPID member, std::u16string_view name) const noexcept;

    // The way to call a member for the DISPATCH_ flags of an Invoke; null when it has none.
    const CallPlan* Find(DISPID id, WORD flags) const noexcept;

    // Likewise for a quick call; null when the member is none.
    const QuickCall* Quick(DISPID id, WORD flags) const noexcept {
        if (static_cast<std::size_t>(id) >= quick_.size() || (flags & DISPATCH_PROPERTYPUTREF)) return nullptr;
        const bool puts = !(flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET));
        const QuickCall& call = quick_[static_cast<std::size_t>(id)][puts];
        return call.flags & flags ? &call : nullptr;
    }

  private:
    struct Member {
        std::array<std::optional<CallPlan>, 4> ways;  // function, property get, let, set
    };
    bool ReadFrom(PlanReader plans, REFIID iid);
    void ReadMember(PlanReader& plans);

    NameTable names_;
    std::vector<Member> members_;                  // by dispatch identifier
    std::vector<std::array<QuickCall, 2>> quick_;  // likewise: the call that reads or does, and the one that puts
};

// The plan of one interface: read at its first late-bound call, and kept until the module is unloaded.
class KeptPlan {
  public:
    explicit constexpr KeptPlan(const IID& iid) noexcept : iid_(iid) {}
    KeptPlan(const KeptPlan&) = delete;
    KeptPlan& operator=(const KeptPlan&) = delete;

    // Null only when memory ran out.
    const InterfacePlan* get() noexcept {
        const InterfacePlan* const plan = plan_.load(std::memory_order_acquire);
        return plan ? plan : Read();
    }

    static void ReleaseAll() noexcept;  // when the module is unloaded

  private:
    const InterfacePlan* Read() noexcept;

    const IID& iid_;
    std::atomic<const InterfacePlan*> plan_ = nullptr;
    KeptPlan* next_ = nullptr;
};

}  // namespace velk
