// CCRC32 and CDatFile from JScript, which passes every argument by value. The first argument is a file that was sealed
// outside the library.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(WScript.ScriptName, "expect.js")).ReadAll());

var crc = new ActiveXObject("VelkSupport.CCRC32");
expect("a literal", -873187034, crc.GetCRCFromStringAscii("123456789"));
expect("a number", -873187034, crc.GetCRCFromStringAscii(123456789));
expect("two bytes a character", crc.GetCRCFromStringAscii("A\0"), crc.GetCRCFromString("A"));
expect("a missing argument is refused", false, failureOf(function () { crc.GetCRCFromString(); }) === "no error");
expect("an unknown member is refused", false, failureOf(function () { crc.NoSuchMember(); }) === "no error");

var dat = new ActiveXObject("VelkSupport.CDatFile");
expect("before Initialize", "80042716 Object not initialized", failureOf(function () { dat.GetHumanReadable(); }));
dat.Initialize(WScript.Arguments(0));
dat.Parameter = "WT.GROSS";
expect("the texts", "Gross weight, kg, GROSS KG", dat.GetHumanReadable() + ", " + dat.GetIndicatorReadable());
expect("the seal", true, /^-?\d+$/.test(dat.DatFileCRC));
finish();
