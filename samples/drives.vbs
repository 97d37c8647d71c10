' Reports the drives, and warns of those with less than so many percent free (10 when no number is given):
'
'     cscript //nologo drives.vbs 20
Option Explicit

Dim least: least = 10
If WScript.Arguments.Count > 0 Then least = CDbl(WScript.Arguments(0))

Dim disks: Set disks = CreateObject("VelkSupport.CAPIDisks")
Dim timer: Set timer = CreateObject("VelkSupport.CMMTimer")
Dim full: full = 0
Dim i
timer.ScaleFactor = 1                       ' milliseconds
timer.StartTimer
WScript.Echo Pad("drive", 7) & Pad("label", 16) & Pad("kind", 10) & Pad("system", 8) & "free"
For i = 0 To disks.GetDriveCount - 1
    WScript.Echo Pad(disks.LogicalDrives(i), 7) & Pad(disks.DriveLabel(i), 16) & _
        Pad(disks.DriveTypeToString(disks.DriveType(i)), 10) & Pad(disks.DriveFileSystemType(i), 8) & Room(i)
Next
timer.StopTimer
WScript.Echo full & " drives are nearly full; asked in " & timer.ElapsedTime & " ms"
WScript.Quit Sgn(full)

Function Room(i)
    Room = "not ready"
    If Not disks.IsDriveReady(i) Then Exit Function
    Dim free: free = disks.DiskFreeSpace(i)
    Dim total: total = disks.DiskTotalSpace(i)
    Room = Gigabytes(free) & " of " & Gigabytes(total)
    If total = 0 Then Exit Function         ' nothing is known of its size
    If free * 100 >= total * least Then Exit Function
    full = full + 1
    Room = Room & "  nearly full"
End Function

Function Gigabytes(bytes)
    Gigabytes = FormatNumber(bytes / 1073741824, 1) & " GB"
End Function

Function Pad(text, width)
    Pad = text & " "
    If Len(Pad) < width Then Pad = Pad & Space(width - Len(Pad))
End Function
