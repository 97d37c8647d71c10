// CCRC32 from JScript, which passes every argument by value.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

function throws(action) {
    try {
        action();
        return false;
    } catch (error) {
        return true;
    }
}

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
expect("a missing argument is refused", true, throws(function () { crc.GetCRCFromString(); }));
expect("an unknown member is refused", true, throws(function () { crc.NoSuchMember(); }));
if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
