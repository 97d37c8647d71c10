// Opens a compiled help file at its index, for a minute:
//
//     cscript //nologo open_help.js C:\scale.chm
var help = new ActiveXObject("VelkSupport.CHtmlHelp");
help.HelpFile = WScript.Arguments(0);
try {
    help.OpenFinder();
} catch (raised) {
    WScript.Echo("No help file " + help.HelpFile + ": " + raised.message);
    WScript.Quit(1);
}
WScript.Sleep(60000);
WScript.Quit(0);
