// CHtmlHelp: opens a compiled help file through the platform's help engine, which is loaded at first use.
#pragma once

#include <string>

#include "frame/object/automation_object.h"
#include "shell/html_help.idl.h"

namespace velk {

class CHtmlHelp final : public AutomationObject<_CHtmlHelp> {
  public:
    static const ClassInfo kInfo;

    CHtmlHelp() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_HelpFile(BSTR* result) noexcept override;
    STDMETHODIMP put_HelpFile(BSTR* strHelpFile) noexcept override;
    STDMETHODIMP put_ParentHWND(LONG* lngParentHWND) noexcept override;
    STDMETHODIMP OpenContents() noexcept override;
    STDMETHODIMP OpenContext(LONG* lngContextID) noexcept override;
    STDMETHODIMP OpenFinder() noexcept override;
    STDMETHODIMP OpenSearch() noexcept override;
    STDMETHODIMP OpenTopic(BSTR* Topic) noexcept override;

  private:
    void Open(UINT command, DWORD_PTR data) const;

    std::wstring helpFile_;
    LONG parent_ = 0;
};

}  // namespace velk
