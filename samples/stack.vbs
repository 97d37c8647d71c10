' Checks that the brackets of a formula match:
'
'     cscript //nologo stack.vbs
Option Explicit

Dim formula
For Each formula In Array("(net + tare) * [factor]", "max(a, b))", "{a[1] + (b}")
    WScript.Echo formula & ": " & Verdict(formula)
Next

Function Verdict(formula)
    Dim opened: Set opened = CreateObject("VelkSupport.CStack")
    Dim i, c
    For i = 1 To Len(formula)
        c = Mid(formula, i, 1)
        If InStr("([{", c) > 0 Then
            opened.Push Mid(")]}", InStr("([{", c), 1)
        ElseIf InStr(")]}", c) > 0 Then
            If opened.Pop <> c Then
                Verdict = "unexpected " & c & " at " & i
                Exit Function
            End If
        End If
    Next
    Verdict = "fine"
    If opened.Count > 0 Then Verdict = "missing " & opened.Peak
End Function
