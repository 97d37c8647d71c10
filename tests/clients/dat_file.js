// CDatFile from JScript. The first argument is a file that was sealed outside the library.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

function messageOf(action) {
    try {
        action();
        return "no error";
    } catch (error) {
        return error.message;
    }
}

var dat = new ActiveXObject("VelkSupport.CDatFile");
expect("before Initialize", "Object not initialized", messageOf(function () { dat.GetHumanReadable(); }));
expect("a missing file", "File does not exist.", messageOf(function () { dat.Initialize("Q:\\no\\such\\file.dat"); }));
dat.Initialize(WScript.Arguments(0));
dat.Parameter = "WT.GROSS";
expect("the parameter", "WT.GROSS", dat.Parameter);
expect("for people", "Gross weight, kg", dat.GetHumanReadable());
expect("for the indicator", "GROSS KG", dat.GetIndicatorReadable());
expect("the seal", true, /^-?\d+$/.test(dat.DatFileCRC));
if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
