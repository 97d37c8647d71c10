// Counts its runs in an INI file and remembers when it ran last.
//
//     cscript //nologo ini_file.js C:\data\runs.ini
var fileNotFound = -2147203822;

var ini = new ActiveXObject("VelkSupport.CIniFile");
ini.Filename = WScript.Arguments(0);    // a full path

function runsSoFar() {
    try {
        return Math.max(ini.GetNumericValue("Runs", "Count"), 0);    // -1 when there is no such key
    } catch (error) {
        if ((error.number | 0) !== fileNotFound) throw error;
        return 0;    // the first save makes the file
    }
}

var count = runsSoFar() + 1;
ini.SaveNumericValue("Runs", "Count", count);
ini.SaveStringValue("Runs", "Last", "run number " + count);
WScript.Echo("Stored: " + ini.GetStringValue("Runs", "Last") + ", " + ini.GetNumericValue("Runs", "Count"));
ini.DeleteKey("Runs", "Last");
WScript.Echo("Deleted: '" + ini.GetStringValue("Runs", "Last") + "'");
WScript.Quit(0);
