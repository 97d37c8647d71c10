// CFontDialog: the platform's font dialog round a font object.
//
// Deliberate: Style never reaches the dialog, and FontType is always 0.
#pragma once

#include <string>

#include "frame/object/automation_object.h"
#include "platform/com_ptr.h"
#include "shell/font_dialog.idl.h"

namespace velk {

struct FontRecord;

class CFontDialog final : public AutomationObject<_CFontDialog> {
  public:
    static const ClassInfo kInfo;

    CFontDialog() noexcept : AutomationObject(kInfo) {}
    void OnCreate();

    STDMETHODIMP get_Color(LONG* result) noexcept override;
    STDMETHODIMP put_Color(LONG* Value) noexcept override;
    STDMETHODIMP put_Flags(EnumFonFlags* Value) noexcept override;
    STDMETHODIMP get_Flags(EnumFonFlags* result) noexcept override;
    STDMETHODIMP get_Font(IFontDisp** result) noexcept override;
    STDMETHODIMP get_FontType(EnumFonFontType* result) noexcept override;
    STDMETHODIMP get_hWndParent(LONG* result) noexcept override;
    STDMETHODIMP put_hWndParent(LONG* Value) noexcept override;
    STDMETHODIMP get_Max(SHORT* result) noexcept override;
    STDMETHODIMP put_Max(SHORT* Value) noexcept override;
    STDMETHODIMP get_Min(SHORT* result) noexcept override;
    STDMETHODIMP put_Min(SHORT* Value) noexcept override;
    STDMETHODIMP get_Style(BSTR* result) noexcept override;
    STDMETHODIMP put_Style(BSTR* Value) noexcept override;
    STDMETHODIMP Show(VARIANT_BOOL* result) noexcept override;

  private:
    IFont& OwnFont() const;
    FontRecord Describe() const;
    bool Choose(FontRecord& record, LONG& color) const;
    void TakeOver(const FontRecord& record) const;
    SHORT PointsToHeight(SHORT points) const noexcept;
    SHORT HeightToPoints(LONG height) const noexcept;

    LONG color_ = 0;
    LONG flags_ = FonBoth | FonInitToLogFontStruct;
    ComPtr<IFont> font_;
    SHORT max_ = 0;
    SHORT min_ = 0;
    LONG hWndParent_ = 0;
    std::wstring style_;
};

}  // namespace velk
