// CScreenshot: a part of the screen, put on the clipboard as a bitmap.
#pragma once

#include "drawing/screenshot.idl.h"
#include "frame/object/automation_object.h"

namespace velk {

class CScreenshot final : public AutomationObject<_CScreenshot> {
  public:
    static const ClassInfo kInfo;

    CScreenshot() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP CaptureActiveWindow() noexcept override;
    STDMETHODIMP CaptureDesktop() noexcept override;
    STDMETHODIMP CaptureRectangle(LONG* Left, LONG* Top, LONG* Width, LONG* Height) noexcept override;
    STDMETHODIMP CaptureWindow(LONG* hWnd) noexcept override;
};

}  // namespace velk
