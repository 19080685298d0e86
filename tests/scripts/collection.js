// Collections as XML from JScript. Prints a line `ok - ...` or `not ok - ...` for each check and `end` at the end.
//   cscript //nologo collection.js DATABASE-DIRECTORY
var EXACT = 3;

function check(name, passed) {
  WScript.Echo((passed ? "ok - " : "not ok - ") + name);
}

function newCollection() {
  return new ActiveXObject("COQSCompoundCollection.COQSCompoundCollection.1");
}

var parser = new ActiveXObject("QsHostKit.XMLParser.1");
var collection = newCollection();
for (var number = 1; number < 60; ++number) {
  var compound = new ActiveXObject("COQSCompound.COQSCompound.1");
  try {
    compound.Init(WScript.Arguments(0), number);
    collection.AddCompound(compound);
  } catch (error) {
  }
}
var count = collection.NumberOfCompounds;
check("the database has compounds", count > 20);

var exact = collection.StoreAsXMLEx(EXACT);
var document = new ActiveXObject("MSXML2.DOMDocument");
document.async = false;
check("the system's parser reads the exact form", document.loadXML(exact));
check("and finds the compounds", document.getElementsByTagName("Compound").length == count);
var again = newCollection();
parser.ParseText(exact, again);
check("as many compounds", again.NumberOfCompounds == count);
check("nothing is lost", again.StoreAsXMLEx(EXACT) == exact);

var names = "", position = 0;
for (var list = new Enumerator(collection); !list.atEnd(); list.moveNext(), ++position) {
  if (list.item().CASN != collection(position).CASN) names += list.item().CASN + ";";
}
check("an enumerator", position == count && names == "");
check("items", collection.Item("67-56-1").Name == "Methanol" && collection.Count == count);
var water = collection.Item("water");
check("arguments left out", water.VP(373.15) == water.VP(373.15, 101.325, 0, 0));

var stated = again.StoreAsXML();
parser.ParseText(stated, again);
check("the default form comes back as it was", again.StoreAsXML() == stated);
check("the text takes the place of what was there", again.NumberOfCompounds == count);

var attributes = new ActiveXObject("QsHostKit.AttributeSet.1");
attributes.Add("Name", "by hand");
again.StartElement("CompoundCollection", attributes);
again.StartElement("Compound", attributes);
again.EndElement("Compound");
again.EndElement("CompoundCollection");
check("events from a script", again.NumberOfCompounds == 1 && again.Compound(0).Name == "by hand");
WScript.Echo("end");
