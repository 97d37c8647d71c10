' CCRC32 from VBScript: literals and variables for by-reference arguments, conversion, and failures that are only shown.
Option Explicit
Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim crc: Set crc = CreateObject("VelkSupport.CCRC32")
Dim text: text = "123456789"
Dim number: number = 123456789
Expect "a literal", -873187034, crc.GetCRCFromStringAscii("123456789")
Expect "a variable", -873187034, crc.GetCRCFromStringAscii(text)
Expect "a number", -873187034, crc.GetCRCFromStringAscii(number)
Expect "the number afterwards", "Long", TypeName(number)
Expect "any case", -873187034, crc.getcrcfromstringascii(text)
Expect "an empty string", 0, crc.GetCRCFromString("")
Expect "two bytes a character", crc.GetCRCFromStringAscii("A" & Chr(0)), crc.GetCRCFromString("A")
Expect "the result's type", "Long", TypeName(crc.GetCRCFromString(text))

crc.InputFileName = WScript.ScriptFullName
Expect "the name", WScript.ScriptFullName, crc.InputFileName
Dim file: Set file = CreateObject("Scripting.FileSystemObject").OpenTextFile(WScript.ScriptFullName, 1)
text = file.ReadAll
file.Close
Expect "this file", crc.GetCRCFromStringAscii(text), crc.GetCRCFromFile
crc.InputFileName = "Q:\no\such\file"
Expect "a missing file", 0, crc.GetCRCFromFile()

On Error Resume Next
crc.GetCRCFromString
Expect "a missing argument", True, Err.Number <> 0
Err.Clear
crc.GetCRCFromString crc
Expect "an object without a default property", True, Err.Number <> 0
Err.Clear
crc.NoSuchMember
Expect "an unknown member", 438, Err.Number
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
