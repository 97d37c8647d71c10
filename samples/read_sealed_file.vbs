' Opens a sealed parameter file and prints the texts of the parameters named after it:
'
'     cscript //nologo read_sealed_file.vbs parameters.dat WT.GROSS WT.NET
'
' A file that is missing or whose seal is broken is refused with the library's own message and exit code 1.
Option Explicit

If WScript.Arguments.Count < 2 Then
    WScript.Echo "Usage: cscript //nologo read_sealed_file.vbs FILE PARAMETER..."
    WScript.Quit 2
End If

Dim dat: Set dat = CreateObject("VelkSupport.CDatFile")
On Error Resume Next
dat.Initialize WScript.Arguments(0)
If Err.Number <> 0 Then
    WScript.Echo Err.Source & ": " & Err.Description & " (0x" & Hex(Err.Number) & ")"
    WScript.Quit 1
End If
On Error GoTo 0

Dim i
WScript.Echo "The seal " & dat.DatFileCRC & " of " & WScript.Arguments(0) & " holds."
WScript.Echo Pad("parameter", 18) & Pad("indicator", 14) & "for people"
For i = 1 To WScript.Arguments.Count - 1
    dat.Parameter = WScript.Arguments(i)
    WScript.Echo Pad(dat.Parameter, 18) & Pad(dat.GetIndicatorReadable, 14) & dat.GetHumanReadable
Next
WScript.Quit 0

Function Pad(text, width)
    Pad = text
    If Len(text) < width Then Pad = text & Space(width - Len(text))
End Function
