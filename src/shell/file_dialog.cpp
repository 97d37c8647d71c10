#include "shell/file_dialog.h"

#include <commdlg.h>

#include <algorithm>

#include "platform/com_ptr.h"
#include "platform/long_handles.h"
#include "platform/text.h"
#include "shell/common_dialogs.h"
#include "shell/file_dialog_text.h"

namespace velk {
namespace {

// Without the fields that came later.
static_assert(sizeof(void*) != 4 || sizeof(OPENFILENAME_NT4A) == 76);

// A text of fixed size in the ANSI code page, for the dialog to write into.
class DialogBuffer {
  public:
    DialogBuffer(std::wstring_view text, SHORT size)
        : bytes_(ToAnsi(Wide(file_dialog::Padded(Utf16(text), size)))),
          // A code page may have one byte for two characters; the dialog counts bytes.
          length_(std::max(bytes_.size(), static_cast<std::size_t>(size))) {
        bytes_.resize(length_ + kBehind);
        before_ = bytes_;
    }

    char* data() noexcept { return bytes_.data(); }
    std::string_view Filled() {
        file_dialog::DropRemains(bytes_, before_);
        return {bytes_.data(), length_};
    }

  private:
    // A text that fills the buffer needs an end, and when a choice does not fit, the dialog writes two bytes whatever
    // the size.
    static constexpr std::size_t kBehind = 2;

    std::string bytes_;
    std::string before_;
    std::size_t length_;
};

}  // namespace

constinit const ClassInfo CFileDialog::kInfo{
    .name = L"CFileDialog",
    .clsid = __uuidof(::CFileDialog),
    .iid = __uuidof(_CFileDialog),
    .policy = FailurePolicy::Report,
};

STDMETHODIMP CFileDialog::get_DefaultExt(BSTR* result) noexcept { return Get(result, defaultExt_); }

STDMETHODIMP CFileDialog::put_DefaultExt(BSTR* Value) noexcept { return Let(Value, defaultExt_); }

STDMETHODIMP CFileDialog::get_DialogTitle(BSTR* result) noexcept { return Get(result, dialogTitle_); }

STDMETHODIMP CFileDialog::put_DialogTitle(BSTR* Value) noexcept { return Let(Value, dialogTitle_); }

STDMETHODIMP CFileDialog::get_Filename(BSTR* result) noexcept { return Get(result, filename_); }

STDMETHODIMP CFileDialog::put_Filename(BSTR* Value) noexcept { return Let(Value, filename_); }

STDMETHODIMP CFileDialog::get_FileTitle(BSTR* result) noexcept { return Get(result, fileTitle_); }

STDMETHODIMP CFileDialog::put_FileTitle(BSTR* Value) noexcept { return Let(Value, fileTitle_); }

STDMETHODIMP CFileDialog::get_Filter(BSTR* result) noexcept { return Get(result, filter_); }

STDMETHODIMP CFileDialog::put_Filter(BSTR* Value) noexcept { return Let(Value, filter_); }

STDMETHODIMP CFileDialog::get_FilterIndex(SHORT* result) noexcept { return Get(result, filterIndex_); }

STDMETHODIMP CFileDialog::put_FilterIndex(SHORT* Value) noexcept { return Let(Value, filterIndex_); }

STDMETHODIMP CFileDialog::get_Flags(EnumFilFlags* result) noexcept { return Get(result, flags_); }

STDMETHODIMP CFileDialog::put_Flags(EnumFilFlags* Value) noexcept { return Let(Value, flags_); }

STDMETHODIMP CFileDialog::get_hWndParent(LONG* result) noexcept { return Get(result, hWndParent_); }

STDMETHODIMP CFileDialog::put_hWndParent(LONG* Value) noexcept { return Let(Value, hWndParent_); }

STDMETHODIMP CFileDialog::get_InitialDir(BSTR* result) noexcept {
    return Guard(result, [&] { return Bstr(initialDir_.value_or(L"")); });
}

STDMETHODIMP CFileDialog::put_InitialDir(BSTR* Value) noexcept {
    return Guard([&] {
        const BSTR folder = Given(Value);
        initialDir_ = folder ? std::optional<std::wstring>(View(folder)) : std::nullopt;
    });
}

STDMETHODIMP CFileDialog::get_MaxFileSize(SHORT* result) noexcept { return Get(result, maxFileSize_); }

STDMETHODIMP CFileDialog::put_MaxFileSize(SHORT* Value) noexcept { return Let(Value, maxFileSize_); }

STDMETHODIMP CFileDialog::Show(VARIANT_BOOL* fOpen, VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] { return Choose(Given(fOpen) != VARIANT_FALSE); });
}

bool CFileDialog::Choose(bool toOpen) {
    DialogBuffer file(filename_, maxFileSize_);
    DialogBuffer title(fileTitle_, maxFileSize_);
    const std::string caption = ToAnsi(dialogTitle_);
    const std::string extension = ToAnsi(defaultExt_);
    const std::string filter = ToAnsi(Wide(file_dialog::FilterList(Utf16(filter_))));
    const std::string folder = ToAnsi(initialDir_.value_or(L""));
    OPENFILENAMEA record{};
    record.lStructSize = sizeof(OPENFILENAME_NT4A);
    record.hwndOwner = WindowFrom(hWndParent_);
    record.lpstrTitle = caption.c_str();
    record.lpstrDefExt = extension.c_str();
    record.Flags = static_cast<DWORD>(flags_);
    record.nFilterIndex = static_cast<DWORD>(filterIndex_);
    record.lpstrInitialDir = initialDir_ ? folder.c_str() : nullptr;
    record.lpstrFilter = filter.c_str();
    record.lpstrFile = file.data();
    record.nMaxFile = static_cast<DWORD>(maxFileSize_);
    record.lpstrFileTitle = title.data();
    record.nMaxFileTitle = static_cast<DWORD>(maxFileSize_);
    using Show = decltype(GetOpenFileNameA);
    if (!comdlg32.Find<Show>(toOpen ? "GetOpenFileNameA" : "GetSaveFileNameA")(&record)) return false;
    filename_ = TrimNulls(file.Filled());
    fileTitle_ = TrimNulls(title.Filled());
    return true;
}

std::wstring CFileDialog::TrimNulls(std::string_view buffer) const noexcept {
    std::wstring text;
    Guard([&] { text = Wide(file_dialog::TrimNulls(FromAnsi(buffer))); });
    return text;
}

}  // namespace velk
