' Lets the user choose a parameter file and prints its checksum:
'
'     cscript //nologo file_dialog.vbs
'
' Needs somebody to choose. With the argument "prepare" it ends before the dialog is shown: so far the tests go.
Option Explicit
Const FleHideReadOnly = 4, FlePathMustExist = 2048, FleFileMustExist = 4096, FleExplorer = 524288

Dim dialog: Set dialog = CreateObject("VelkSupport.CFileDialog")
dialog.DialogTitle = "Open a parameter file"
dialog.Filter = "Parameter files (*.dat)|*.dat|All files|*.*"
dialog.FilterIndex = 1
dialog.Flags = FleExplorer Or FleFileMustExist Or FlePathMustExist Or FleHideReadOnly

If WScript.Arguments.Count > 0 Then
    WScript.Echo "Ready to ask for one of " & dialog.Filter
ElseIf dialog.Show(True) Then
    Dim crc: Set crc = CreateObject("VelkSupport.CCRC32")
    crc.InputFileName = dialog.Filename
    WScript.Echo dialog.FileTitle & ": " & Hex(crc.GetCRCFromFile)
Else
    WScript.Echo "Cancelled"
End If
WScript.Quit 0
