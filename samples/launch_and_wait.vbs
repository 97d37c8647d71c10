' Starts a program and waits until it has ended:
'
'     cscript //nologo launch_and_wait.vbs notepad.exe C:\notes.txt
Option Explicit

Const sesSW_SHOWNORMAL = 1
Const seeNoError = -1

Dim program: program = "notepad.exe"
Dim parameters: parameters = ""
If WScript.Arguments.Count > 0 Then program = WScript.Arguments(0)
If WScript.Arguments.Count > 1 Then parameters = WScript.Arguments(1)

Dim shell: Set shell = CreateObject("VelkSupport.CShellExecute")
Dim started: started = Timer
Dim verdict: verdict = shell.LaunchProgram(0, program, parameters, "", sesSW_SHOWNORMAL)
If verdict <> seeNoError Then
    WScript.Echo program & " did not start: " & verdict
    WScript.Quit 1
End If
Do While shell.StillExecuting
    Pause
Loop
WScript.Echo "It ended after " & FormatNumber(Timer - started, 1) & " s"
WScript.Quit 0

Sub Pause
    On Error Resume Next  ' a script host without Sleep asks more often
    WScript.Sleep 20
End Sub
