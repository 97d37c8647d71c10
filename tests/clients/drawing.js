// The shapes and the screenshot from JScript, which passes every argument by value.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(WScript.ScriptName, "expect.js")).ReadAll());

var line = new ActiveXObject("VelkSupport.CGDILine");
line.X1 = -3;
line.PenStyle = 99;
line.BorderColor = -2147483643;  // a system colour
line.Draw3DLine(0, 255, 65280);
expect("a coordinate", -3, line.X1);
expect("a style", 99, line.PenStyle);
expect("a colour", -2147483643, line.BorderColor);
var arc = new ActiveXObject("VelkSupport.CGDIArc");
arc.DrawArcByAngle(0, 30, 120.5);
expect("the default mix mode", 13, arc.ForegroundMixMode);

var camera = new ActiveXObject("VelkSupport.CScreenshot");
try {
    camera.CaptureWindow(0);
    expect("an error", true, false);
} catch (error) {
    expect("its number", 0x80044665 | 0, error.number);
    expect("its text", "Invalid window handle", error.message);
}
finish();
