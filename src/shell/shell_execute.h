// CShellExecute: hands things to the shell and answers with the shell's verdict instead of raising errors.
#pragma once

#include <string>

#include "frame/object/automation_object.h"
#include "shell/shell_execute.idl.h"

namespace velk {

class CShellExecute final : public AutomationObject<_CShellExecute> {
  public:
    static const ClassInfo kInfo;

    CShellExecute() noexcept : AutomationObject(kInfo) {}

    STDMETHODIMP get_StillExecuting(VARIANT_BOOL* result) noexcept override;
    STDMETHODIMP Explore(LONG* lnghWnd, BSTR* strFolder, EnumShellExecuteShowStyles* eShowStyle,
                         EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP LaunchDocument(LONG* lnghWnd, BSTR* strDocument, BSTR* strStartIn,
                                EnumShellExecuteShowStyles* eShowStyle,
                                EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP LaunchEmail(LONG* lnghWnd, BSTR* strAddress, EnumShellExecuteShowStyles* eShowStyle,
                             EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP LaunchFolder(LONG* lnghWnd, BSTR* strFolder, EnumShellExecuteShowStyles* eShowStyle,
                              EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP LaunchProgram(LONG* lnghWnd, BSTR* strProgram, BSTR* strParameters, BSTR* strStartIn,
                               EnumShellExecuteShowStyles* eShowStyle,
                               EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP LaunchURL(LONG* lnghWnd, BSTR* strURL, EnumShellExecuteShowStyles* eShowStyle,
                           EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP PrintDocument(LONG* lnghWnd, BSTR* strDocument, EnumShellExecuteErrors* result) noexcept override;
    STDMETHODIMP ShowProperties(BSTR* PathFileName, LONG* HWndOwner) noexcept override;

  private:
    void Forget() noexcept;
    EnumShellExecuteErrors Execute(LONG* owner, const char* verb, const std::string& file, int show);
    EnumShellExecuteErrors ExecuteWatched(LONG* owner, const std::string& file, const std::string& parameters,
                                          const std::string& folder, int show);

    INT_PTR lastInstance_ = 0;  // what the shell answered to the last LaunchDocument or LaunchProgram
    // Deliberately never closed, neither by the next launch nor when the object is destroyed: the process keeps it.
    HANDLE lastProcess_ = nullptr;
};

}  // namespace velk
