' The shapes and the screenshot from VBScript.
Option Explicit

Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim shape: Set shape = CreateObject("VelkSupport.CGDIEllipse")
Dim colour: colour = &H80000005          ' the window background: a negative number
shape.BorderColor = colour
Expect "a system colour", &H80000005, shape.BorderColor
shape.BorderWidth = 3.5
Expect "a rounded width", 4, shape.BorderWidth
shape.HatchStyle = "4"
Expect "a hatch", 4, shape.HatchStyle
Dim context: context = 0
shape.Draw3DEllipse context, vbRed, colour
Expect "the colour after a 3D draw", &H80000005, shape.BorderColor
Expect "the context", 0, context

Dim camera: Set camera = CreateObject("VelkSupport.CScreenshot")
On Error Resume Next
camera.CaptureRectangle -1, 0, 10, 10
Expect "the error's number", &H80044666, Err.Number
Expect "the error's text", "Invalid screen coordinates", Err.Description
Expect "the error's source", "VelkSprt.CScreenshot", Err.Source
If failures = 0 Then WScript.Echo "PASSED"
