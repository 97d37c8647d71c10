// Keeps weights in order as they come in: each goes before the first that is greater.
//
//     cscript //nologo linked_list.js
var fccGreater = 4;
var fromTheFirst = -1;

var weights = new ActiveXObject("VelkSupport.CLinkedList");
var arriving = [412.5, 97, 1250, 97.5, 800, 3.25];
for (var i = 0; i < arriving.length; i++) {
    // Nothing greater gives 0, and 0 means the end.
    weights.Add(arriving[i], weights.Find(arriving[i], fccGreater, fromTheFirst));
}

var text = "";
for (var all = new Enumerator(weights); !all.atEnd(); all.moveNext()) text += " " + all.item();
WScript.Echo("In order:" + text);
WScript.Quit(0);
