// Fits the columns of another program's list view to what is in them, and says what the window helpers can do for a window:
//
//     cscript //nologo window_helpers.js 1312806
//
// The number is the window's handle; a window inspector shows it. Limits and icons take a window of the script's own thread,
// which a script host does not have; a program with forms has one (window_helpers.cpp, icon_menu.cpp).
var eColumnsSizeStyle_AutosizeByHeaderAndItems = 2;

if (WScript.Arguments.length !== 1) {
    WScript.Echo("Usage: cscript //nologo window_helpers.js HANDLE");
    WScript.Quit(2);
}
var handle = Number(WScript.Arguments(0));

function say(what, action) {
    var verdict = "done";
    try {
        action();
    } catch (raised) {
        verdict = explain(raised.number | 0) || raised.message;
    }
    WScript.Echo(what + ": " + verdict);
}

function explain(number) {
    switch (number) {
        case -2147203923: case -2147203282: return "there is no such window";          // 0x800444AD, 0x8004472E
        case -2147203918: case -2146828283: return "it is no window of this thread";    // 0x800444B2, 0x800A0005
        case -2147221164: case -2146827859: return "VelkSub.dll is not registered";     // 0x80040154, 0x800A01AD
    }
}

say("Finding the hook library", function () {
    new ActiveXObject("VelkSub.HookManager");
});
say("Columns as wide as their texts", function () {
    var list = new ActiveXObject("VelkSupport.CListViewExtended");
    list.Init(handle);
    list.ResizeColumns(eColumnsSizeStyle_AutosizeByHeaderAndItems);
});
say("Not smaller than 320 x 200", function () {
    var form = new ActiveXObject("VelkSupport.CFormSizeConstraint");
    form.MinWidth = 320;
    form.MinHeight = 200;
    form.Init(handle);
});
say("Menus with icons", function () {
    var menu = new ActiveXObject("VelkSupport.cIconMenu");
    menu.CommandImage(1001) = 0;
    menu.Attach(handle);
});
WScript.Quit(0);
