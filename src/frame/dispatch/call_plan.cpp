#include "frame/dispatch/call_plan.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "frame/module/library.h"
#include "platform/lock.h"
#include "platform/system_errors.h"
#include "platform/text.h"

namespace velk {
namespace {

SRWLOCK plansLock = SRWLOCK_INIT;
KeptPlan* firstPlan = nullptr;  // of all that were read

enum Way : std::size_t { kFunction, kGet, kLet, kSet };

// The plans come with the code, so one that does not fit is found the first time anyone runs it.
[[noreturn]] void Unsupported() { throw RuntimeError(Error::InvalidProcedureCall); }

Way WayOf(WORD kind) {
    switch (kind) {
        case INVOKE_FUNC:
            return kFunction;
        case INVOKE_PROPERTYGET:
            return kGet;
        case INVOKE_PROPERTYPUT:
            return kLet;
        case INVOKE_PROPERTYPUTREF:
            return kSet;
        default:
            Unsupported();
    }
}

}  // namespace

// The plans of one type library, as tools/typelib/call_plans.cpp writes them: of each dual interface its identifier,
// the size in bytes of what follows, and the members; of each member and parameter the values in the order in which
// they are read below. Numbers are 16-bit words. A text is the number of its characters and these, a byte each, as all
// are ASCII.
class PlanReader {
  public:
    explicit PlanReader(std::span<const std::byte> bytes) noexcept : bytes_(bytes) {}

    bool AtEnd() const noexcept { return bytes_.empty(); }

    template <class T = WORD>
    T Take() {
        T value;
        std::memcpy(&value, Skip(sizeof value).data(), sizeof value);
        return value;
    }
    std::u16string TakeText() {
        std::u16string text;
        for (const std::byte character : Skip(Take())) text += static_cast<char16_t>(character);
        return text;
    }
    std::span<const std::byte> Skip(std::size_t size) {
        if (size > bytes_.size()) Unsupported();
        const auto skipped = bytes_.first(size);
        bytes_ = bytes_.subspan(size);
        return skipped;
    }

  private:
    std::span<const std::byte> bytes_;
};

namespace {

Variant ReadDefault(PlanReader& plans) {
    Variant value;
    const VARTYPE type = plans.Take();
    if (type == VT_BSTR) {
        const std::u16string text = plans.TakeText();
        if (!text.empty()) value.bstrVal = Bstr(Wide(text)).Detach();
    } else {
        value.llVal = plans.Take<LONGLONG>();
    }
    value.vt = type;
    return value;
}

// A colour is unsigned in the type library. Late-bound clients have signed numbers only, and name system colours by
// negative ones.
VARTYPE Signed(VARTYPE type) noexcept { return type == VT_UI4 ? VARTYPE{VT_I4} : type; }

bool IsNumber(VARTYPE type) noexcept { return IsSelfContained(type) && type != VT_ERROR && type != VT_DECIMAL; }

// Whether all arguments are of kinds that a member which only reads them can be lent.
bool IsQuick(const CallPlan& plan) noexcept {
    return plan.parameters.size() <= kMaxQuickArguments &&
           std::all_of(plan.parameters.begin(), plan.parameters.end(), [](const Parameter& parameter) {
               const VARTYPE type = parameter.type;
               return parameter.byReference && (IsNumber(type) || type == VT_BSTR || type == VT_VARIANT);
           });
}

Parameter ReadParameter(PlanReader& plans) {
    Parameter parameter;
    parameter.name = plans.TakeText();
    const VARTYPE type = plans.Take();
    parameter.isColour = type == VT_UI4;
    parameter.type = Signed(type);
    parameter.byReference = plans.Take() != 0;
    parameter.optional = plans.Take() != 0;
    if (parameter.IsObject()) parameter.iid = plans.Take<IID>();
    if (parameter.optional) parameter.defaultValue = ReadDefault(plans);
    return parameter;
}

}  // namespace

// An interface that the library implements and another library owns stands among the second one's.
InterfacePlan::InterfacePlan(REFIID iid) {
    if (!ReadFrom(PlanReader(library::Resource(1, kCallPlans)), iid) &&
        !ReadFrom(PlanReader(library::Resource(2, kCallPlans)), iid)) {
        Unsupported();
    }
}

bool InterfacePlan::ReadFrom(PlanReader plans, REFIID iid) {
    while (!plans.AtEnd()) {
        const bool wanted = plans.Take<IID>() == iid;
        PlanReader members(plans.Skip(plans.Take<DWORD>()));
        if (!wanted) continue;
        for (WORD count = members.Take(); count > 0; --count) ReadMember(members);
        return true;
    }
    return false;
}

void InterfacePlan::ReadMember(PlanReader& plans) {
    const std::u16string name = plans.TakeText();
    const std::size_t id = plans.Take();
    const WORD kind = plans.Take();
    if (names_.Find(name.c_str()) == NameTable::kUnknown) names_.Add(name, static_cast<DISPID>(id));
    if (id >= members_.size()) {
        members_.resize(id + 1);
        quick_.resize(id + 1);
    }
    CallPlan plan;
    plan.isLet = (kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
    plan.slot = plans.Take();
    plan.result = Signed(plans.Take());
    for (WORD count = plans.Take(); count > 0; --count) plan.parameters.push_back(ReadParameter(plans));
    if (kind != INVOKE_PROPERTYPUTREF && IsQuick(plan)) {
        const auto count = static_cast<UINT>(plan.parameters.size());
        quick_[id][plan.isLet] = {plan.slot, plan.result, kind, plan.parameters.data(), count, plan.isLet};
    }
    members_[id].ways[WayOf(kind)] = std::move(plan);
}

DISPID InterfacePlan::MemberId(const wchar_t* name) const noexcept {
    return names_.Find(reinterpret_cast<const char16_t*>(name));
}

DISPID InterfacePlan::ParameterId(DISPID member, std::u16string_view name) const noexcept {
    for (const std::optional<CallPlan>& way : members_[static_cast<std::size_t>(member)].ways) {
        if (!way) continue;
        for (std::size_t i = 0; i < way->parameters.size(); ++i) {
            if (SameName(way->parameters[i].name, name)) return static_cast<DISPID>(i);
        }
    }
    return NameTable::kUnknown;
}

const CallPlan* InterfacePlan::Find(DISPID id, WORD flags) const noexcept {
    if (id < 0 || static_cast<std::size_t>(id) >= members_.size()) return nullptr;
    const auto& ways = members_[static_cast<std::size_t>(id)].ways;
    const auto way = [&](WORD flag, Way which) { return (flags & flag) && ways[which] ? &*ways[which] : nullptr; };
    if (const CallPlan* plan = way(DISPATCH_METHOD, kFunction)) return plan;
    if (const CallPlan* plan = way(DISPATCH_PROPERTYGET, kGet)) return plan;
    if (const CallPlan* plan = way(DISPATCH_PROPERTYPUTREF, kSet)) return plan;
    return way(DISPATCH_PROPERTYPUT, kLet);
}

const InterfacePlan* KeptPlan::Read() noexcept try {
    const Lock lock(plansLock);
    if (!plan_) {
        plan_ = new InterfacePlan(iid_);
        next_ = std::exchange(firstPlan, this);
    }
    return plan_;
} catch (...) {
    return nullptr;
}

void KeptPlan::ReleaseAll() noexcept {
    for (KeptPlan* kept = firstPlan; kept; kept = kept->next_) delete kept->plan_.load();
}

}  // namespace velk
