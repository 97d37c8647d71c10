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
Expect "the first size", 260, file.MaxFileSize
file.Filter = "Texts|*.txt"
file.Flags = &H80000 Or &H1000
Expect "the filter", "Texts|*.txt", file.Filter
Expect "the flags", &H81000, file.Flags
file.Filename = "a name that does not fit"
file.MaxFileSize = 4
Expect "a name that does not fit", False, file.Show(toOpen)
Expect "and by value", False, file.Show(False)
Expect "it stays", "a name that does not fit", file.Filename

Dim printing: Set printing = CreateObject("VelkSupport.CPrintDialog")
Expect "the pages", "1-9999", printing.Min & "-" & printing.Max
printing.Copies = 2
printing.hWndParent = -1
Expect "the copies", 2, printing.Copies
Expect "no context", 0, printing.HDC

Dim fonts: Set fonts = CreateObject("VelkSupport.CFontDialog")
Expect "the font flags", 67, fonts.Flags
fonts.Font.Italic = True
fonts.Style = "any"
Expect "one font for good", True, fonts.Font.Italic
Expect "the style", "any", fonts.Style
Expect "the kind", 0, fonts.FontType
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
