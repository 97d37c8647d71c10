// The window helpers from JScript.
var failures = 0;

function expectError(what, number, action) {
    try {
        action();
    } catch (e) {
        if (e.number === number) return;
    }
    failures++;
    WScript.Echo("FAILED " + what);
}

var form = new ActiveXObject("VelkSupport.CFormSizeConstraint");
var list = new ActiveXObject("VelkSupport.CListViewExtended");
var hooks = new ActiveXObject("VelkSub.HookManager");
form.minwidth = 400;
expectError("a contradiction", -2147203921, function () { form.MaxWidth = form.MinWidth - 1; });
expectError("no window", -2147203923, function () { form.hWnd = 1; });
expectError("no list view", -2147203283, function () { list.SetSubItemIcon(0, 0, 0); });
expectError("no window to hook", -2147203072, function () { hooks.AddHook(form, 0, 36); });
var own = { MsgResponse: 0, WindowProc: function (window, message, wParam, lParam) { return 0; } };
expectError("no window for a script's hook", -2147203072, function () { hooks.AddHook(own, 0, 36); });
form.Release();

if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
