// Works a formula out that is written the way a calculator with a stack takes it, operands first:
//
//     cscript //nologo stack.js "1250 12.5 - 4 /"
var formula = WScript.Arguments.length > 0 ? WScript.Arguments(0) : "1250 12.5 - 4 /";

function apply(operator, left, right) {
    switch (operator) {
        case "+": return left + right;
        case "-": return left - right;
        case "*": return left * right;
        case "/": return left / right;
    }
}

var stack = new ActiveXObject("VelkSupport.CStack");
var words = formula.split(" ");
for (var i = 0; i < words.length; i++) {
    var number = parseFloat(words[i]);
    if (!isNaN(number)) {
        stack.Push(number);
    } else if (stack.Count < 2) {
        WScript.Echo("Operands are missing for " + words[i]);
        WScript.Quit(1);
    } else {
        var right = stack.Pop();
        stack.Push(apply(words[i], stack.Pop(), right));
    }
}
WScript.Echo(formula + " = " + stack.Pop());
WScript.Quit(0);
