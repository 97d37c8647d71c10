// CIniFile and CProgramSettings from JScript, which cannot receive arrays. The first argument is the INI file to make.
var got = [];
var ini = new ActiveXObject("VelkSupport.CIniFile");
try {
    ini.Init("");
} catch (error) {
    got.push((error.number | 0) + " " + error.message);
}
ini.Init(WScript.Arguments(0));
ini.SaveStringValue("S", "K", "v=w");
ini.SaveNumericValue("S", "N", 32767);
got.push(ini.GetStringValue("S", "K"), ini.GetNumericValue("s", "n"), ini.DeleteSection("S"), ini.GetNumericValue("S", "N"));

var settings = new ActiveXObject("VelkSupport.CProgramSettings");
settings.RootKey = -2147483647;
settings.RegBase = "VelkClients";
settings.WriteEntry("j", "12.5");
got.push(settings.ReadEntry("j", ""), settings.ReadEntryLong("j", 0), settings.ReadEntry("none", "default"));

var wanted = "-2147203823 Invalid file name,v=w,32767,true,-1,12.5,12,default";
WScript.Echo(got.join() === wanted ? "PASSED" : "FAILED: " + got.join());
WScript.Quit(0);
