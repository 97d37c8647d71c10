; The installer. tools/packaging/package runs it in the staged folder, with VERSION and OUTFILE and a files.nsh made from what is there.
;
; Silent: /S, with /AllUsers or /CurrentUser (default: all users if this user may, else the current one) and /D=folder.
; Exit codes: 0 done, 1 cancelled, 2 stopped, 3 a newer version is installed, 4 registration failed, 5 a library is in use.
Unicode true
ManifestSupportedOS all
SetCompressor /SOLID lzma
SetDateSave off

!define NAME "VelkSupport"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define MULTIUSER_EXECUTIONLEVEL Highest
!define MULTIUSER_MUI
!define MULTIUSER_INSTALLMODE_COMMANDLINE
!define MULTIUSER_INSTALLMODE_INSTDIR "${NAME}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_INSTDIR_REGISTRY_VALUENAME "InstallLocation"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_KEY "${UNINSTALL_KEY}"
!define MULTIUSER_INSTALLMODE_DEFAULT_REGISTRY_VALUENAME "UninstallString"

!include LogicLib.nsh
!include FileFunc.nsh
!include WordFunc.nsh
!include x64.nsh
!include MultiUser.nsh
!include MUI2.nsh
!include files.nsh

Name "${NAME} ${VERSION}"
OutFile "${OUTFILE}"
BrandingText " "
ShowInstDetails show
VIProductVersion "${VERSION}"
VIAddVersionKey "FileDescription" "Velk Support Functions: setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" " "
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "ProductVersion" "${VERSION}"

!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Var Mode     ; the switch that names the mode chosen
Var Failed   ; what could not be registered
Var Previous ; folder of the version installed before

; The libraries register for one scope; left to themselves they take the machine's part when they may write there.
!macro ChooseScope
    ${If} $MultiUser.InstallMode == "AllUsers"
        StrCpy $Mode "/AllUsers"
        System::Call 'kernel32::SetEnvironmentVariable(t "VELKSPRT_SCOPE", t "machine")'
    ${Else}
        StrCpy $Mode "/CurrentUser"
        System::Call 'kernel32::SetEnvironmentVariable(t "VELKSPRT_SCOPE", t "user")'
    ${EndIf}
!macroend

!macro Regsvr32 PROGRAM SWITCH FILE
    ExecWait '"${PROGRAM}" /s ${SWITCH} "${FILE}"' $0
    ${If} $0 != 0
        StrCpy $Failed "${FILE}"
    ${EndIf}
!macroend

; This program is a 32-bit one: what it sees as the system's folder is the 32-bit one.
!macro RegisterLibrary FILE
    !insertmacro Regsvr32 "$SYSDIR\regsvr32.exe" "" "$INSTDIR\x86\${FILE}"
    ${If} ${RunningX64}
        !insertmacro Regsvr32 "$WINDIR\Sysnative\regsvr32.exe" "" "$INSTDIR\x64\${FILE}"
    ${EndIf}
!macroend

!macro UnregisterLibrary FILE
    !insertmacro Regsvr32 "$SYSDIR\regsvr32.exe" "/u" "$INSTDIR\x86\${FILE}"
    ${If} ${RunningX64}
        !insertmacro Regsvr32 "$WINDIR\Sysnative\regsvr32.exe" "/u" "$INSTDIR\x64\${FILE}"
    ${EndIf}
!macroend

; A library that some program has loaded cannot be opened for writing.
!macro CheckNotInUse FILE
    ${If} ${FileExists} "${FILE}"
        ClearErrors
        FileOpen $0 "${FILE}" a
        ${If} ${Errors}
            MessageBox MB_OK|MB_ICONSTOP "${FILE} is in use. Close the programs that use it and try again." /SD IDOK
            SetErrorLevel 5
            Quit
        ${EndIf}
        FileClose $0
    ${EndIf}
!macroend

!macro CheckLibrary FILE
    !insertmacro CheckNotInUse "$Previous\x86\${FILE}"
    !insertmacro CheckNotInUse "$Previous\x64\${FILE}"
!macroend

!macro RemoveAll
    !insertmacro ForEachLibrary UnregisterLibrary
    !insertmacro DeleteFiles
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\${NAME}\Reference.lnk"
    Delete "$SMPROGRAMS\${NAME}\Samples.lnk"
    RMDir "$SMPROGRAMS\${NAME}"
    DeleteRegKey SHCTX "${UNINSTALL_KEY}"
!macroend

Function .onInit
    !insertmacro MULTIUSER_INIT
FunctionEnd

Function un.onInit
    !insertmacro MULTIUSER_UNINIT
FunctionEnd

; An older or the same version goes first, but for its registration, which the new one writes over: an option such as the
; surrogate outlives the upgrade.
Function RemovePrevious
    ReadRegStr $0 SHCTX "${UNINSTALL_KEY}" "DisplayVersion"
    ReadRegStr $Previous SHCTX "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $0 == ""
        Return
    ${EndIf}
    ${VersionCompare} "$0" "${VERSION}" $1
    ${If} $1 == 1
        MessageBox MB_OK|MB_ICONSTOP "${NAME} $0 is installed, which is newer than ${VERSION}. Uninstall it first if the older one is wanted." /SD IDOK
        SetErrorLevel 3
        Quit
    ${EndIf}
    !insertmacro ForEachLibrary CheckLibrary
    ${If} ${FileExists} "$Previous\uninstall.exe"
        ExecWait '"$Previous\uninstall.exe" /S $Mode /UPGRADE _?=$Previous'
        Delete "$Previous\uninstall.exe"
        RMDir "$Previous"
    ${EndIf}
FunctionEnd

Section
    !insertmacro ChooseScope
    Call RemovePrevious
    !insertmacro InstallFiles
    WriteUninstaller "$INSTDIR\uninstall.exe"
    StrCpy $Failed ""
    !insertmacro ForEachLibrary RegisterLibrary
    ${If} $Failed != ""
        MessageBox MB_OK|MB_ICONSTOP "$Failed could not be registered. Nothing was installed." /SD IDOK
        !insertmacro RemoveAll
        SetErrorLevel 4
        Quit
    ${EndIf}

    CreateDirectory "$SMPROGRAMS\${NAME}"
    CreateShortcut "$SMPROGRAMS\${NAME}\Reference.lnk" "$INSTDIR\docs\index.html"
    CreateShortcut "$SMPROGRAMS\${NAME}\Samples.lnk" "$INSTDIR\samples"

    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\uninstall.exe"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe" $Mode'
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S $Mode'
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" $0
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
    !insertmacro ChooseScope
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/UPGRADE" $1
    ${If} ${Errors}
        !insertmacro RemoveAll
    ${Else}
        !insertmacro DeleteFiles
    ${EndIf}
SectionEnd
