// The dialogs from JScript, as far as they go without a person.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

var file = new ActiveXObject("VelkSupport.CFileDialog");
file.DialogTitle = "Open";
file.Flags = -32768;
file.FileTitle = "too long";
file.MaxFileSize = 3;
expect("the flags", -32768, file.Flags);
expect("a title that does not fit", false, file.Show(true));
expect("it stays", "too long", file.FileTitle);

var printing = new ActiveXObject("VelkSupport.CPrintDialog");
printing.FromPage = 2;
printing.ToPage = 3;
expect("the pages", "2-3", printing.FromPage + "-" + printing.ToPage);

var fonts = new ActiveXObject("VelkSupport.CFontDialog");
fonts.Font.Size = 12;
fonts.Font.Bold = true;
fonts.Color = 0x0000FF;
expect("the weight", 700, fonts.Font.Weight);
expect("the size", 12, Math.round(fonts.Font.Size));
expect("the colour", 255, fonts.Color);
if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
