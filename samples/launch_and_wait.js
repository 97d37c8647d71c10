// Starts a program and waits until it has ended:
//
//     cscript //nologo launch_and_wait.js notepad.exe C:\notes.txt
var sesSW_SHOWNORMAL = 1;
var seeNoError = -1;

var program = WScript.Arguments.length > 0 ? WScript.Arguments(0) : "notepad.exe";
var parameters = WScript.Arguments.length > 1 ? WScript.Arguments(1) : "";

function pause() {
    try {
        WScript.Sleep(20);
    } catch (missing) {  // a script host without Sleep asks more often
    }
}

var shell = new ActiveXObject("VelkSupport.CShellExecute");
var started = new Date().getTime();
var verdict = shell.LaunchProgram(0, program, parameters, "", sesSW_SHOWNORMAL);
if (verdict !== seeNoError) {
    WScript.Echo(program + " did not start: " + verdict);
    WScript.Quit(1);
}
while (shell.StillExecuting) pause();
WScript.Echo("It ended after " + ((new Date().getTime() - started) / 1000).toFixed(1) + " s");
WScript.Quit(0);
