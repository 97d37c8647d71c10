// Asks where to save a report, writes it, and asks for an existing name to be confirmed:
//
//     cscript //nologo file_dialog.js
//
// Needs somebody to choose. With the argument "prepare" it ends before the dialog is shown: so far the tests go.
var FleOverWritePrompt = 2, FlePathMustExist = 2048, FleExplorer = 524288;

var dialog = new ActiveXObject("VelkSupport.CFileDialog");
dialog.DialogTitle = "Save the report";
dialog.Filter = "Text files (*.txt)|*.txt|All files|*.*";
dialog.DefaultExt = "txt";
dialog.Filename = "report.txt";
dialog.Flags = FleExplorer | FleOverWritePrompt | FlePathMustExist;

if (WScript.Arguments.length > 0) {
    WScript.Echo("Ready to save " + dialog.Filename);
} else if (dialog.Show(false)) {
    var file = new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(dialog.Filename, true);
    file.WriteLine("Gross weight: 1250 kg");
    file.Close();
    WScript.Echo("Saved " + dialog.Filename);
} else {
    WScript.Echo("Cancelled");
}
WScript.Quit(0);
