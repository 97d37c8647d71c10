// CShellExecute, CHtmlHelp and CHourglass from JScript, which passes every argument by value.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(WScript.ScriptName, "expect.js")).ReadAll());

function numberOf(action) {
    try {
        action();
        return 0;
    } catch (raised) {
        return raised.number & 0xFFFF;
    }
}

var shell = new ActiveXObject("VelkSupport.CShellExecute");
expect("a program", -1, shell.LaunchProgram(0, "cmd.exe", "/c exit", "C:\\", 0));
while (shell.StillExecuting) {}
expect("a missing folder", 2, shell.LaunchFolder(0, "C:\\no\\such"));
expect("properties of nothing", 53, numberOf(function () { shell.ShowProperties("C:\\no\\such"); }));

var help = new ActiveXObject("VelkSupport.CHtmlHelp");
expect("no help file", 53, numberOf(function () { help.OpenFinder(); }));
help.ParentHWND = 0;
if (WScript.Arguments(0).length > 2) {
    help.HelpFile = WScript.Arguments(0);
    help.OpenSearch();
    help.OpenFinder();
}

var glass = new ActiveXObject("VelkSupport.CHourglass");
glass.Value = true;
expect("the hourglass", true, glass.Value);
glass.Value = false;
expect("no hourglass", false, glass.Value);
finish();
