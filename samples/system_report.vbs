' Writes a page with everything that the library knows about this machine; look at it with any browser:
'
'     cscript //nologo system_report.vbs C:\reports\system.html
Option Explicit

If WScript.Arguments.Count <> 1 Then
    WScript.Echo "Usage: cscript system_report.vbs PAGE.html"
    WScript.Quit 2
End If

Dim timer: Set timer = CreateObject("VelkSupport.CMMTimer")
timer.ScaleFactor = 1
timer.StartTimer

Dim disks: Set disks = CreateObject("VelkSupport.CAPIDisks")
Dim system: Set system = CreateObject("VelkSupport.COSInfo")
Dim computer: Set computer = CreateObject("VelkSupport.CComputerInfo")
Dim memory: Set memory = CreateObject("VelkSupport.CMemoryStatus")
Dim internet: Set internet = CreateObject("VelkSupport.CInternetConnection")

Dim page: Set page = CreateObject("VelkSupport.CConCat")
Dim body: body = Overview & Drives & "<div class=""cards"">" & SystemCard & UserCard & ScreenCard & ProcessorCard & _
    MemoryCard & InternetCard & "</div>"
timer.StopTimer
WriteHead
page.Append body
WriteFoot
Save WScript.Arguments(0)
WScript.Echo "Wrote " & disks.GetDriveCount & " drives and 6 tables to " & WScript.Arguments(0)
WScript.Quit 0

' --- What the page tells ---

Function Overview
    Dim used: used = memory.MemoryLoad
    Overview = "<div class=""tiles"">" & _
        Tile("Memory in use", used & " %", Bar(used, 100)) & _
        Tile("Processors", computer.NumberOfProcessors, Small(ArchitectureName)) & _
        Tile("Running for", Duration(system.WindowsUpTime), Small("since the system started")) & _
        Tile("Internet", ConnectionName, Small(internet.ConnectionName)) & "</div>"
End Function

Function Drives
    Dim rows, i
    For i = 0 To disks.GetDriveCount - 1
        rows = rows & DriveRow(i)
    Next
    Drives = "<section><h2>Drives</h2><table class=""drives""><tr><th>Drive</th><th>Label</th><th>Type</th>" & _
        "<th>File system</th><th>Serial number</th><th class=""wide"">Used</th><th class=""number"">Free</th>" & _
        "<th class=""number"">Total</th></tr>" & rows & "</table></section>"
End Function

Function DriveRow(i)
    Dim total: total = disks.DiskTotalSpace(i)
    Dim free: free = disks.DiskFreeSpace(i)
    Dim share: share = "none"
    If total > 0 Then share = Int((total - free) / total * 100 + 0.5) & " %"
    Dim readiness: readiness = "not ready"
    If disks.IsDriveReady(i) Then readiness = "ready"
    DriveRow = "<tr><td><b>" & Text(disks.LogicalDrives(i)) & "</b><br>" & Small(readiness) & "</td><td>" & _
        OrDash(disks.DriveLabel(i)) & "</td><td>" & Text(disks.DriveTypeToString(disks.DriveType(i))) & "</td><td>" & _
        OrDash(disks.DriveFileSystemType(i)) & "<br>" & Small(disks.VolumeFlagsToString(disks.DriveFlags(i))) & _
        "</td><td class=""code"">" & OrDash(disks.DriveSerialNumber(i)) & "</td><td>" & Bar(total - free, total) & _
        Small(share) & "</td><td class=""number"">" & Size(free) & "</td><td class=""number"">" & Size(total) & "</td></tr>"
End Function

Function SystemCard
    Dim platforms: platforms = Array("Windows 32s", "Windows 95", "Windows NT")
    SystemCard = Card("Operating system", Array( _
        "Platform", platforms(system.WindowsType), _
        "Version", system.OSMajorVersion & "." & system.OSMinorVersion & ", build " & system.OSBuild, _
        "Service pack", system.OSAdditional, _
        "Language", system.Language, _
        "Computer name", system.ComputerName, _
        "Hardware profile", system.CurrentHardwareProfile, _
        "Windows folder", system.WindowsDirectory, _
        "System folder", system.SystemDirectory))
End Function

Function UserCard
    UserCard = Card("User", Array( _
        "Name", system.UserName, _
        "Registered name", system.DefaultUserName, _
        "Registered company", system.DefaultCompanyName, _
        "Temporary folder", system.TempPath, _
        "A temporary file", system.TempFile("report"), _
        "A new identifier", system.GUID))
End Function

Function ScreenCard
    Dim left, top, width, height, colours
    system.GetWorkArea left, top, width, height
    colours = Grouped(system.DisplayColors)
    If system.DisplayColors = -1 Then colours = "32 bits per pixel"
    ScreenCard = Card("Screen and sound", Array( _
        "Work area", width & " x " & height & " pixels at " & left & ", " & top, _
        "Colours", colours, _
        "Large fonts", YesNo(system.LargeFonts), _
        "Screen saver", YesNo(system.ScreenSaverActive) & ", after " & system.ScreenSaverTimeout & " s", _
        "Warning beep", YesNo(system.Beep)))
End Function

Function ProcessorCard
    Dim kind
    If computer.ProcessorType = 586 Then kind = " (Pentium or later)"
    ProcessorCard = Card("Processor", Array( _
        "Architecture", ArchitectureName, _
        "Type", computer.ProcessorType & kind, _
        "Level, revision", computer.ProcessorLevel & ", " & HexNumber(computer.ProcessorRevision And &HFFFF&), _
        "Active processors", HexNumber(computer.ActiveProcessorMask) & " (" & computer.NumberOfProcessors & ")", _
        "MMX", YesNo(computer.MMXAvailable), _
        "64-bit compare and exchange", YesNo(computer.CompareExchangeDouble), _
        "Floating point emulated", YesNo(computer.FloatingPointEmulated), _
        "Floating-point erratum", YesNo(computer.FloatingPointError), _
        "Slow processor", YesNo(computer.SlowMachine), _
        "Slow graphics", YesNo(computer.SlowGraphics), _
        "Little memory", YesNo(computer.LowMemory)))
End Function

Function MemoryCard
    MemoryCard = Card("Memory, as a 32-bit program sees it", Array( _
        "Physical", Amounts(memory.AvailablePhysical, memory.TotalPhysical), _
        "With page file", Amounts(memory.AvailablePageFile, memory.TotalPageFile), _
        "Address space", Amounts(memory.AvailableVirtual, memory.TotalVirtual), _
        "Addresses", HexNumber(computer.MinAppAddress) & " to " & HexNumber(computer.MaxAppAddress), _
        "Page", Grouped(computer.PageSize) & " bytes", _
        "Allocation step", Grouped(computer.AllocationGranularity) & " bytes"))
End Function

Function InternetCard
    Dim mode: mode = "online"
    If internet.WorkMode = 1 Then mode = "offline"
    InternetCard = Card("Internet", Array( _
        "Connected", YesNo(internet.Connected), _
        "Through", ConnectionName, _
        "Connection", internet.ConnectionName, _
        "Working", mode, _
        "Dialling installed", YesNo(internet.RasInstalled)))
End Function

Function ConnectionName
    Dim names: names = Array("", "Modem", "Network", "Proxy", "Not connected")
    ConnectionName = names(internet.ConnectionType)
End Function

Function ArchitectureName
    Dim names: names = Array("Unknown", "Intel", "MIPS", "Alpha", "PowerPC")
    Dim number: number = computer.ProcessorArchitecture
    ArchitectureName = "Number " & number
    If number = 9 Then ArchitectureName = "x64"
    If number <= 3 Then ArchitectureName = names(number + 1)
End Function

' --- How it is told ---

Function Amounts(free, total)
    Amounts = Size(Unsigned(free)) & " free of " & Size(Unsigned(total))
End Function

' Sizes of 2 GB and more come as negative Longs.
Function Unsigned(value)
    Unsigned = CDbl(value)
    If value < 0 Then Unsigned = value + 4294967296
End Function

Function Size(bytes)
    Dim units: units = Array("bytes", "KB", "MB", "GB", "TB", "PB")
    Dim amount: amount = bytes
    Dim i: i = 0
    Do While amount >= 1024 And i < 5
        amount = amount / 1024
        i = i + 1
    Loop
    If i > 0 And amount < 100 Then amount = Int(amount * 10 + 0.5) / 10 Else amount = Int(amount + 0.5)
    Size = amount & " " & units(i)
End Function

Function Grouped(number)
    Dim rest: rest = CStr(number)
    Do While Len(rest) > 3
        Grouped = " " & Right(rest, 3) & Grouped
        rest = Mid(rest, 1, Len(rest) - 3)
    Loop
    Grouped = rest & Grouped
End Function

Function HexNumber(value)
    HexNumber = "0x" & Hex(value)
End Function

Function Duration(minutes)
    Dim hours: hours = minutes \ 60
    Duration = (minutes Mod 60) & " min"
    If hours > 0 Then Duration = (hours Mod 24) & " h " & Duration
    If hours >= 24 Then Duration = (hours \ 24) & " d " & Duration
End Function

Function YesNo(value)
    YesNo = "no"
    If value Then YesNo = "yes"
End Function

Function Card(title, facts)
    Dim rows, i
    For i = 0 To UBound(facts) Step 2
        rows = rows & "<tr><th>" & Text(facts(i)) & "</th><td>" & OrDash(facts(i + 1)) & "</td></tr>"
    Next
    Card = "<section><h2>" & Text(title) & "</h2><table>" & rows & "</table></section>"
End Function

Function Tile(title, value, below)
    Tile = "<div class=""tile""><div class=""title"">" & Text(title) & "</div><div class=""value"">" & Text(value) & _
        "</div>" & below & "</div>"
End Function

Function Bar(part, whole)
    Dim percent: percent = 0
    If whole > 0 Then percent = Int(part / whole * 100 + 0.5)
    Dim kind: kind = "bar"
    If percent >= 90 Then kind = "bar full"
    Bar = "<div class=""" & kind & """><div style=""width:" & percent & "%""></div></div>"
End Function

Function Small(value)
    Small = "<span class=""small"">" & Text(value) & "</span>"
End Function

Function OrDash(value)
    OrDash = Text(value)
    If Trim(value) = "" Then OrDash = "<span class=""small"">&ndash;</span>"
End Function

Function Text(value)
    Text = Replace(Replace(Replace(Replace(value, "&", "&amp;"), "<", "&lt;"), ">", "&gt;"), """", "&quot;")
End Function

Sub WriteHead
    page.Append "<!DOCTYPE html><html lang=""en""><head><meta charset=""utf-16"">" & vbCrLf
    page.Append "<meta name=""viewport"" content=""width=device-width"">" & vbCrLf
    page.Append "<title>" & Text(system.ComputerName) & ": system report</title><style>" & vbCrLf
    page.Append "body{font:15px/1.45 'Segoe UI',Tahoma,sans-serif;color:#1d2733;background:#f2f4f7;margin:0}" & vbCrLf
    page.Append "main{max-width:1080px;margin:0 auto;padding:28px 20px}h1{font-size:26px;margin:0}" & vbCrLf
    page.Append "h2{font-size:16px;margin:0 0 8px;color:#155a8a}.small,.title,footer{color:#5c6b7a;font-size:13px}" & vbCrLf
    page.Append "section,.tile{background:#fff;border:1px solid #dde3e9;border-radius:8px;padding:16px 18px}" & vbCrLf
    page.Append ".tiles{display:flex;flex-wrap:wrap;gap:16px;margin:20px 0}.tile{flex:1 1 130px}" & vbCrLf
    page.Append ".cards{columns:2 420px;column-gap:16px;margin:16px 0}.cards section{break-inside:avoid;margin:0 0 16px}" & vbCrLf
    page.Append ".value{font-size:24px;margin:2px 0 4px}" & vbCrLf
    page.Append "table{border-collapse:collapse;width:100%}th{font-weight:normal;color:#5c6b7a;text-align:left}" & vbCrLf
    page.Append "td,th{padding:5px 12px 5px 0;border-top:1px solid #edf0f3;vertical-align:top}" & vbCrLf
    page.Append "tr:first-child>*{border-top:0}.cards th{width:38%}.cards td{overflow-wrap:anywhere}" & vbCrLf
    page.Append ".drives{min-width:720px}section{overflow-x:auto}.wide{width:18%}" & vbCrLf
    page.Append ".drives .number{text-align:right;white-space:nowrap}.code{font-family:Consolas,monospace}" & vbCrLf
    page.Append ".bar{height:10px;border-radius:5px;background:#dfe6ec;margin-top:7px;overflow:hidden}" & vbCrLf
    page.Append ".bar div{height:10px;background:#2a7fbf}.full div{background:#c8472f}footer{margin-top:8px}" & vbCrLf
    page.Append "@media(prefers-color-scheme:dark){body{color:#e3e8ee;background:#14181d}h2{color:#7cc0ee}" & vbCrLf
    page.Append "section,.tile{background:#1d232a;border-color:#313a44}.small,.title,footer,th{color:#9aa7b4}" & vbCrLf
    page.Append "td,th{border-color:#313a44}.bar{background:#313a44}}" & vbCrLf
    page.Append "</style></head><body><main><h1>" & Text(system.ComputerName) & "</h1>" & vbCrLf
    page.Append Small("System report for " & system.UserName & ", " & Now) & vbCrLf
End Sub

Sub WriteFoot
    page.Append "<footer>Read in " & timer.ElapsedTime & " ms.</footer></main></body></html>" & vbCrLf
End Sub

Sub Save(path)
    Dim file: Set file = CreateObject("Scripting.FileSystemObject").CreateTextFile(path, True, True)
    file.Write page.Text
    file.Close
End Sub
