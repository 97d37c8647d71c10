// Opens a sealed parameter file and prints the texts of one parameter, or says why the file is refused:
//
//     cscript //nologo read_sealed_file.js C:\data\scale.dat WT.GROSS
var dat = new ActiveXObject("VelkSupport.CDatFile");
var fileMissing = -2147211500;
var sealBroken = -2147211499;

function describe(number) {
    switch (number | 0) {
        case fileMissing: return "there is no such file";
        case sealBroken: return "it was changed after it was sealed";
        default: return "error " + number;
    }
}

try {
    dat.Initialize(WScript.Arguments(0));
} catch (error) {
    WScript.Echo("Refused: " + describe(error.number) + ".");
    WScript.Quit(1);
}
dat.Parameter = WScript.Arguments(1);
WScript.Echo(dat.Parameter + ": " + dat.GetHumanReadable() + " (" + dat.GetIndicatorReadable() + " on the indicator)");
WScript.Quit(0);
