// CCRC32 from JScript, which passes every argument by value.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(WScript.ScriptName, "expect.js")).ReadAll());

var crc = new ActiveXObject("VelkSupport.CCRC32");
var text = "123456789";
expect("a literal", -873187034, crc.GetCRCFromStringAscii("123456789"));
expect("a variable", -873187034, crc.GetCRCFromStringAscii(text));
expect("a number", -873187034, crc.GetCRCFromStringAscii(123456789));
expect("an empty string", 0, crc.GetCRCFromString(""));
expect("two bytes a character", crc.GetCRCFromStringAscii("A\0"), crc.GetCRCFromString("A"));
crc.InputFileName = WScript.ScriptFullName;
expect("the name", WScript.ScriptFullName, crc.InputFileName);
expect("a file", true, crc.GetCRCFromFile() !== 0);
crc.InputFileName = "Q:\\no\\such\\file";
expect("a missing file", 0, crc.GetCRCFromFile());
expect("a missing argument is refused", false, failureOf(function () { crc.GetCRCFromString(); }) === "no error");
expect("an unknown member is refused", false, failureOf(function () { crc.NoSuchMember(); }) === "no error");
finish();
