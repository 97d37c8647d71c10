' Shows the hourglass while something takes its time. In a program with windows it covers all of them; it goes with the
' object, however the procedure ends:
'
'     cscript //nologo hourglass.vbs
Option Explicit

Function Sum(last)
    Dim glass: Set glass = CreateObject("VelkSupport.CHourglass")
    glass.Value = True
    Dim i
    For i = 1 To last
        Sum = Sum + i
    Next
End Function

Dim result: result = Sum(1000)
WScript.Echo "The sum is " & result
WScript.Quit 0
