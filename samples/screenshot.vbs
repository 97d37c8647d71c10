' Puts the whole screen on the clipboard, to be pasted into a report:
'
'     cscript //nologo screenshot.vbs
Option Explicit

Const eErrScreenshot_NoActiveWindow = &H80044668

Dim camera: Set camera = CreateObject("VelkSupport.CScreenshot")
On Error Resume Next
camera.CaptureActiveWindow                      ' the window of the calling thread, if it has one
If Err.Number = eErrScreenshot_NoActiveWindow Then
    WScript.Echo Err.Description & ": the whole screen instead."
    Err.Clear
    camera.CaptureDesktop
End If
If Err.Number = 0 Then WScript.Echo "The picture is on the clipboard."
