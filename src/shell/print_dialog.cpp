#include "shell/print_dialog.h"

#include <commdlg.h>

#include "platform/com_ptr.h"
#include "platform/long_handles.h"

namespace velk {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(PRINTDLGA) == 66);  // packed

}  // namespace

constinit const ClassInfo CPrintDialog::kInfo{
    .name = L"CPrintDialog",
    .clsid = __uuidof(::CPrintDialog),
    .iid = __uuidof(_CPrintDialog),
    .events = nullptr,
    .policy = FailurePolicy::Report,
    .componentFailure = S_OK,
    .creationFailed = nullptr,
};

STDMETHODIMP CPrintDialog::get_Copies(SHORT* result) noexcept {
    return Guard(L"Copies", result, [&] { return copies_; });
}

STDMETHODIMP CPrintDialog::put_Copies(SHORT* Value) noexcept {
    return Guard(L"Copies", [&] { copies_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_Flags(EnumPriFlags* result) noexcept {
    return Guard(L"Flags", result, [&] { return flags_; });
}

STDMETHODIMP CPrintDialog::put_Flags(EnumPriFlags* Value) noexcept {
    return Guard(L"Flags", [&] { flags_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_FromPage(SHORT* result) noexcept {
    return Guard(L"FromPage", result, [&] { return fromPage_; });
}

STDMETHODIMP CPrintDialog::put_FromPage(SHORT* Value) noexcept {
    return Guard(L"FromPage", [&] { fromPage_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_ToPage(SHORT* result) noexcept {
    return Guard(L"ToPage", result, [&] { return toPage_; });
}

STDMETHODIMP CPrintDialog::put_ToPage(SHORT* Value) noexcept {
    return Guard(L"ToPage", [&] { toPage_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_Min(SHORT* result) noexcept {
    return Guard(L"Min", result, [&] { return min_; });
}

STDMETHODIMP CPrintDialog::put_Min(SHORT* Value) noexcept {
    return Guard(L"Min", [&] { min_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_Max(SHORT* result) noexcept {
    return Guard(L"Max", result, [&] { return max_; });
}

STDMETHODIMP CPrintDialog::put_Max(SHORT* Value) noexcept {
    return Guard(L"Max", [&] { max_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_hWndParent(LONG* result) noexcept {
    return Guard(L"hWndParent", result, [&] { return hWndParent_; });
}

STDMETHODIMP CPrintDialog::put_hWndParent(LONG* Value) noexcept {
    return Guard(L"hWndParent", [&] { hWndParent_ = Given(Value); });
}

STDMETHODIMP CPrintDialog::get_HDC(LONG* result) noexcept {
    return Guard(L"HDC", result, [&] { return hdc_; });
}

STDMETHODIMP CPrintDialog::Show(VARIANT_BOOL* result) noexcept {
    const ComPtr<_CPrintDialog> alive(this);  // the client's code runs while the dialog is open
    return Guard(L"Show", result, [&] { return Choose(); });
}

bool CPrintDialog::Choose() noexcept {
    PRINTDLGA record{};
    record.lStructSize = sizeof(record);
    record.hwndOwner = WindowFrom(hWndParent_);
    record.nFromPage = static_cast<WORD>(fromPage_);
    record.nToPage = static_cast<WORD>(toPage_);
    record.nMinPage = static_cast<WORD>(min_);
    record.nMaxPage = static_cast<WORD>(max_);
    record.nCopies = static_cast<WORD>(copies_);
    record.Flags = static_cast<DWORD>(flags_);
    if (!PrintDlgA(&record)) return false;
    hdc_ = LongFrom(record.hDC);
    fromPage_ = static_cast<SHORT>(record.nFromPage);
    toPage_ = static_cast<SHORT>(record.nToPage);
    copies_ = static_cast<SHORT>(record.nCopies);
    flags_ = static_cast<EnumPriFlags>(record.Flags);
    return true;
}

}  // namespace velk
