// Keeps a program's options in the registry of the current user, with a default for each.
//
//     cscript //nologo program_settings.js
var psrHKEY_CURRENT_USER = -2147483647;

var settings = new ActiveXObject("VelkSupport.CProgramSettings");
settings.RootKey = psrHKEY_CURRENT_USER;
settings.RegBase = "Acme";
settings.Program = "Demo";
settings.Section = "Options";

var defaults = { Unit: "kg", Digits: "3", Port: "COM1" };
settings.WriteEntry("Unit", "lb");
settings.WriteEntry("Digits", "");    // an empty text reads as the default

var text = "";
for (var name in defaults) text += " " + name + "=" + settings.ReadEntry(name, defaults[name]);
WScript.Echo("Options:" + text);
// A text that reads as a number is one.
WScript.Echo("Digits: " + settings.ReadEntryLong("Digits", 3));
WScript.Quit(0);
