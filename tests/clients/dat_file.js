// CDatFile from JScript. The first argument is a file that was sealed outside the library.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(WScript.ScriptName, "expect.js")).ReadAll());

var dat = new ActiveXObject("VelkSupport.CDatFile");
expect("before Initialize", "80042716 Object not initialized", failureOf(function () { dat.GetHumanReadable(); }));
expect("a missing file", "80042714 File does not exist.", failureOf(function () { dat.Initialize("Q:\\no\\such\\file.dat"); }));
dat.Initialize(WScript.Arguments(0));
dat.Parameter = "WT.GROSS";
expect("the parameter", "WT.GROSS", dat.Parameter);
expect("for people", "Gross weight, kg", dat.GetHumanReadable());
expect("for the indicator", "GROSS KG", dat.GetIndicatorReadable());
expect("the seal", true, /^-?\d+$/.test(dat.DatFileCRC));
finish();
