// Shows how far the checksum of a file is: events in JScript.
//
//     cscript //nologo progress.js C:\data\large.bin
//
// The host connects the functions whose names begin with the prefix, here to an object that is there already. A host without events
// says so, and the checksum is the same.
var crc = new ActiveXObject("VelkSupport.CCRC32");

// The fraction that is done, from 0 to 1.
function crc_Progress(fraction) {
    WScript.Echo(Math.round(fraction * 100) + " %");
}

if (WScript.Arguments.length !== 1) {
    WScript.Echo("Usage: progress.js FILE");
    WScript.Quit(2);
}
try {
    WScript.ConnectObject(crc, "crc_");
} catch (error) {
    WScript.Echo("This host connects no events.");
}
crc.InputFileName = WScript.Arguments(0);
var checksum = crc.GetCRCFromFile();
WScript.Echo((checksum < 0 ? checksum + 4294967296 : checksum).toString(16).toUpperCase() + "  " + WScript.Arguments(0));
