// What the script clients share.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

// "800a0005 Invalid procedure call or argument"
function failureOf(action) {
    try {
        action();
        return "no error";
    } catch (error) {
        return (error.number >>> 0).toString(16) + " " + error.description;
    }
}

function finish() {
    if (failures === 0) WScript.Echo("PASSED");
    WScript.Quit(failures);
}
