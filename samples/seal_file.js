// Seals a parameter file again after its texts were edited, as CDatFile wants it:
//
//     cscript //nologo seal_file.js C:\data\scale.dat
//
// The seal covers the text from "[BEGIN]" to the bracket that opens "[END]"; the line with the old one goes.
var files = new ActiveXObject("Scripting.FileSystemObject");
var path = WScript.Arguments(0);

function read() {
    var file = files.OpenTextFile(path, 1);
    var text = file.ReadAll();
    file.Close();
    return text;
}

function write(text) {
    var file = files.CreateTextFile(path, true);
    file.Write(text);
    file.Close();
}

var text = read();
var begin = text.indexOf("[BEGIN]"), end = text.lastIndexOf("[END]");
if (begin !== 0 || end < 0) {
    WScript.Echo(path + " does not begin with [BEGIN], or has no [END].");
    WScript.Quit(1);
}
var seal = new ActiveXObject("VelkSupport.CCRC32").GetCRCFromString(text.slice(0, end + 1));
write(text.slice(0, end) + "[END]\r\n@CRC=" + seal + "\r\n");

var dat = new ActiveXObject("VelkSupport.CDatFile");
dat.Initialize(path);    // refuses a file whose seal is wrong
WScript.Echo("Sealed with " + dat.DatFileCRC);
WScript.Quit(0);
