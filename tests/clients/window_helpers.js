// The window helpers from JScript.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

function numberOf(action) {
    try {
        action();
    } catch (e) {
        return e.number;
    }
    return 0;
}

var form = new ActiveXObject("VelkSupport.CFormSizeConstraint");
form.MaxWidth = 400;
form.minwidth = 400;
expect("a limit", 400, form.MinWidth);
expect("a contradiction", -2147203921, numberOf(function () { form.MaxWidth = 399; }));
expect("no window", -2147203923, numberOf(function () { form.hWnd = 1; }));
form.Release();

var list = new ActiveXObject("VelkSupport.CListViewExtended");
expect("no window", -2147203282, numberOf(function () { list.Init(1); }));
expect("no list view", -2147203283, numberOf(function () { list.SetSubItemIcon(0, 0, 0); }));
list.Redraw = true;
expect("redrawing", true, list.Redraw);

var hooks = new ActiveXObject("VelkSub.HookManager");
expect("no window", -2147203072, numberOf(function () { hooks.AddHook(form, 0, 36); }));
expect("no hooks", -2147203072, numberOf(function () { hooks.CallPreviousProc(0, 36, 0, 0); }));

if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
