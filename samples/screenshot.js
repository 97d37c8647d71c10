// Puts a part of the screen on the clipboard, or says why it cannot:
//
//     cscript //nologo screenshot.js [LEFT TOP WIDTH HEIGHT]
var given = WScript.Arguments;
var area = given.length === 4 ? [given(0), given(1), given(2), given(3)] : [0, 0, 320, 200];

var camera = new ActiveXObject("VelkSupport.CScreenshot");
try {
    camera.CaptureRectangle(area[0], area[1], area[2], area[3]);
    WScript.Echo("On the clipboard: " + area[2] + " x " + area[3] + " pixels from " + area[0] + ", " + area[1]);
} catch (error) {
    WScript.Echo("Not captured: " + error.message);
    WScript.Quit(1);
}
WScript.Quit(0);
