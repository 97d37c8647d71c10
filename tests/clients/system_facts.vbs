' The facts of the machine as VBScript gets them, one "name=value" a line.
Option Explicit

Sub Fact(name, value)
    WScript.Echo name & "=" & value
End Sub

Dim disks: Set disks = CreateObject("VelkSupport.CAPIDisks")
Dim i, root, roots
For i = 0 To disks.GetDriveCount - 1
    root = disks.LogicalDrives(i)
    roots = roots & root
    Fact "free " & root, Bytes(disks.DiskFreeSpace(i))
    Fact "total " & root, Bytes(disks.DiskTotalSpace(i))
    Fact "ready " & root, disks.IsDriveReady(i)
    Fact "type " & root, disks.DriveTypeToString(disks.DriveType(i))
Next
Fact "drives", roots

Dim info: Set info = CreateObject("VelkSupport.COSInfo")
Dim left, top, width, height
info.GetWorkArea left, top, width, height
Fact "work area", left & " " & top & " " & width & " " & height
Fact "colours", info.DisplayColors
Fact "version", info.OSMajorVersion & "." & info.OSMinorVersion
Fact "build", info.OSBuild
Fact "service pack", info.OSAdditional
Fact "platform", info.WindowsType
Fact "user", info.UserName
Fact "computer", info.ComputerName
Fact "folders", info.WindowsDirectory & ";" & info.SystemDirectory & ";" & info.TempPath
Fact "minutes", info.WindowsUpTime

Dim computer: Set computer = CreateObject("VelkSupport.CComputerInfo")
Fact "processors", computer.NumberOfProcessors
Fact "mask", computer.ActiveProcessorMask
Fact "page", computer.PageSize
Fact "architecture", computer.ProcessorArchitecture
Fact "level", computer.ProcessorLevel
Fact "revision", computer.ProcessorRevision
Fact "cx8", computer.CompareExchangeDouble
Fact "mmx", computer.MMXAvailable

Dim memory: Set memory = CreateObject("VelkSupport.CMemoryStatus")
Fact "physical", memory.TotalPhysical
Fact "load", memory.MemoryLoad

' All digits: a large Double's own text may have an exponent.
Function Bytes(count)
    Dim digits, rest
    rest = count
    Do
        digits = CStr(rest - Int(rest / 10) * 10) & digits
        rest = Int(rest / 10)
    Loop While rest > 0
    Bytes = digits
End Function
WScript.Quit 0
