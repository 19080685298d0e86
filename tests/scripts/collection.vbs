' Collections as XML from VBScript. Prints a line `ok - ...` or `not ok - ...` for each check and `end` at the end.
'   cscript //nologo collection.vbs DATABASE-DIRECTORY
Option Explicit

Const EXACT = 3
Dim collection, again, parser, compound, text, number

Sub Check(name, passed)
  If passed Then
    WScript.Echo "ok - " & name
  Else
    WScript.Echo "not ok - " & name
  End If
End Sub

Set parser = CreateObject("QsHostKit.XMLParser.1")
Set collection = CreateObject("COQSCompoundCollection.COQSCompoundCollection.1")
For Each number In Array(19, 29)
  Set compound = CreateObject("COQSCompound.COQSCompound.1")
  compound.Init WScript.Arguments(0), number
  collection.AddCompound compound
Next
compound.SetPointProperty "R&D ""x"" <1>", 0, 0.1
collection.SetDefaultLoader "json", "QsHostKit.JsonLoader.1", "a & b", Nothing
collection.AddSubCompList "alcohols", Array(1)

text = collection.StoreAsXMLEx(EXACT)
Set again = CreateObject("COQSCompoundCollection.COQSCompoundCollection.1")
parser.ParseText text, again
Check "as many compounds", again.NumberOfCompounds = 2
Check "an equation", again.Compound(0).VP(373.15, 101.325, 0, 0) = collection.Compound(0).VP(373.15, 101.325, 0, 0)
Check "an own property", again.Compound(1).GetPropertyValue("R&D ""x"" <1>", 300, 100, 0, 0) = 0.1
Check "a loader that works", again.GetLoader("json").Get_DBIdentification = "Folder of JSON compounds"
Check "a named view", again.GetSubCompList("alcohols").Compound(0).Name = collection.Compound(1).Name
Check "nothing is lost", again.StoreAsXMLEx(EXACT) = text

Dim item, names, numbers, sum
For Each item In collection
  names = names & item.CASN & ";"
Next
Check "For Each over compounds", names = "7732-18-5;67-56-1;"
Check "an item by position", collection(1).CASN = "67-56-1" And collection.Count = 2
Check "an item by name", collection("WATER").CASN = "7732-18-5" And collection.Item("water").CASN = "7732-18-5"
Check "by synonym and CAS number", collection("oxidane").Name = "Water" And collection("7732-18-5").Name = "Water"
Check "an item that is not there", (collection("ethanol") Is Nothing) And (collection(2) Is Nothing) And (collection(-1) Is Nothing)
Set numbers = CreateObject("QsHostKit.RealArray.1")
numbers.Size = 3
numbers(0) = 1 : numbers(1) = 2.5 : numbers(2) = 4
For Each item In numbers
  sum = sum + item
Next
Check "For Each over numbers", sum = 7.5 And numbers.Count = 3

Dim water, value
Set water = collection(0)
value = water.VP(373.15, 101.325, 0, 0)
Check "pressure and method left out", water.VP(373.15) = value And water.VP(373.15, 200) = value
Check "by name too", water.GetPropertyValue("VP", 373.15) = value
numbers = water.VP(373.15, , 0)
Check "a pressure left out in the middle", numbers(0) = value And numbers(1) = 1
numbers = water.Evaluate("VP", 0, 900)
Check "nothing outside the range", numbers(0) = -32767 And (numbers(1) And 64) = 64

Dim matrix, statuses
matrix = collection.EvaluateCompounds("VP", 0, Array(300, 310), 101.325, 6, Array(1, 0, 99), statuses)
Check "a matrix of values", UBound(matrix, 1) = 2 And UBound(matrix, 2) = 1 And matrix(1, 0) = collection.Compound(0).VP(300, 101.325, 0, 0)
Check "a position outside has no property", matrix(2, 1) = -32767 And statuses(2, 1) = 128
matrix = collection.EvaluateCompounds("VP", 0, 310, 101.325, 6, Empty, statuses)
Check "one value of each compound", matrix(0) = collection.Compound(0).VP(310, 101.325, 0, 0) And statuses(0) = 1

Dim attributes, values
Set attributes = CreateObject("QsHostKit.AttributeSet.1")
attributes.AddMultiple Array("A", "1", "B", 2)
Check "attributes from an array", attributes.Size = 2 And attributes.find("B") = "2"
values = attributes.GetMultiple
Check "attributes as an array", UBound(values) = 3 And values(2) = "B" And values(3) = "2"

On Error Resume Next
attributes.AddMultiple Array("A", "1", "B")
Check "a tag without a value is an error", Err.Number <> 0 And attributes.Size = 2
Err.Clear
parser.ParseText Left(text, Len(text) - 40), again
Check "half a text is an error", Err.Number <> 0
On Error Goto 0
Check "and changes nothing", again.StoreAsXMLEx(EXACT) = text
WScript.Echo "end"
