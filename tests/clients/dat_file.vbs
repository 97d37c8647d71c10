' CDatFile from VBScript. The first argument is a file that was sealed outside the library.
Option Explicit
Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Sub ExpectError(what, number, description)
    Expect what & ", number", number, Err.Number
    Expect what & ", description", description, Err.Description
    Expect what & ", source", "VelkSupport", Err.Source
    Err.Clear
End Sub

Dim dat: Set dat = CreateObject("VelkSupport.CDatFile")
Dim text
On Error Resume Next
text = dat.Parameter
ExpectError "before Initialize", -2147211498, "Object not initialized"
dat.Initialize "Q:\no\such\file.dat"
ExpectError "a missing file", -2147211500, "File does not exist."
dat.Initialize WScript.ScriptFullName
ExpectError "a file without a seal", -2147211499, ".Dat file corrupt."

dat.Initialize WScript.Arguments(0)
Expect "loading", 0, Err.Number
dat.Parameter = "WT.GROSS"
Expect "the parameter", "WT.GROSS", dat.Parameter
Expect "for people", "Gross weight, kg", dat.GetHumanReadable
Expect "for the indicator", "GROSS KG", dat.GetIndicatorReadable()
Dim name: name = "WT.NET"
dat.Parameter = name
Expect "a variable's parameter", "Net weight, kg", dat.GetHumanReadable
dat.Parameter = "no such parameter"
Expect "an unknown parameter", "", dat.GetHumanReadable
Expect "the seal", True, IsNumeric(dat.DatFileCRC)
Dim path: path = WScript.Arguments(0)
Dim display: display = False
dat.Initialize path, display
Expect "loading by variables", 0, Err.Number
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
