// Says in a few lines what machine this is: system, user, processor, memory, network.
//
//     cscript //nologo machine.js
var system = new ActiveXObject("VelkSupport.COSInfo");
var computer = new ActiveXObject("VelkSupport.CComputerInfo");
var memory = new ActiveXObject("VelkSupport.CMemoryStatus");
var internet = new ActiveXObject("VelkSupport.CInternetConnection");

function megabytes(bytes) {
    return Math.round((bytes < 0 ? bytes + 4294967296 : bytes) / 1048576);    // a Long ends at 2 GB
}

var connections = ["", "by modem", "by network", "through a proxy", "not at all"];
WScript.Echo(system.UserName + " on " + system.ComputerName + ", Windows " + system.OSMajorVersion + "." +
    system.OSMinorVersion + " build " + system.OSBuild + ", " + system.Language);
WScript.Echo(computer.NumberOfProcessors + " processors; " + memory.MemoryLoad + " % of the memory in use, of which a program like " +
    "this one sees " + megabytes(memory.TotalPhysical) + " MB");
WScript.Echo("Running for " + system.WindowsUpTime + " minutes, temporary files in " + system.TempPath);
WScript.Echo("Connected " + connections[internet.ConnectionType] + (internet.Connected ? ": " + internet.ConnectionName : ""));
WScript.Quit(0);
