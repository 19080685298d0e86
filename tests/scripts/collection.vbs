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
