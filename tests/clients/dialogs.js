// The dialogs from JScript, as far as they go without a person.
var file = new ActiveXObject("VelkSupport.CFileDialog");
file.FileTitle = "too long";
file.MaxFileSize = 3;
var printing = new ActiveXObject("VelkSupport.CPrintDialog");
printing.Flags = -32768;
var fonts = new ActiveXObject("VelkSupport.CFontDialog");
fonts.Font.Bold = true;
var got = [file.Show(true), file.FileTitle, printing.Flags, printing.Max, fonts.Font.Weight, fonts.Flags].join(" ");
WScript.Echo(got === "false too long -32768 9999 700 67" ? "PASSED" : "FAILED " + got);
WScript.Quit(0);
