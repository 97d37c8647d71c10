' The window helpers from VBScript. A script has no window of its own; what needs one is tested elsewhere.
Option Explicit

Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim form: Set form = CreateObject("VelkSupport.CFormSizeConstraint")
Dim list: Set list = CreateObject("VelkSupport.CListViewExtended")
Dim hooks: Set hooks = CreateObject("VelkSub.HookManager")
Dim height: height = 300
form.MinHeight = height
form.MaxHeight = "400"
form.Release
Expect "a limit given as a text", 400, form.MaxHeight
Expect "redrawing", False, list.Redraw
Expect "no message", 0, hooks.DispatchedMessage
On Error Resume Next
form.MinHeight = 401
Expect "a contradiction", "VelkSprt.CFormSizeConstraint Invalid minimum height", Err.Source & " " & Err.Description
Err.Clear
list.SetHeaderStyle 2
Expect "no list view", &H8004472D, Err.Number
Err.Clear
hooks.AddHook form, 0, 36
Expect "a hook without a window", "VelkSub.HookManager Invalid window handle", Err.Source & " " & Err.Description
Err.Clear
hooks.RemoveHook form, form.hWnd, 36
Expect "a detach of what is not attached", 0, Err.Number
On Error GoTo 0

If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
