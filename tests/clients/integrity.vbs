' CCRC32 and CDatFile from VBScript: literals and variables for by-reference arguments, conversion, failures that are only
' shown and such that are raised. The first argument is a file that was sealed outside the library.
Option Explicit
Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim crc: Set crc = CreateObject("VelkSupport.CCRC32")
Dim number: number = 123456789
Expect "a literal", -873187034, crc.GetCRCFromStringAscii("123456789")
Expect "a variable", -873187034, crc.getcrcfromstringascii(number)
Expect "the variable afterwards", "Long", TypeName(number)
Expect "the result's type", "Long", TypeName(crc.GetCRCFromString("123456789"))

crc.InputFileName = WScript.ScriptFullName
Dim text: text = CreateObject("Scripting.FileSystemObject").OpenTextFile(crc.InputFileName, 1).ReadAll
Expect "this file", crc.GetCRCFromStringAscii(text), crc.GetCRCFromFile
crc.InputFileName = "Q:\no\such\file"
Expect "a missing file", 0, crc.GetCRCFromFile()

Dim dat: Set dat = CreateObject("VelkSupport.CDatFile")
On Error Resume Next
crc.GetCRCFromString
Expect "a missing argument", True, Err.Number <> 0
Err.Clear
crc.GetCRCFromString crc
Expect "an object without a default property", True, Err.Number <> 0
Err.Clear
crc.NoSuchMember
Expect "an unknown member", 438, Err.Number
Err.Clear
dat.Initialize WScript.ScriptFullName
Expect "a file without a seal", "-2147211499 .Dat file corrupt. VelkSupport", Err.Number & " " & Err.Description & " " & Err.Source
Err.Clear

dat.Initialize WScript.Arguments(0)
dat.Parameter = "WT.GROSS"
Expect "the texts", "WT.GROSS Gross weight, kg GROSS KG", dat.Parameter & " " & dat.GetHumanReadable & " " & dat.GetIndicatorReadable()
Dim path: path = WScript.Arguments(0)
Dim display: display = False
dat.Initialize path, display
Dim name: name = "WT.NET"
dat.Parameter = name
Expect "a variable's parameter", "Net weight, kg", dat.GetHumanReadable
Expect "errors", 0, Err.Number
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
