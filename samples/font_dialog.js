// Lets the user choose a font of fixed pitch for a listing and prints it as a style sheet wants it:
//
//     cscript //nologo font_dialog.js
//
// Needs somebody to choose. With the argument "prepare" it ends before the dialog is shown: so far the tests go.
var FonScreenFonts = 1, FonInitToLogFontStruct = 64, FonFixedPitchOnly = 16384;

var dialog = new ActiveXObject("VelkSupport.CFontDialog");
dialog.Font.Italic = true;
dialog.Flags = FonScreenFonts | FonInitToLogFontStruct | FonFixedPitchOnly;

function styleOf(font) {
    return "font: " + (font.Italic ? "italic " : "") + (font.Bold ? "bold " : "") + Math.round(font.Size) + "pt " + font.Name;
}

if (WScript.Arguments.length > 0) {
    WScript.Echo("Ready to change " + styleOf(dialog.Font));
} else {
    WScript.Echo(dialog.Show() ? styleOf(dialog.Font) : "Cancelled");
}
WScript.Quit(0);
