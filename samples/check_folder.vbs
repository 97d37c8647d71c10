' Seals the files of a folder with a list of their checksums, or says what changed since:
'
'     cscript //nologo check_folder.vbs seal C:\data\parameters C:\data\parameters.crc
'     cscript //nologo check_folder.vbs check C:\data\parameters C:\data\parameters.crc
'
' The list holds a line for each file: its checksum, a blank, its name. It should lie outside the folder.
Option Explicit

If WScript.Arguments.Count <> 3 Then
    WScript.Echo "Usage: cscript //nologo check_folder.vbs seal|check FOLDER LIST"
    WScript.Quit 2
End If

Dim files: Set files = CreateObject("Scripting.FileSystemObject")
Dim crc: Set crc = CreateObject("VelkSupport.CCRC32")
Dim folder: Set folder = files.GetFolder(WScript.Arguments(1))
If WScript.Arguments(0) = "seal" Then Seal Else Check

Sub Seal
    Dim list: Set list = files.CreateTextFile(WScript.Arguments(2), True)
    Dim file
    For Each file In folder.Files
        list.Write ChecksumOf(file) & " " & file.Name & vbCrLf
    Next
    list.Close
    WScript.Echo "Sealed " & folder.Files.Count & " files."
End Sub

Sub Check
    Dim list: Set list = files.OpenTextFile(WScript.Arguments(2), 1)
    Dim wrong: wrong = 0
    Dim line, path, verdict
    For Each line In Split(Replace(list.ReadAll, vbCr, ""), vbLf)
        If line <> "" Then
            path = files.BuildPath(folder.Path, Mid(line, 10))
            verdict = ""
            If Not files.FileExists(path) Then
                verdict = "missing"
            ElseIf ChecksumOf(files.GetFile(path)) <> Left(line, 8) Then
                verdict = "changed"
            End If
            If verdict <> "" Then
                wrong = wrong + 1
                WScript.Echo verdict & ": " & Mid(line, 10)
            End If
        End If
    Next
    list.Close
    If wrong = 0 Then WScript.Echo "All files are as they were sealed."
    WScript.Quit Sgn(wrong)
End Sub

Function ChecksumOf(file)
    crc.InputFileName = file.Path
    ChecksumOf = Right("0000000" & Hex(crc.GetCRCFromFile), 8)
End Function
