' Checks the window settings in a program's INI file before it is delivered: limits of its form, columns, icons of its menu.
'
'     cscript //nologo window_settings.vbs C:\data\program.ini
'
' What a class refuses is told in its own words, and the exit code is 1. A script host has no window on its thread: a script
' sets everything that needs none, and the program with the window does the rest (window_helpers.cpp, icon_menu.cpp).
Option Explicit

If WScript.Arguments.Count <> 1 Then
    WScript.Echo "Usage: cscript //nologo window_settings.vbs FILE.ini"
    WScript.Quit 2
End If

Dim form: Set form = CreateObject("VelkSupport.CFormSizeConstraint")
Dim list: Set list = CreateObject("VelkSupport.CListViewExtended")
Dim menu: Set menu = CreateObject("VelkSupport.cIconMenu")
Dim ini: Set ini = CreateObject("VelkSupport.CIniFile")
ini.Init WScript.Arguments(0)               ' a full path

Dim section, sections, key, keys
Dim checked: checked = 0
Dim refused: refused = 0
ini.EnumerateAllSections sections
For Each section In sections
    ini.EnumerateAllKeys section, keys
    For Each key In keys
        Check section, key, ini.GetStringValue(section, key)
    Next
Next
WScript.Echo "The form may be " & form.MinWidth & " to " & form.MaxWidth & " pixels wide and at least " & _
    form.MinHeight & " high."
WScript.Echo checked & " settings, " & refused & " refused"
WScript.Quit Sgn(refused)

Sub Check(section, key, value)
    checked = checked + 1
    On Error Resume Next
    Apply section, key, value
    If Err.Number = 0 Then Exit Sub
    refused = refused + 1
    WScript.Echo "[" & section & "] " & key & "=" & value & ": " & Err.Description
End Sub

' Texts become numbers on the way. A greatest size may not be less than the least one, so the least ones stand first in the file.
Sub Apply(section, key, value)
    Select Case section & "." & key
        Case "Form.MinWidth": form.MinWidth = value
        Case "Form.MinHeight": form.MinHeight = value
        Case "Form.MaxWidth": form.MaxWidth = value
        Case "Form.MaxHeight": form.MaxHeight = value
        Case "List.Stretch": list.ResizeColumnsToFitWidth = value
        Case "List.FixedColumns": list.PreventColumnResize = value
        Case "Menu.MaskColor": menu.MaskColor = value
        Case Else
            If section <> "Icons" Then Err.Raise 5, , "No such setting"
            menu.CommandImage(key) = value
    End Select
End Sub
