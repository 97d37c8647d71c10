' Shows how far the checksum of a file is: events in VBScript.
'
'     cscript //nologo progress.vbs C:\data\large.bin
'
' The host connects the procedures whose names begin with the prefix. A host without events says so, and the checksum is the same.
Option Explicit
Dim crc, checksum

If WScript.Arguments.Count <> 1 Then
    WScript.Echo "Usage: progress.vbs FILE"
    WScript.Quit 2
End If
On Error Resume Next
Set crc = WScript.CreateObject("VelkSupport.CCRC32", "crc_")
If Err.Number <> 0 Then
    WScript.Echo "This host connects no events: " & Err.Description
    Err.Clear
    Set crc = CreateObject("VelkSupport.CCRC32")
End If
On Error GoTo 0
crc.InputFileName = WScript.Arguments(0)
checksum = crc.GetCRCFromFile
WScript.Echo Hex(checksum) & "  " & WScript.Arguments(0)

' The fraction that is done, from 0 to 1.
Sub crc_Progress(fraction)
    WScript.Echo FormatPercent(fraction, 0)
End Sub
