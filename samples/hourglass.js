// Shows the hourglass while something takes its time. In a program with windows it covers all of them. JScript releases
// objects late, so the pointer is given back by hand:
//
//     cscript //nologo hourglass.js
var glass = new ActiveXObject("VelkSupport.CHourglass");

function sum(last) {
    glass.Value = true;
    try {
        var result = 0;
        for (var i = 1; i <= last; i++) result += i;
        return result;
    } finally {
        glass.Value = false;
    }
}

WScript.Echo("The sum is " + sum(1000));
WScript.Quit(0);
