#include "containers/variant_search.h"

#include <optional>

#include "containers/linked_list.idl.h"
#include "containers/stored_variant.h"
#include "platform/com_ptr.h"
#include "platform/system_errors.h"
#include "platform/text.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

// Like the platform's own comparison, VARCMP_LT, VARCMP_EQ or VARCMP_GT; a number that is none is greater than any.
template <class T>
HRESULT Comparison(const T& left, const T& right) noexcept {
    return left == right ? VARCMP_EQ : left < right ? VARCMP_LT : VARCMP_GT;
}

// The type in which the platform compares a number by value, where it refuses the number's own.
VARTYPE ComparableType(VARTYPE type) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI2:
        case VT_INT:
            return VT_I4;
        case VT_UI4:
        case VT_UINT:
            return VT_I8;
        case VT_UI8:
            return VT_DECIMAL;
        default:
            return type;
    }
}

HRESULT OrderByPlatform(const VARIANT& left, const VARIANT& right) {
    VARIANT* operands[] = {const_cast<VARIANT*>(&left), const_cast<VARIANT*>(&right)};
    Variant converted[2];
    for (int i = 0; i < 2; ++i) {
        const VARTYPE type = ComparableType(operands[i]->vt);
        if (type == operands[i]->vt) continue;
        ThrowIfFailed(VariantChangeType(&converted[i], operands[i], 0, type));
        operands[i] = &converted[i];
    }
    const HRESULT order = VarCmp(operands[0], operands[1], LOCALE_USER_DEFAULT, 0);
    ThrowIfFailed(order);
    return order;
}

HRESULT OrderOf(const VARIANT& left, const VARIANT& right) {
    if (left.vt != right.vt) return OrderByPlatform(left, right);
    switch (left.vt) {
        case VT_I2:
            return Comparison(left.iVal, right.iVal);
        case VT_I4:
            return Comparison(left.lVal, right.lVal);
        case VT_R4:
            return Comparison(left.fltVal, right.fltVal);
        case VT_R8:
            return Comparison(left.dblVal, right.dblVal);
        case VT_DATE:
            return Comparison(left.date, right.date);
        case VT_CY:
            return Comparison(left.cyVal.int64, right.cyVal.int64);
        case VT_BOOL:
            return Comparison(left.boolVal, right.boolVal);
        case VT_UI1:
            return Comparison(left.bVal, right.bVal);
        case VT_BSTR:
            return Comparison(View(left.bstrVal).compare(View(right.bstrVal)), 0);
        default:
            return OrderByPlatform(left, right);
    }
}

// A number that is compared with another one of these as a Double, exactly. False for everything else.
bool NumberOf(const VARIANT& value, double* number) noexcept {
    if (value.vt == VT_R8) return *number = value.dblVal, true;
    LONG whole = 0;
    return WholeNumberOf(value, &whole) && (*number = whole, true);
}

// What an item is worth beside such a number: the platform takes nothing for 0, True for -1, and a number for a day if
// it can be one.
bool WorthOf(const VARIANT& item, bool besideDay, double* worth) noexcept {
    switch (item.vt) {
        case VT_EMPTY:
            return *worth = 0, true;
        case VT_BOOL:
            return *worth = item.boolVal, true;
        case VT_DATE:
            return *worth = item.date, besideDay;
        default:
            return NumberOf(item, worth);
    }
}

// Nothing is equal to Null, and nothing is unequal to it.
bool Meets(LONG condition, HRESULT order) noexcept {
    switch (condition) {
        case fccNotEqual:
            return order == VARCMP_LT || order == VARCMP_GT;
        case fccLess:
            return order == VARCMP_LT;
        case fccLessEqual:
            return order == VARCMP_LT || order == VARCMP_EQ;
        case fccGreater:
            return order == VARCMP_GT;
        case fccGreaterEqual:
            return order == VARCMP_GT || order == VARCMP_EQ;
        default:
            return order == VARCMP_EQ;
    }
}

// The text of a value as a script would write it; none for Null.
class Text {
  public:
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    explicit Text(const VARIANT& value) {
        if (value.vt == VT_BSTR) {
            view_ = View(value.bstrVal);
        } else if (value.vt == VT_I4 || value.vt == VT_I2) {
            digits_ = DecimalText(value.vt == VT_I4 ? value.lVal : value.iVal);
            view_ = digits_;
        } else if (value.vt != VT_NULL) {
            ThrowIfFailed(VariantChangeTypeEx(&converted_, const_cast<VARIANT*>(&value), LOCALE_USER_DEFAULT,
                                              VARIANT_ALPHABOOL, VT_BSTR));
            view_ = View(converted_.bstrVal);
        }
    }

    // An empty text contains nothing, not even an empty one.
    bool Contains(const Text& other) const noexcept {
        return view_ && other.view_ && !view_->empty() && view_->find(*other.view_) != view_->npos;
    }

  private:
    Variant converted_;
    std::wstring digits_;
    std::optional<std::wstring_view> view_;
};

ComPtr<IUnknown> IdentityOf(IUnknown* object) {
    const ComPtr<IUnknown> identity = ComPtr<IUnknown>(object).As<IUnknown>();
    return identity ? identity : ComPtr<IUnknown>(object);
}

// Asking objects who they are runs foreign code, which may change the list. So the list only looks for objects, and
// each is asked when nothing points into the list.
LONG FindObject(VariantList& list, IUnknown* wanted, bool same, LONG first, bool descending) {
    const ComPtr<IUnknown> identity = IdentityOf(wanted);
    LONG left = list.upper();
    for (LONG at = first;; at = list.Beyond(at, descending)) {
        ComPtr<IUnknown> object;
        at = list.Find(at, descending, [&](const Variant& item) {
            if (!HoldsObject(item)) return false;
            object = ComPtr<IUnknown>(item.punkVal);
            return true;
        });
        if (at == 0 || left-- < 0) return 0;
        if ((IdentityOf(object.get()).get() == identity.get()) == same) return at;
    }
}

}  // namespace

LONG FindVariant(VariantList& list, const Variant& wanted, LONG condition, LONG start, bool descending) {
    const LONG first = list.SearchStart(start, descending);
    if (HoldsObject(wanted)) return FindObject(list, wanted.punkVal, condition != fccNotEqual, first, descending);
    double number = 0;
    if (condition != fccInStr && NumberOf(wanted, &number)) {
        unsigned met = 0;  // a bit for each order
        for (const HRESULT order : {VARCMP_LT, VARCMP_EQ, VARCMP_GT}) met |= unsigned{Meets(condition, order)} << order;
        constexpr double kFirstDay = -657434, kAfterLastDay = 2958466;
        const bool day = number >= kFirstDay && number < kAfterLastDay;
        return list.Find(first, descending, [&, number, met, day](const Variant& item) {
            double value = 0;
            if (WorthOf(item, day, &value)) return (met >> Comparison(value, number) & 1) != 0;
            return !HoldsObject(item) && Meets(condition, OrderOf(item, wanted));
        });
    }
    const auto find = [&](auto matches) {
        return list.Find(first, descending, [&](const Variant& item) { return !HoldsObject(item) && matches(item); });
    };
    if (condition == fccInStr) {
        const Text text(wanted);
        return find([&](const Variant& item) { return Text(item).Contains(text); });
    }
    return find([&](const Variant& item) { return Meets(condition, OrderOf(item, wanted)); });
}

}  // namespace velk
