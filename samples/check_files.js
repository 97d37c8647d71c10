// Seals files with a list of their checksums, or says what changed since:
//
//     cscript //nologo check_files.js seal C:\data\files.crc C:\data\scale.dat C:\data\scale.ini
//     cscript //nologo check_files.js check C:\data\files.crc
//
// The list holds a line for each file: its checksum, a blank, its name.
var files = new ActiveXObject("Scripting.FileSystemObject");
var crc = new ActiveXObject("VelkSupport.CCRC32");
var given = WScript.Arguments;

function checksumOf(path) {
    if (!files.FileExists(path)) return "missing";    // the class would show a message box
    crc.InputFileName = path;
    var number = crc.GetCRCFromFile();
    var digits = (number < 0 ? number + 4294967296 : number).toString(16).toUpperCase();
    return "00000000".slice(digits.length) + digits;
}

function seal(listName) {
    var lines = "";
    for (var i = 2; i < given.length; i++) {
        var checksum = checksumOf(given(i));
        if (checksum === "missing") {
            WScript.Echo("There is no file " + given(i));
            return 1;
        }
        lines += checksum + " " + given(i) + "\r\n";
    }
    var list = files.CreateTextFile(listName, true);
    list.Write(lines);
    list.Close();
    WScript.Echo("Sealed " + (given.length - 2) + " files.");
    return 0;
}

function check(listName) {
    var list = files.OpenTextFile(listName, 1);
    var lines = list.ReadAll().split("\r\n");
    list.Close();
    var wrong = 0;
    for (var i = 0; i < lines.length; i++) {
        var path = lines[i].slice(9);
        var found = path ? checksumOf(path) : lines[i];
        if (found === lines[i].slice(0, 8)) continue;
        WScript.Echo((found === "missing" ? "missing: " : "changed: ") + path);
        wrong++;
    }
    WScript.Echo(wrong ? wrong + " files are not as they were sealed." : "All files are as they were sealed.");
    return wrong ? 1 : 0;
}

if (given.length < 2 || given(0) !== "seal" && given(0) !== "check") {
    WScript.Echo("Usage: cscript //nologo check_files.js seal LIST FILE... | check LIST");
    WScript.Quit(2);
}
WScript.Quit(given(0) === "seal" ? seal(given(1)) : check(given(1)));
