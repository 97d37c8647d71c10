' A most-recently-used list: what is opened goes to the front, at most four names are kept.
'
'     cscript //nologo linked_list.vbs
Option Explicit

Dim recent: Set recent = CreateObject("VelkSupport.CLinkedList")
Dim name
For Each name In Array("scale.dat", "report.txt", "scale.dat", "log.txt", "notes.txt", "old.ini", "report.txt")
    Opened name
Next
Show

Sub Opened(name)
    Dim index: index = recent.Find(name, 0, -1)
    If index > 0 And recent.Count = 1 Then Exit Sub    ' it is there, and the only item is better not removed
    If index > 0 Then recent.Remove index
    recent.Add name, -1
    If recent.Count > 4 Then
        recent.MoveLast
        recent.Remove
    End If
End Sub

Sub Show()
    Dim text, name
    For Each name In recent
        text = text & " " & name
    Next
    WScript.Echo "Recently used:" & text
End Sub
