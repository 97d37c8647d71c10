// The system classes from JScript, which passes every argument by value.
function expect(what, wanted, got) {
    if (wanted === got) return;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
    WScript.Quit(1);
}

var disks = new ActiveXObject("VelkSupport.CAPIDisks");
expect("the first drive", "C:\\Fixed", disks.LogicalDrives(0) + disks.DriveTypeToString(disks.DriveType(0)));

var timer = new ActiveXObject("VelkSupport.CMMTimer");
timer.ScaleFactor = 1;
timer.StartTimer();
for (var patience = 10000000; timer.ElapsedTime < 40 && patience > 0; patience--) {}
expect("milliseconds", true, timer.ElapsedTime >= 40 && timer.ElapsedTime < 5000);

try {
    new ActiveXObject("VelkSupport.CInternetConnection").WorkMode = 3;
    expect("an invalid mode", "an error", "none");
} catch (e) {
    expect("its error", "-2147203803 Invalid work mode", e.number + " " + e.description);
}
WScript.Echo("PASSED");
WScript.Quit(0);
