' The facts of the machine as VBScript gets them, one "name=value" a line.
Set disks = CreateObject("VelkSupport.CAPIDisks")
Set info = CreateObject("VelkSupport.COSInfo")
Set computer = CreateObject("VelkSupport.CComputerInfo")
Set memory = CreateObject("VelkSupport.CMemoryStatus")

' Space in megabytes, since the text of a larger Double may have an exponent.
For i = 0 To disks.GetDriveCount - 1
    root = disks.LogicalDrives(i)
    roots = roots & root
    WScript.Echo "free " & root & "=" & Int(disks.DiskFreeSpace(i) / 1048576)
    WScript.Echo "total " & root & "=" & Int(disks.DiskTotalSpace(i) / 1048576)
    WScript.Echo "state " & root & "=" & disks.IsDriveReady(i) & " " & disks.DriveTypeToString(disks.DriveType(i))
Next
WScript.Echo "drives=" & roots

Dim left, top, width, height
info.GetWorkArea left, top, width, height
WScript.Echo "work area=" & left & " " & top & " " & width & " " & height
WScript.Echo "colours=" & info.DisplayColors
WScript.Echo "version=" & info.OSMajorVersion & "." & info.OSMinorVersion & "." & info.OSBuild & " " & info.OSAdditional
WScript.Echo "names=" & info.UserName & " " & info.ComputerName & " " & info.WindowsType
WScript.Echo "folders=" & info.WindowsDirectory & ";" & info.SystemDirectory & ";" & info.TempPath
WScript.Echo "minutes=" & info.WindowsUpTime
WScript.Echo "processors=" & computer.NumberOfProcessors & " " & computer.ActiveProcessorMask
WScript.Echo "kind=" & computer.ProcessorArchitecture & " " & computer.ProcessorLevel & " " & computer.ProcessorRevision
WScript.Echo "features=" & computer.CompareExchangeDouble & " " & computer.MMXAvailable
WScript.Echo "memory=" & computer.PageSize & " " & memory.TotalPhysical
WScript.Echo "load=" & memory.MemoryLoad
