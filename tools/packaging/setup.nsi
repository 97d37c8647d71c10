; The installer. tools/packaging/package runs it in the staged folder, with VERSION and OUTFILE and a files.nsh made from what is there.
;
; Silent: /S, with /AllUsers or /CurrentUser (default: all users if this user may, else the current one) and /D=folder.
; Exit codes: 0 done, 1 cancelled, 2 stopped, 3 a newer version is installed, 4 registration failed, 5 a library is in use,
; 6 something could not be written. After a failure everything is as it was before.
;
; An upgrade never leaves an instant without a whole library at the registered place: the new files are unpacked beside the
; former ones, those are copied away, and each is then replaced by one call of the system. What was interrupted half way is
; put back by the next run.
Unicode true
!finalize '"${SIGN}" "%1"'
!uninstfinalize '"${SIGN}" "%1"'
ManifestSupportedOS all
ManifestDPIAware true
SetCompressor /SOLID lzma
SetDateSave off

!define NAME "VelkSupport"
!define AUTHORS "The VelkSupport authors"
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
!include TextFunc.nsh
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
VIAddVersionKey "CompanyName" "${AUTHORS}"
VIAddVersionKey "FileDescription" "Velk Support Functions: setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Copyright (c) 2026 ${AUTHORS}. MIT licence."
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "ProductVersion" "${VERSION}"

!insertmacro MUI_PAGE_LICENSE "${STAGED}\LICENSE"
!insertmacro MULTIUSER_PAGE_INSTALLMODE
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Var Mode     ; the switch that names the mode chosen
Var Failed   ; what could not be done
Var Code     ; the exit code for it
Var Previous ; folder of the version installed before
Var Former   ; that version
Var File     ; one of the delivered files, below the folder
Var Each     ; the function that is called for each of them
Var Work     ; where the files are while they are exchanged

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

!macro Fail CODE WHAT
    ${If} $Failed == ""
        StrCpy $Code ${CODE}
        StrCpy $Failed "${WHAT}"
    ${EndIf}
!macroend

; The installers that the tests use fail, or end like a process that is stopped, behind the step that the environment names.
!macro Step NAME
!ifdef FAULTS
    ReadEnvStr $0 VELK_SETUP_FAULT
    ${If} $0 == "fail ${NAME}"
        !insertmacro Fail 6 "${NAME}"
    ${ElseIf} $0 == "end ${NAME}"
        System::Call 'kernel32::TerminateProcess(p -1, i 9)'
    ${EndIf}
!endif
!macroend

; This program is a 32-bit one: what it sees as the system's folder is the 32-bit one.
!macro Regsvr32 SWITCH FOLDER FILE
    ExecWait '"$SYSDIR\regsvr32.exe" /s ${SWITCH} "${FOLDER}\x86\${FILE}"' $0
    ${If} ${RunningX64}
        ExecWait '"$WINDIR\Sysnative\regsvr32.exe" /s ${SWITCH} "${FOLDER}\x64\${FILE}"' $1
        IntOp $0 $0 | $1
    ${EndIf}
!macroend

!macro RegisterLibrary FILE
    ${If} $Failed == ""
        !insertmacro Regsvr32 "" $INSTDIR ${FILE}
        ${If} $0 != 0
            !insertmacro Fail 4 "${FILE} could not be registered"
        ${EndIf}
        !insertmacro Step ${FILE}
    ${EndIf}
!macroend

!macro RegisterFormer FILE
    !insertmacro Regsvr32 "" $Previous ${FILE}
!macroend

!macro UnregisterLibrary FILE
    !insertmacro Regsvr32 "/u" $INSTDIR ${FILE}
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

!macro RemoveShortcuts
    Delete "$SMPROGRAMS\${NAME}\Reference.lnk"
    Delete "$SMPROGRAMS\${NAME}\Samples.lnk"
    Delete "$SMPROGRAMS\${NAME}\Doctor (32-bit).lnk"
    Delete "$SMPROGRAMS\${NAME}\Doctor (64-bit).lnk"
    RMDir "$SMPROGRAMS\${NAME}"
!macroend

Function .onInit
    !insertmacro MULTIUSER_INIT
FunctionEnd

Function un.onInit
    !insertmacro MULTIUSER_UNINIT
FunctionEnd

; What is there already: no newer version, and nobody who uses it.
Function LookAtFormer
    ReadRegStr $Former SHCTX "${UNINSTALL_KEY}" "DisplayVersion"
    ReadRegStr $Previous SHCTX "${UNINSTALL_KEY}" "InstallLocation"
    ${If} $Former == ""
        Return
    ${EndIf}
    ${VersionCompare} "$Former" "${VERSION}" $1
    ${If} $1 == 1
        MessageBox MB_OK|MB_ICONSTOP "${NAME} $Former is installed, which is newer than ${VERSION}. Uninstall it first if the older one is wanted." /SD IDOK
        SetErrorLevel 3
        Quit
    ${EndIf}
    !insertmacro ForEachLibrary CheckLibrary
FunctionEnd

Function EachFile
    !insertmacro CallForEachFile $Each
    StrCpy $File "uninstall.exe"
    Call $Each
FunctionEnd

!macro ForEachFile FUNCTION
    GetFunctionAddress $Each ${FUNCTION}
    Call EachFile
!macroend

Function Unpack
    ClearErrors
    !insertmacro UnpackFiles "$Work\new"
    SetOutPath "$INSTDIR"
    WriteUninstaller "$Work\new\uninstall.exe"
    ${If} ${Errors}
        !insertmacro Fail 6 "The files could not be unpacked into $Work"
    ${EndIf}
FunctionEnd

Function CopyAway
    ${If} ${FileExists} "$INSTDIR\$File"
    ${AndIfNot} ${FileExists} "$Work\former\$File"
        ${GetParent} "$Work\former\$File" $0
        CreateDirectory "$0"
        System::Call 'kernel32::CopyFile(t "$INSTDIR\$File", t "$Work\former\$File", i 0) i.r0'
        ${If} $0 = 0
            !insertmacro Fail 6 "$INSTDIR\$File could not be copied"
        ${EndIf}
    ${EndIf}
FunctionEnd

; What the former version delivered and what the new one puts in its place. Its list of checksums names its files; the line's first
; 66 characters are the checksum.
Function CopyFormerAway
    ClearErrors
    FileOpen $1 "$INSTDIR\SHA256SUMS" r
    ${IfNot} ${Errors}
        ${Do}
            FileRead $1 $File
            ${If} ${Errors}
                ${Break}
            ${EndIf}
            ${TrimNewLines} "$File" $File
            StrCpy $File $File "" 66
            ${WordReplace} "$File" "/" "\" "+" $File
            Call CopyAway
        ${Loop}
        FileClose $1
    ${EndIf}
    !insertmacro ForEachFile CopyAway
    ClearErrors
    FileOpen $0 "$Work\copied" w
    FileWrite $0 "${VERSION}"
    FileClose $0
    ${If} ${Errors}
        !insertmacro Fail 6 "$Work could not be written"
    ${EndIf}
FunctionEnd

Function Replace
    ${If} $Failed == ""
    ${AndIf} ${FileExists} "$Work\new\$File"
        ${GetParent} "$INSTDIR\$File" $0
        CreateDirectory "$0"
        System::Call 'kernel32::MoveFileEx(t "$Work\new\$File", t "$INSTDIR\$File", i 9) i.r0'
        ${If} $0 = 0
            !insertmacro Fail 6 "$INSTDIR\$File could not be replaced"
        ${EndIf}
        !insertmacro Step "replacing $File"
    ${EndIf}
FunctionEnd

Function RemoveFresh
    ${IfNot} ${FileExists} "$Work\former\$File"
        Delete "$INSTDIR\$File"
    ${EndIf}
FunctionEnd

; For ${Locate}, which gives the file in $R9 and stops at StopLocate.
Function PutBack
    StrLen $R2 "$Work\former\"
    StrCpy $File $R9 "" $R2
    ${GetParent} "$INSTDIR\$File" $R2
    CreateDirectory "$R2"
    System::Call 'kernel32::MoveFileEx(t "$R9", t "$INSTDIR\$File", i 9)'
    Push ""
FunctionEnd

; What is not delivered any more.
Function RemoveObsolete
    StrLen $R2 "$Work\former\"
    StrCpy $File $R9 "" $R2
    Delete "$INSTDIR\$File"
    Push ""
FunctionEnd

Function ForgetCopy
    Delete "$Work\former\$File"
FunctionEnd

; The files as they were before; also after a run that was interrupted.
Function PutFilesBack
    ${If} ${FileExists} "$Work\copied"
        !insertmacro ForEachFile RemoveFresh
        ${Locate} "$Work\former" "/L=F" "PutBack"
    ${EndIf}
    RMDir /r "$Work"
    !insertmacro RemoveEmptyFolders
FunctionEnd

Function WriteShortcuts
    ClearErrors
    CreateDirectory "$SMPROGRAMS\${NAME}"
    CreateShortcut "$SMPROGRAMS\${NAME}\Reference.lnk" "$INSTDIR\docs\index.html"
    CreateShortcut "$SMPROGRAMS\${NAME}\Samples.lnk" "$INSTDIR\samples"
    CreateShortcut "$SMPROGRAMS\${NAME}\Doctor (32-bit).lnk" "$INSTDIR\x86\velkdoctor.exe"
    ${If} ${RunningX64}
        CreateShortcut "$SMPROGRAMS\${NAME}\Doctor (64-bit).lnk" "$INSTDIR\x64\velkdoctor.exe"
    ${EndIf}
    ${If} ${Errors}
        !insertmacro Fail 6 "The shortcuts could not be written"
    ${EndIf}
FunctionEnd

; The entry in the list of programs: of the version $R0 in the folder $R1.
Function WriteEntry
    ${GetSize} "$R1" "/S=0K" $0 $1 $2
    ClearErrors
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayVersion" "$R0"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "DisplayIcon" "$R1\uninstall.exe"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "Publisher" "${AUTHORS}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "HelpLink" "$R1\docs\index.html"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "URLInfoAbout" "${HOME}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "InstallLocation" "$R1"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "UninstallString" '"$R1\uninstall.exe" $Mode'
    WriteRegStr SHCTX "${UNINSTALL_KEY}" "QuietUninstallString" '"$R1\uninstall.exe" /S $Mode'
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "EstimatedSize" $0
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" "NoRepair" 1
    ${If} ${Errors}
        !insertmacro Fail 6 "The list of programs could not be written"
    ${EndIf}
FunctionEnd

Function TakeBack
    ${If} $Former == ""
        !insertmacro ForEachLibrary UnregisterLibrary
        !insertmacro RemoveShortcuts
        DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    ${EndIf}
    SetOutPath "$TEMP"
    Call PutFilesBack
    ${If} $Former != ""
        !insertmacro ForEachLibrary RegisterFormer
        StrCpy $R0 $Former
        StrCpy $R1 $Previous
        Call WriteEntry
    ${EndIf}
FunctionEnd

; A run that was interrupted behind its last step had installed its version.
Function Recover
    ClearErrors
    FileOpen $0 "$Work\copied" r
    FileRead $0 $1
    FileClose $0
    ${IfNot} ${Errors}
    ${AndIf} $1 == $Former
        Delete "$Work\copied"
    ${EndIf}
    Call PutFilesBack
FunctionEnd

; From here on the new version is the one that is installed.
Function Finish
    Delete "$Work\copied"
    !insertmacro ForEachFile ForgetCopy
    ${Locate} "$Work\former" "/L=F" "RemoveObsolete"
    RMDir /r "$Work"
    ${If} $Former != ""
    ${AndIf} $Previous != $INSTDIR
    ${AndIf} ${FileExists} "$Previous\uninstall.exe"
        ExecWait '"$Previous\uninstall.exe" /S $Mode /UPGRADE _?=$Previous'
        Delete "$Previous\uninstall.exe"
        RMDir "$Previous"
    ${EndIf}
FunctionEnd

!macro Do FUNCTION NAME
    ${If} $Failed == ""
        Call ${FUNCTION}
        !insertmacro Step "${NAME}"
    ${EndIf}
!macroend

Section
    !insertmacro ChooseScope
    Call LookAtFormer
    StrCpy $Failed ""
    StrCpy $Work "$INSTDIR\setup~"
    Call Recover
    !insertmacro Do Unpack "unpacking"
    !insertmacro Do CopyFormerAway "copying"
    !insertmacro ForEachFile Replace
    !insertmacro ForEachLibrary RegisterLibrary
    !insertmacro Do WriteShortcuts "shortcuts"
    StrCpy $R0 "${VERSION}"
    StrCpy $R1 $INSTDIR
    !insertmacro Do WriteEntry "entry"
    ${If} $Failed == ""
        Call Finish
    ${Else}
        Call TakeBack
        StrCpy $0 "Nothing was installed."
        ${If} $Former != ""
            StrCpy $0 "${NAME} $Former is installed as before."
        ${EndIf}
        MessageBox MB_OK|MB_ICONSTOP "$Failed. $0" /SD IDOK
        SetErrorLevel $Code
        Quit
    ${EndIf}
SectionEnd

; The system stopped the section, for instance because the disk is full.
Function .onInstFailed
    Call TakeBack
FunctionEnd

; An upgrade into another folder keeps the registration, which the new version has written over, and the entry in the list.
Section "Uninstall"
    !insertmacro ChooseScope
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/UPGRADE" $1
    ${If} ${Errors}
        !insertmacro ForEachLibrary UnregisterLibrary
        !insertmacro RemoveShortcuts
    ${EndIf}
    SetOutPath "$TEMP"
    !insertmacro DeleteFiles
    RMDir /r "$INSTDIR\setup~"
    Delete "$INSTDIR\uninstall.exe"
    !insertmacro RemoveEmptyFolders
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/UPGRADE" $1
    ${If} ${Errors}
        DeleteRegKey SHCTX "${UNINSTALL_KEY}"
    ${EndIf}
SectionEnd
