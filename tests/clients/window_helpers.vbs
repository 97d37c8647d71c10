' The window helpers from VBScript. A script has no window of its own; what needs one is tested elsewhere.
Option Explicit

Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Sub ExpectError(what, code, source, description)
    Expect what & ", number", code, Err.Number
    Expect what & ", source", source, Err.Source
    Expect what & ", description", description, Err.Description
    Err.Clear
End Sub

Dim form: Set form = CreateObject("VelkSupport.CFormSizeConstraint")
Dim height: height = 300
form.MinHeight = height
form.MaxHeight = "400"
Expect "a limit", 300, form.MinHeight
Expect "a limit given as a text", 400, form.MaxHeight
form.Release
On Error Resume Next
form.MinHeight = 401
ExpectError "a contradiction", &H800444B0, "VelkSprt.CFormSizeConstraint", "Invalid minimum height"
form.Init 0
ExpectError "no window", &H800444AD, "VelkSprt.CFormSizeConstraint", "Invalid window handle"
Expect "no window", 0, form.hWnd

Dim list: Set list = CreateObject("VelkSupport.CListViewExtended")
list.SetHeaderStyle 2
ExpectError "no list view", &H8004472D, "VelkSprt.CListViewExtended", _
    "Object not properly initialized. Set the Hwnd property first"
On Error GoTo 0
Expect "redrawing", False, list.Redraw
list.PreventColumnResize = True
Expect "a flag", True, list.PreventColumnResize

Dim hooks: Set hooks = CreateObject("VelkSub.HookManager")
Expect "no message", 0, hooks.DispatchedMessage
Class Hook
    Public MsgResponse
    Public Function WindowProc(window, message, wParam, lParam)
    End Function
End Class
On Error Resume Next
hooks.AddHook New Hook, 0, 36
ExpectError "a script's hook without a window", &H80044800, "VelkSub.HookManager", "Invalid window handle"
hooks.AddHook form, 0, 36
ExpectError "a hook without a window", &H80044800, "VelkSub.HookManager", "Invalid window handle"
hooks.AddHook list, list.hWnd, 36
ExpectError "another", &H80044800, "VelkSub.HookManager", "Invalid window handle"
hooks.RemoveHook New Hook, 0, 36
Expect "a detach of what is not attached", 0, Err.Number
On Error GoTo 0

If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
