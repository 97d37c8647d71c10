' Lets the user choose the font and colour of a label, beginning with the one it has:
'
'     cscript //nologo font_dialog.vbs
'
' Needs somebody to choose. With the argument "prepare" it ends before the dialog is shown: so far the tests go.
Option Explicit
Const FonScreenFonts = 1, FonInitToLogFontStruct = 64, FonEffects = 256, FonLimitSize = 8192

Dim dialog: Set dialog = CreateObject("VelkSupport.CFontDialog")
dialog.Font.Size = 14
dialog.Font.Bold = True
dialog.Color = RGB(0, 0, 128)
dialog.Min = 8
dialog.Max = 36
dialog.Flags = FonScreenFonts Or FonInitToLogFontStruct Or FonEffects Or FonLimitSize

If WScript.Arguments.Count > 0 Then
    WScript.Echo "Ready to change a font of weight " & dialog.Font.Weight
ElseIf dialog.Show Then
    WScript.Echo dialog.Font.Name & ", " & Round(dialog.Font.Size) & " points, colour " & Hex(dialog.Color)
Else
    WScript.Echo "Cancelled"
End If
WScript.Quit 0
