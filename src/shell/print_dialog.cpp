#include "shell/print_dialog.h"

#include <commdlg.h>

#include "platform/com_ptr.h"
#include "platform/long_handles.h"
#include "shell/common_dialogs.h"

namespace velk {
namespace {

static_assert(sizeof(void*) != 4 || sizeof(PRINTDLGA) == 66);  // packed

}  // namespace

constinit const ClassInfo CPrintDialog::kInfo{
    .name = L"CPrintDialog",
    .clsid = __uuidof(::CPrintDialog),
    .iid = __uuidof(_CPrintDialog),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CPrintDialog::get_Copies(SHORT* result) noexcept { return Get(result, copies_); }

STDMETHODIMP CPrintDialog::put_Copies(SHORT* Value) noexcept { return Let(Value, copies_); }

STDMETHODIMP CPrintDialog::get_Flags(EnumPriFlags* result) noexcept { return Get(result, flags_); }

STDMETHODIMP CPrintDialog::put_Flags(EnumPriFlags* Value) noexcept { return Let(Value, flags_); }

STDMETHODIMP CPrintDialog::get_FromPage(SHORT* result) noexcept { return Get(result, fromPage_); }

STDMETHODIMP CPrintDialog::put_FromPage(SHORT* Value) noexcept { return Let(Value, fromPage_); }

STDMETHODIMP CPrintDialog::get_ToPage(SHORT* result) noexcept { return Get(result, toPage_); }

STDMETHODIMP CPrintDialog::put_ToPage(SHORT* Value) noexcept { return Let(Value, toPage_); }

STDMETHODIMP CPrintDialog::get_Min(SHORT* result) noexcept { return Get(result, min_); }

STDMETHODIMP CPrintDialog::put_Min(SHORT* Value) noexcept { return Let(Value, min_); }

STDMETHODIMP CPrintDialog::get_Max(SHORT* result) noexcept { return Get(result, max_); }

STDMETHODIMP CPrintDialog::put_Max(SHORT* Value) noexcept { return Let(Value, max_); }

STDMETHODIMP CPrintDialog::get_hWndParent(LONG* result) noexcept { return Get(result, hWndParent_); }

STDMETHODIMP CPrintDialog::put_hWndParent(LONG* Value) noexcept { return Let(Value, hWndParent_); }

STDMETHODIMP CPrintDialog::get_HDC(LONG* result) noexcept { return Get(result, hdc_); }

STDMETHODIMP CPrintDialog::Show(VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] { return Choose(); });
}

bool CPrintDialog::Choose() {
    PRINTDLGA record{};
    record.lStructSize = sizeof(record);
    record.hwndOwner = WindowFrom(hWndParent_);
    record.nFromPage = static_cast<WORD>(fromPage_);
    record.nToPage = static_cast<WORD>(toPage_);
    record.nMinPage = static_cast<WORD>(min_);
    record.nMaxPage = static_cast<WORD>(max_);
    record.nCopies = static_cast<WORD>(copies_);
    record.Flags = static_cast<DWORD>(flags_);
    if (!comdlg32.Find<decltype(PrintDlgA)>("PrintDlgA")(&record)) return false;
    hdc_ = LongFrom(record.hDC);
    fromPage_ = static_cast<SHORT>(record.nFromPage);
    toPage_ = static_cast<SHORT>(record.nToPage);
    copies_ = static_cast<SHORT>(record.nCopies);
    flags_ = static_cast<LONG>(record.Flags);
    return true;
}

}  // namespace velk
