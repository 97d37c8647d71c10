// Builds a web page with a long table, piece by piece, and writes it to a file when one is named:
//
//     cscript //nologo string_builder.js page.html
var page = new ActiveXObject("VelkSupport.CConCat");
page.Text = "<table>\r\n<tr><th>kg</th><th>lb</th></tr>\r\n";
for (var kg = 1; kg <= 5000; kg++) {
    page.Append("<tr><td>" + kg + "</td><td>" + (kg * 2.20462).toFixed(2) + "</td></tr>\r\n");
}
page.Append("</table>\r\n");

if (WScript.Arguments.length > 0) {
    var file = new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(0), true);
    file.Write(page.Text);
    file.Close();
}
WScript.Echo("The page has " + page.Length + " characters and ends with " + page.Text.slice(-10, -2));
WScript.Quit(0);
