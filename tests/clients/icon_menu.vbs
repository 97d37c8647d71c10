' Menus with icons from VBScript. A script has no window of its own; what needs one is tested elsewhere.
Option Explicit

Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Sub ExpectError(what, number)
    Expect what & ", number", number, Err.Number
    Err.Clear
End Sub

Dim menu: Set menu = CreateObject("VelkSupport.cIconMenu")
Expect "no icon yet", -1, menu.CommandImage(100)
menu.CommandImage(100) = "3"
Expect "an image", 3, menu.CommandImage(100)
Set menu.CommandPicture(100) = Nothing
Expect "taken away", -1, menu.CommandImage(100)
Expect "no picture", True, menu.CommandPicture(100) Is Nothing
Expect "mask", &HFF00FF, menu.MaskColor
menu.MaskColor = -1
Expect "no mask", -1, menu.MaskColor
menu.ClearIcons
menu.Detach
Expect "no window", 0, menu.hWnd
On Error Resume Next
menu.Attach 0
ExpectError "a window that is none", 5
menu.ImageList = 12345
ExpectError "a list that is none", 5
menu.CommandImage(100) = -2
ExpectError "an image that is none", 9
Set menu.CommandPicture(100) = menu
ExpectError "an object that is no picture", 13
menu.SubmenuImage(0) = 1
ExpectError "a submenu that is none", 5
On Error GoTo 0
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
