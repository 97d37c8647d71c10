// The containers from JScript, which passes every argument by value.
var failures = 0;

function expect(what, wanted, got) {
    if (wanted === got) return;
    failures++;
    WScript.Echo("FAILED " + what + ": wanted " + wanted + ", got " + got);
}

var list = new ActiveXObject("VelkSupport.CLinkedList");
expect("the first index", 1, list.Add("a"));
expect("an index before", 2, list.Add("b", 1));
expect("an index behind", 3, list.Add(3.5, 0, 1));
list.MoveFirst();
expect("the head", "b", list.Item);
list.Item(2) = "changed";
expect("a changed item", "changed", list.Item(2));
expect("a found item", 3, list.Find(3.5, 0, -1));
expect("the count", 3, list.Count);

var stack = new ActiveXObject("VelkSupport.CStack");
stack.Push("text");
stack.Push(stack);
expect("an object", 2, stack.Pop().Count + 1);
expect("a text", "text", stack.Peak);

var builder = new ActiveXObject("VelkSupport.CConCat");
builder.Append("abc");
builder.Append(12);
expect("a text of pieces", "abc12", builder.Text);
if (failures === 0) WScript.Echo("PASSED");
WScript.Quit(failures);
