' Draws a pointer instrument with all four shapes:
'
'     cscript //nologo shapes.vbs
'
' A shape draws into any device context of its own process. In a host with forms pass a form's hDC to DrawInstrument; cscript
' has no window, so here it is 0 and nothing is seen.
Option Explicit

Const rbsBS_HOLLOW = 1, systemButtonFace = &H8000000F

DrawInstrument 0, 10, 10, 200, 62.5

Sub DrawInstrument(hDC, left, top, size, percent)
    Dim angle: angle = 210 - 240 * percent / 100
    Dim middle: middle = size / 2

    Dim frame: Set frame = Place(CreateObject("VelkSupport.CGDIRectangle"), left, top, size)
    frame.BrushStyle = rbsBS_HOLLOW
    frame.Draw3DRectangle hDC, RGB(128, 128, 128), RGB(255, 255, 255)

    Dim face: Set face = Place(CreateObject("VelkSupport.CGDIEllipse"), left + 5, top + 5, size - 10)
    face.FillColor = systemButtonFace
    face.DrawEllipse hDC

    Dim scaleArc: Set scaleArc = Place(CreateObject("VelkSupport.CGDIArc"), left + 15, top + 15, size - 30)
    scaleArc.BorderWidth = 3
    scaleArc.DrawArcByAngle hDC, -30, 210

    Dim needle: Set needle = CreateObject("VelkSupport.CGDILine")
    needle.X1 = left + middle
    needle.Y1 = top + middle
    needle.X2 = needle.X1 + Cos(angle * 3.14159265 / 180) * (middle - 20)
    needle.Y2 = needle.Y1 - Sin(angle * 3.14159265 / 180) * (middle - 20)
    needle.BorderColor = RGB(255, 0, 0)
    needle.DrawLine hDC
    WScript.Echo "The needle points from " & needle.X1 & ", " & needle.Y1 & " to " & needle.X2 & ", " & needle.Y2
End Sub

' Gives a shape the square box at a place.
Function Place(shape, left, top, size)
    shape.Left = left
    shape.Top = top
    shape.Right = left + size
    shape.Bottom = top + size
    Set Place = shape
End Function
