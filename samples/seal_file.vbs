' Seals a list of entries, one name=value a line, into a parameter file:
'
'     cscript //nologo seal_file.vbs entries.txt parameters.dat
'
' Needs only VelkSupport.CCRC32. The seal covers the text from "[BEGIN]" to the bracket that opens "[END]".
Option Explicit

If WScript.Arguments.Count <> 2 Then
    WScript.Echo "Usage: cscript //nologo seal_file.vbs ENTRIES OUTPUT"
    WScript.Quit 2
End If

Dim body: body = "[BEGIN]" & vbCrLf & EntriesOf(WScript.Arguments(0))
Dim crc: Set crc = CreateObject("VelkSupport.CCRC32")
Dim seal: seal = crc.GetCRCFromString(body & "[")
WriteFile WScript.Arguments(1), body & "[END]" & vbCrLf & "@CRC=" & seal & vbCrLf
WScript.Echo "Sealed " & WScript.Arguments(1) & " with " & seal

' The non-empty lines, each ended by CR LF whatever the input uses.
Function EntriesOf(path)
    Dim files: Set files = CreateObject("Scripting.FileSystemObject")
    Dim input: Set input = files.OpenTextFile(path, 1)
    Dim line
    For Each line In Split(Replace(input.ReadAll, vbCr, ""), vbLf)
        If line <> "" Then EntriesOf = EntriesOf & line & vbCrLf
    Next
    input.Close
End Function

Sub WriteFile(path, text)
    Dim files: Set files = CreateObject("Scripting.FileSystemObject")
    Dim output: Set output = files.CreateTextFile(path, True)
    output.Write text
    output.Close
End Sub
