// Lets the user set the printer up without printing anything:
//
//     cscript //nologo print_dialog.js
//
// Needs a printer and somebody to choose. With the argument "prepare" it ends before the dialog is shown: so far the tests go.
var priPrintSetup = 64;

var dialog = new ActiveXObject("VelkSupport.CPrintDialog");
dialog.Flags = priPrintSetup;

if (WScript.Arguments.length > 0) {
    WScript.Echo("Ready to set the printer up with flags " + dialog.Flags);
} else {
    WScript.Echo(dialog.Show() ? "Set up" : "Cancelled");
}
WScript.Quit(0);
