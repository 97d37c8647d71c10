' Lets the user choose pages and copies of a document of twelve pages:
'
'     cscript //nologo print_dialog.vbs
'
' Needs a printer and somebody to choose. With the argument "prepare" it ends before the dialog is shown: so far the tests go.
Option Explicit
Const priPageNums = 2, priNoSelection = 4, priCollate = 16

Dim dialog: Set dialog = CreateObject("VelkSupport.CPrintDialog")
dialog.Min = 1
dialog.Max = 12
dialog.FromPage = 1
dialog.ToPage = 12
dialog.Copies = 1
dialog.Flags = priPageNums Or priNoSelection

If WScript.Arguments.Count > 0 Then
    WScript.Echo "Ready to print pages " & dialog.FromPage & " to " & dialog.ToPage
ElseIf dialog.Show Then
    WScript.Echo dialog.Copies & " x " & Pages & Collated
Else
    WScript.Echo "Cancelled"
End If
WScript.Quit 0

Function Pages
    Pages = "all pages"
    If dialog.Flags And priPageNums Then Pages = "pages " & dialog.FromPage & " to " & dialog.ToPage
End Function

Function Collated
    If dialog.Flags And priCollate Then Collated = ", collated"
End Function
