// The system classes from JScript, which passes every argument by value.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

var disks = new ActiveXObject("VelkSupport.CAPIDisks");
expect("the first drive", "C:\\", disks.LogicalDrives(0));
expect("no drive", "", disks.LogicalDrives(-1));
expect("a letter", "C", disks.DriveLetterFromNumber(2));
expect("a type", "Fixed", disks.DriveTypeToString(disks.DriveType(0)));
expect("a ready drive", true, disks.IsDriveReady(0));
expect("capabilities", "Volume is compressed", disks.VolumeFlagsToString(65536));

var info = new ActiveXObject("VelkSupport.COSInfo");
expect("a temporary file", info.TempPath + "abc1.tmp", info.TempFile("abcd"));
expect("an identifier", 4, info.GUID.split("-").length);
info.ScreenSaverTimeout = info.ScreenSaverTimeout;

var timer = new ActiveXObject("VelkSupport.CMMTimer");
timer.ScaleFactor = 1;
timer.StartTimer();
var patience = 10000000;
while (timer.ElapsedTime < 40 && --patience > 0) {}
timer.StopTimer();
expect("milliseconds", true, timer.ElapsedTime >= 40 && timer.ElapsedTime < 5000);
timer.ScaleFactor = 0;
expect("a factor of 0", 1, timer.ScaleFactor);

var connection = new ActiveXObject("VelkSupport.CInternetConnection");
try {
    connection.WorkMode = 3;
    expect("an invalid mode", "an error", "none");
} catch (e) {
    expect("its number", 0x80044525 - 0x100000000, e.number);
    expect("its text", "Invalid work mode", e.description);
}

var memory = new ActiveXObject("VelkSupport.CMemoryStatus");
expect("the memory load", true, memory.MemoryLoad >= 0 && memory.MemoryLoad <= 100);
if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
