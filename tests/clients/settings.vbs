' CIniFile and CProgramSettings from VBScript. The first argument is the INI file to make.
Option Explicit
Dim failures: failures = 0

Sub Expect(what, wanted, got)
    If wanted = got Then Exit Sub
    failures = failures + 1
    WScript.Echo "FAILED " & what & ": wanted " & wanted & ", got " & got
End Sub

Dim ini: Set ini = CreateObject("VelkSupport.CIniFile")
Dim names, section, count, text
ini.Filename = "Q:\no\such\file.ini"
On Error Resume Next
text = ini.GetStringValue("A", "k")
Expect "a missing file", "-2147203822 File not found VelkSprt.CIniFile", Err.Number & " " & Err.Description & " " & Err.Source
Err.Clear

ini.Filename = WScript.Arguments(0)
section = "A"
ini.SaveStringValue section, "k", "v"
ini.SaveNumericValue section, "n", -5
ini.SaveNumericValue "B", "n", 1
count = ini.EnumerateAllKeys(section, names)
Expect "keys", "2 1 2 k n", count & " " & LBound(names) & " " & UBound(names) & " " & names(1) & " " & names(2)
count = ini.EnumerateAllSections(names)
Expect "sections", "2 A B", count & " " & names(1) & " " & names(2)
Expect "numbers", -5, ini.GetNumericValue(section, "n")
Expect "deleting", True, ini.DeleteKey(section, "k") And ini.DeleteKey(section, "n")
count = ini.EnumerateAllKeys(section, names)
Expect "no keys", "0 0", count & " " & (UBound(names) - LBound(names) + 1)
Expect "deleting sections", True, ini.DeleteSection(section) And ini.DeleteSection("B")

Dim settings: Set settings = CreateObject("VelkSupport.CProgramSettings")
settings.RootKey = &H80000001
settings.RegBase = "VelkClients"
text = "text"
settings.WriteEntry "t", text
settings.WriteEntryLong "n", 123456
Expect "settings", "text 123456 7", settings.ReadEntry("t", "") & " " & settings.ReadEntry("n", "") & " " & settings.ReadEntryLong("t", 7)
Expect "errors", 0, Err.Number
If failures = 0 Then WScript.Echo "PASSED"
WScript.Quit failures
