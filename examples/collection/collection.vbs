' A host in VBScript: fills a collection by number and by CAS number from the database and through a loader of JSON
' compounds, estimates a property, makes a view of three compounds and reads through it.
'   cscript //nologo collection.vbs DATABASE-DIRECTORY JSON-DIRECTORY
Option Explicit

Const Pressure = 101.325

Dim database, folder, compounds
database = WScript.Arguments(0)
folder = WScript.Arguments(1)
Set compounds = CreateObject("COQSCompoundCollection.COQSCompoundCollection.1")

Sub AddByNumber(number)
  Dim c
  Set c = CreateObject("COQSCompound.COQSCompound.1")
  c.Init database, number
  compounds.AddCompound c
End Sub

Sub Print(title, list)
  Dim i, c
  WScript.Echo ""
  WScript.Echo title
  For i = 0 To list.NumberOfCompounds - 1
    Set c = list.Compound(i)
    ' The number in place of the fourth argument stands for the dependency word, which is not wanted here.
    WScript.Echo "  " & i & "  " & c.Name & "  TC " & c.TC(298.15, Pressure, 0, 0) & " K  VP at 298.15 K " & _
      c.VP(298.15, Pressure, 0, 0) & " kPa"
  Next
End Sub

AddByNumber 19
AddByNumber 29
AddByNumber compounds.GetVelIDs(database, "CASN", "64-17-5").IthValue(0)
compounds.SetDefaultLoader "json", "QsHostKit.JsonLoader.1", folder, Nothing
compounds.AddCompoundFromLoader "CASN", "67-64-1", "", 0
Print "The collection", compounds

Dim measured
measured = compounds.Compound(3).VC(298.15, Pressure, 0, 0)
compounds.SetDefaultEstimator "Joback", "QsHostKit.JobackEstimator.1", "", Nothing
compounds.EstimateProperty 3, "VC", "", 0
WScript.Echo ""
WScript.Echo "Critical volume of 3 from the loader " & measured & ", estimated " & _
  compounds.Compound(3).VC(298.15, Pressure, 0, 0) & " m3/kmol"

Dim chosen, positions, i
chosen = Array(3, 1, 0)
Set positions = CreateObject("QsHostKit.IntegerArray.1")
positions.Size = 3
For i = 0 To 2
  positions.IthValue(i) = chosen(i)
Next
Print "A view of positions 3, 1 and 0", compounds.CreateSubCompList(positions)
WScript.Echo "end of collection"
