// The containers from JScript, which passes every argument by value.
eval(new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(
    WScript.ScriptFullName.replace(WScript.ScriptName, "expect.js")).ReadAll());

var list = new ActiveXObject("VelkSupport.CLinkedList");
expect("an empty list", true, list.IsEmpty && list.BOL && list.EOL);
expect("the first index", 1, list.Add("a"));
expect("an index before", 2, list.Add("b", 1));
expect("an index behind", 3, list.Add(3.5, 0, 1));
list.Item(2) = "changed";
expect("a found item", 3, list.Find(3.5, 0, -1));
expect("the count", 3, list.Count);
var walked = [];
for (list.MoveFirst(); !list.EOL; list.MoveNext()) walked.push(list.Item);
for (list.MoveLast(); !list.BOL; list.MovePrevious()) walked.push(list.CurrIndex);
expect("both ways", "changed,a,3.5,3,1,2", walked.join());
expect("neither empty nor at the end", false, list.IsEmpty || list.EOL);
list.CurrIndex = 1;
list.Remove();
expect("the cursor after its item went", 3, list.CurrIndex);
expect("the index again", 1, list.Add("c"));
list.Move(2);
list.SetSize(500);
expect("an index before the first", 101, list.Add("d", -1));
list.RemoveAll();
expect("what is kept", 4, list.Count);
expect("no index", "800a0005 Invalid procedure call or argument", failureOf(function () { list.CheckIndex(0); }));

var stack = new ActiveXObject("VelkSupport.CStack");
expect("the top of nothing", undefined, stack.Pop());
stack.Push("text");
stack.Push(stack);
expect("an object", 2, stack.Pop().Count + 1);
expect("a text", "text", stack.Peak);
expect("the step", 10, stack.GrowBy);
stack.Clear();
stack.GrowBy = 0;
expect("no slot", "800a0009 Subscript out of range", failureOf(function () { stack.Push(1); }));
expect("the count all the same", 1, stack.Count);
expect("everything else", "80044705 CStack component failure", failureOf(function () { stack.Pop(); }));
stack.Clear();
expect("the step after Clear", 0, stack.GrowBy + stack.Count);

var builder = new ActiveXObject("VelkSupport.CConCat");
builder.Text = "xy";
builder.Append("");
builder.Append("z\0");
builder.Append(12);
expect("a text of pieces", "xyz\0" + "12", builder.Text);
expect("its length", 6, builder.Length);
finish();
