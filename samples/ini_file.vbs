' Keeps a most-recently-used list in an INI file: the last name opened comes first, at most four are kept.
'
'     cscript //nologo ini_file.vbs C:\data\recent.ini
Option Explicit
Const kMost = 4
Const kSection = "Recent files"

Dim ini: Set ini = CreateObject("VelkSupport.CIniFile")
ini.Init WScript.Arguments(0)               ' a full path
ini.SaveNumericValue "Window", "Left", 10   ' makes the file if it is missing

Dim name
For Each name In Array("scale.dat", "report.txt", "scale.dat", "log.txt", "notes.txt", "old.ini", "report.txt")
    Opened name
Next
Show

' Takes the first place; the others move down, to where the name stood or to the end of the list.
Sub Opened(name)
    Dim place, key, moving, other
    moving = name
    For place = 1 To kMost
        key = CStr(place)
        other = ini.GetStringValue(kSection, key)   ' empty when there is none
        ini.SaveStringValue kSection, key, moving
        If other = name Or other = "" Then Exit Sub
        moving = other
    Next
End Sub

Sub Show()
    Dim keys, key, sections, text, count
    ini.EnumerateAllKeys kSection, keys
    For Each key In keys
        text = text & " " & ini.GetStringValue(kSection, key)
    Next
    WScript.Echo "Recently used:" & text
    count = ini.EnumerateAllSections(sections)
    WScript.Echo "Sections: " & count & ", the first is " & sections(1)
End Sub
