' The dialogs from VBScript, as far as they go without a person.
Option Explicit
Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim file: Set file = CreateObject("VelkSupport.CFileDialog")
Dim toOpen: toOpen = True
file.Filename = "a name that does not fit"
file.MaxFileSize = 4
Expect "a name that does not fit", False, file.Show(toOpen)
Expect "it stays", "a name that does not fit", file.Filename
Expect "the printer's context", 0, CreateObject("VelkSupport.CPrintDialog").HDC
Dim fonts: Set fonts = CreateObject("VelkSupport.CFontDialog")
fonts.Font.Italic = True
Expect "one font for good", True, fonts.Font.Italic
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
