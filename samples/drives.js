// Lists the drives and what is free on them, and says how long that took:
//
//     cscript //nologo drives.js
var disks = new ActiveXObject("VelkSupport.CAPIDisks");
var timer = new ActiveXObject("VelkSupport.CMMTimer");
timer.ScaleFactor = 1;  // milliseconds
timer.StartTimer();

function gigabytes(bytes) {
    return Math.round(bytes / 1073741824 * 10) / 10 + " GB";
}

for (var i = 0; i < disks.GetDriveCount(); i++) {
    var line = disks.LogicalDrives(i) + " ";
    if (disks.IsDriveReady(i)) {
        line += disks.DriveTypeToString(disks.DriveType(i)) + ", " + disks.DriveFileSystemType(i) + ", " +
            gigabytes(disks.DiskFreeSpace(i)) + " free of " + gigabytes(disks.DiskTotalSpace(i));
    } else {
        line += "not ready";
    }
    WScript.Echo(line);
}
timer.StopTimer();
WScript.Echo(disks.GetDriveCount() + " drives in " + timer.ElapsedTime + " ms");
WScript.Quit(0);
