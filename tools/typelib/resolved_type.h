// What a parameter or a result of a type library is to a late-bound call.
#pragma once

#include "tools/typelib/type_reader.h"

namespace velk {

// A member that fits no plan ends the build.
[[noreturn]] inline void Unsupported() { throw RuntimeError(Error::InvalidProcedureCall); }

struct ResolvedType {
    VARTYPE type;
    bool byReference = false;
    IID iid = IID_NULL;
};

inline ResolvedType Resolve(const Type& info, const TYPEDESC& description);

// Describes a type that the library names: an enumeration, an alias, or an interface.
inline ResolvedType ResolveNamed(const Type& info, HREFTYPE reference) {
    Type named;
    ThrowIfFailed(info->GetRefTypeInfo(reference, named.Receive()));
    const auto attributes = AttributesOf(named);
    switch (attributes->typekind) {
        case TKIND_ENUM:
            return {VT_I4};
        case TKIND_ALIAS:
            return Resolve(named, attributes->tdescAlias);
        case TKIND_DISPATCH:
            return {VT_DISPATCH, false, attributes->guid};
        case TKIND_INTERFACE:
            return {VT_UNKNOWN, false, attributes->guid};
        default:
            Unsupported();
    }
}

inline ResolvedType ResolvePointer(const Type& info, const TYPEDESC& pointee) {
    ResolvedType target = Resolve(info, pointee);
    // An interface is always reached through one pointer; that pointer is the value itself.
    const bool isInterface = pointee.vt == VT_USERDEFINED && (target.type == VT_DISPATCH || target.type == VT_UNKNOWN);
    if (!isInterface) target.byReference = true;
    return target;
}

inline ResolvedType Resolve(const Type& info, const TYPEDESC& description) {
    switch (description.vt) {
        case VT_PTR:
            return ResolvePointer(info, *description.lptdesc);
        case VT_USERDEFINED:
            return ResolveNamed(info, description.hreftype);
        case VT_SAFEARRAY:
            if (description.lptdesc->vt != VT_BSTR) Unsupported();
            return {VT_ARRAY | VT_BSTR};
        case VT_INT:
            return {VT_I4};
        case VT_DISPATCH:
            return {VT_DISPATCH, false, IID_IDispatch};
        case VT_UNKNOWN:
            return {VT_UNKNOWN, false, IID_IUnknown};
        default:
            return {description.vt};
    }
}

}  // namespace velk
