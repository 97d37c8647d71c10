// Prints the checksums of files, in the order in which they are named:
//
//     cscript //nologo checksum.js C:\data\scale.dat C:\data\report.txt
var crc = new ActiveXObject("VelkSupport.CCRC32");
var files = new ActiveXObject("Scripting.FileSystemObject");
var missing = 0;

function hexadecimal(number) {
    var digits = (number < 0 ? number + 4294967296 : number).toString(16).toUpperCase();
    return "00000000".slice(digits.length) + digits;
}

for (var i = 0; i < WScript.Arguments.length; i++) {
    var path = WScript.Arguments(i);
    if (files.FileExists(path)) {    // the class would show a message box for a missing file
        crc.InputFileName = path;
        WScript.Echo(hexadecimal(crc.GetCRCFromFile()) + "  " + path);
    } else {
        WScript.Echo("missing   " + path);
        missing++;
    }
}
WScript.Quit(missing ? 1 : 0);
