' Builds a long table without copying the whole text at every line:
'
'     cscript //nologo string_builder.vbs
Option Explicit

Dim table: Set table = CreateObject("VelkSupport.CConCat")
Dim i
table.Text = "weight;price" & vbCrLf
For i = 1 To 20000
    table.Append i & ";" & i * 3 & vbCrLf
Next
WScript.Echo "Built " & table.Length & " characters, the last line is " & LastLine(table.Text)

Function LastLine(text)
    Dim lines: lines = Split(text, vbCrLf)
    LastLine = lines(UBound(lines) - 1)
End Function
