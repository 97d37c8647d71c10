' CShellExecute, CHtmlHelp and CHourglass from VBScript: optional arguments, results, and what may be raised.
Option Explicit
Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim shell: Set shell = CreateObject("VelkSupport.CShellExecute")
Expect "a program", -1, shell.LaunchProgram(0, "cmd.exe", "/c exit")
Do While shell.StillExecuting
Loop
Dim program: program = "%windir%\system32\cmd.exe"
Dim owner: owner = 0
Dim style: style = 0
Expect "all arguments, as variables", -1, shell.LaunchProgram(owner, program, "/c exit", "C:\", style)
Expect "a variable afterwards", "%windir%\system32\cmd.exe", program
Expect "a missing program", 2, shell.LaunchProgram(0, "C:\no\such.exe")
Expect "nothing runs", False, shell.StillExecuting

Dim help: Set help = CreateObject("VelkSupport.CHtmlHelp")
Expect "no file at first", "", help.HelpFile
On Error Resume Next
help.OpenContents
Expect "no file", 53, Err.Number And &HFFFF&
Err.Clear
On Error GoTo 0

help.ParentHWND = owner
If Len(WScript.Arguments(0)) > 2 Then
    help.HelpFile = WScript.Arguments(0)
    help.OpenContext 1001
    help.OpenTopic "zero.htm"
End If

Dim glass: Set glass = CreateObject("VelkSupport.CHourglass")
Expect "no hourglass at first", False, glass.Value
glass.Value = True
Expect "the hourglass", True, glass.Value
Set glass = Nothing
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
