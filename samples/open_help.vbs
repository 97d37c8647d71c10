' Opens a compiled help file at a page, at a context number, or at its contents:
'
'     cscript //nologo open_help.vbs C:\scale.chm zero.htm
'     cscript //nologo open_help.vbs C:\scale.chm 1001
Option Explicit

Dim help: Set help = CreateObject("VelkSupport.CHtmlHelp")
help.HelpFile = WScript.Arguments(0)
On Error Resume Next
If WScript.Arguments.Count = 1 Then
    help.OpenContents
ElseIf IsNumeric(WScript.Arguments(1)) Then
    help.OpenContext CLng(WScript.Arguments(1))
Else
    help.OpenTopic WScript.Arguments(1)
End If
If Err.Number <> 0 Then
    WScript.Echo "No help file " & help.HelpFile & ": " & Err.Description
    WScript.Quit 1
End If
MsgBox "The help window goes with this program.", vbInformation, "Help"
WScript.Quit 0
