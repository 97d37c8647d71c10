' Remembers a window's place and title in the registry of the current user, below
' HKEY_CURRENT_USER\SOFTWARE\Acme\Demo\Window.
'
'     cscript //nologo program_settings.vbs
Option Explicit
Const psrHKEY_CURRENT_USER = &H80000001

Dim settings: Set settings = CreateObject("VelkSupport.CProgramSettings")
settings.RootKey = psrHKEY_CURRENT_USER    ' without it every user's branch, for which writing takes more rights
settings.RegBase = "Acme"
settings.Program = "Demo"
settings.Section = "Window"

settings.WriteEntry "Title", "Scale 1"
settings.WriteEntryLong "Left", 1250
WScript.Echo settings.ReadEntry("Title", "untitled") & " at " & settings.ReadEntryLong("Left", 0) & _
    ", zoom " & settings.ReadEntryLong("Zoom", 100)
