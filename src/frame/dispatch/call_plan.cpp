#include "frame/dispatch/call_plan.h"

#include <memory>
#include <stdexcept>

#include "frame/module/library.h"
#include "platform/system_errors.h"
#include "platform/text.h"

namespace velk {
namespace {

enum Way : std::size_t { kFunction, kGet, kLet, kSet };

// The type library comes with the code, so a member that does not fit is found the first time anyone runs it.
[[noreturn]] void Unsupported() { throw RuntimeError(Error::InvalidProcedureCall); }

Way WayOf(INVOKEKIND kind) {
    switch (kind) {
        case INVOKE_FUNC:
            return kFunction;
        case INVOKE_PROPERTYGET:
            return kGet;
        case INVOKE_PROPERTYPUT:
            return kLet;
        case INVOKE_PROPERTYPUTREF:
            return kSet;
    }
    Unsupported();
}

struct ResolvedType {
    VARTYPE type;
    bool byReference;
    IID iid;
};

ResolvedType Resolve(ITypeInfo* info, const TYPEDESC& description);

// Describes a type that the library names: an enumeration, an alias, or an interface.
ResolvedType ResolveNamed(ITypeInfo* info, HREFTYPE reference) {
    ComPtr<ITypeInfo> named;
    ThrowIfFailed(info->GetRefTypeInfo(reference, named.Receive()));
    TYPEATTR* raw = nullptr;
    ThrowIfFailed(named->GetTypeAttr(&raw));
    const auto release = [&](TYPEATTR* attributes) { named->ReleaseTypeAttr(attributes); };
    const std::unique_ptr<TYPEATTR, decltype(release)> attributes(raw, release);
    switch (attributes->typekind) {
        case TKIND_ENUM:
            return {VT_I4, false, IID_NULL};
        case TKIND_ALIAS:
            return Resolve(named.get(), attributes->tdescAlias);
        case TKIND_DISPATCH:
            return {VT_DISPATCH, false, attributes->guid};
        case TKIND_INTERFACE:
            return {VT_UNKNOWN, false, attributes->guid};
        default:
            Unsupported();
    }
}

ResolvedType ResolvePointer(ITypeInfo* info, const TYPEDESC& pointee) {
    ResolvedType target = Resolve(info, pointee);
    // An interface is always reached through one pointer; that pointer is the value itself.
    const bool isInterface = pointee.vt == VT_USERDEFINED && (target.type == VT_DISPATCH || target.type == VT_UNKNOWN);
    if (!isInterface) target.byReference = true;
    return target;
}

ResolvedType Resolve(ITypeInfo* info, const TYPEDESC& description) {
    switch (description.vt) {
        case VT_PTR:
            return ResolvePointer(info, *description.lptdesc);
        case VT_USERDEFINED:
            return ResolveNamed(info, description.hreftype);
        case VT_SAFEARRAY:
            if (description.lptdesc->vt != VT_BSTR) Unsupported();
            return {VT_ARRAY | VT_BSTR, false, IID_NULL};
        case VT_INT:
            return {VT_I4, false, IID_NULL};
        case VT_UINT:
            return {VT_UI4, false, IID_NULL};
        case VT_DISPATCH:
            return {VT_DISPATCH, false, IID_IDispatch};
        case VT_UNKNOWN:
            return {VT_UNKNOWN, false, IID_IUnknown};
        default:
            return {description.vt, false, IID_NULL};
    }
}

Variant DefaultOf(const Parameter& parameter, const PARAMDESC& description) {
    Variant value;
    if (description.wParamFlags & PARAMFLAG_FHASDEFAULT) {
        VARIANT& stated = description.pparamdescex->varDefaultValue;
        ThrowIfFailed(parameter.type == VT_VARIANT ? VariantCopy(&value, &stated)
                                                   : VariantChangeType(&value, &stated, 0, parameter.type));
    } else if (parameter.type == VT_VARIANT) {
        value.vt = VT_ERROR;
        value.scode = DISP_E_PARAMNOTFOUND;
    } else {
        value.vt = parameter.type;
        value.llVal = 0;
    }
    return value;
}

Parameter ReadParameter(ITypeInfo* info, const ELEMDESC& element) {
    const ResolvedType type = Resolve(info, element.tdesc);
    Parameter parameter;
    parameter.type = type.type;
    parameter.byReference = type.byReference;
    parameter.iid = type.iid;
    parameter.optional = (element.paramdesc.wParamFlags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)) != 0;
    if (parameter.optional) parameter.defaultValue = DefaultOf(parameter, element.paramdesc);
    return parameter;
}

CallPlan ReadPlan(ITypeInfo* info, const FUNCDESC& function) {
    CallPlan plan;
    plan.isLet = (function.invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
    plan.slot = static_cast<unsigned>(function.oVft) / sizeof(void*);
    for (SHORT i = 0; i < function.cParams; ++i) {
        const ELEMDESC& element = function.lprgelemdescParam[i];
        if (element.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) {
            plan.result = Resolve(info, element.tdesc).type;
        } else {
            plan.parameters.push_back(ReadParameter(info, element));
        }
    }
    if (plan.parameters.size() > kMaxArguments) Unsupported();
    return plan;
}

// The member's name followed by its parameters' names.
std::vector<Bstr> ReadNames(ITypeInfo* info, MEMBERID member) {
    BSTR raw[kMaxArguments + 2] = {};
    UINT count = 0;
    ThrowIfFailed(info->GetNames(member, raw, ARRAYSIZE(raw), &count));
    std::vector<Bstr> names(count);
    for (UINT i = 0; i < count; ++i) *names[i].Receive() = raw[i];
    return names;
}

// The description with vtable offsets. A dual interface shows its dispinterface first.
ComPtr<ITypeInfo> VtableInfo(REFIID iid) {
    const ComPtr<ITypeInfo> dispatchInfo = library::TypeInfo(iid);
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> vtable;
    ThrowIfFailed(dispatchInfo->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference));
    ThrowIfFailed(dispatchInfo->GetRefTypeInfo(reference, vtable.Receive()));
    return vtable;
}

}  // namespace

InterfacePlan::InterfacePlan(REFIID iid) {
    const ComPtr<ITypeInfo> info = VtableInfo(iid);
    for (UINT i = 0;; ++i) {
        FUNCDESC* raw = nullptr;
        if (FAILED(info->GetFuncDesc(i, &raw))) break;
        const auto release = [&](FUNCDESC* function) { info->ReleaseFuncDesc(function); };
        const std::unique_ptr<FUNCDESC, decltype(release)> function(raw, release);
        Add(info.get(), *function);
    }
}

void InterfacePlan::Add(ITypeInfo* info, const FUNCDESC& function) {
    if (function.memid < 0 || function.memid > 0xFFFF) Unsupported();
    const auto id = static_cast<std::size_t>(function.memid);
    const std::vector<Bstr> names = ReadNames(info, function.memid);
    if (names.empty()) Unsupported();
    if (names_.Find(reinterpret_cast<const char16_t*>(names[0].get())) == NameTable::kUnknown) {
        names_.Add(Utf16(View(names[0].get())), function.memid);
    }
    if (id >= members_.size()) {
        members_.resize(id + 1);
        getters_.resize(id + 1);
    }
    CallPlan plan = ReadPlan(info, function);
    if (plan.parameters.empty() && plan.result != VT_EMPTY) {
        getters_[id] = {plan.slot, plan.result, static_cast<WORD>(function.invkind)};
    }
    for (std::size_t i = 0; i < plan.parameters.size() && i + 1 < names.size(); ++i) {
        plan.parameters[i].name = Utf16(View(names[i + 1].get()));
    }
    members_[id].ways[WayOf(function.invkind)] = std::move(plan);
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

}  // namespace velk
