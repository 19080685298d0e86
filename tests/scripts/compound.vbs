' The installed classes from VBScript. Prints a line `ok - ...` or `not ok - ...` for each check and `end` at the end.
'   cscript //nologo compound.vbs DATABASE-DIRECTORY
Option Explicit

Const P = 101.325
Dim c

Sub Check(name, passed)
  If passed Then
    WScript.Echo "ok - " & name
  Else
    WScript.Echo "not ok - " & name
  End If
End Sub

Function Near(value, expected, relative)
  Near = Abs(value - expected) <= relative * Abs(expected)
End Function

Set c = CreateObject("COQSCompound.COQSCompound.1")
Check "a new compound has no name", IsNull(c.Name) Or c.Name = ""
Set c = CreateObject("COQSCompound.COQSCompound.1")
c.Init WScript.Arguments(0), 19
Check "MW by name", c.MW(298.15, P, 0, 0) = 18.01528
Check "TC by name", c.TC(298.15, P, 0, 0) = 647.14
Check "VP by name", Near(c.VP(373.15, P, 0, 0), 101.325, 0.003)
Check "a member of another interface", c.ChemicalFormula = "H2O"
Check "names regardless of case", c.casn = "7732-18-5"
Check "a name with an index", c.SynonymName(0) <> ""
Check "what is not set reads as the empty value", c.RI(298.15, P, 0, 0) = -32767
Dim word, range
word = "before"
Check "a value beside an out-parameter", c.VP(373.15, P, 0, word) > 100 And word = 1
range = c.get_VPTPRange
Check "out-parameters left out are returned", range(0) = 263.15 And UBound(range) = 3
Check "a result code alone", c.IsWater And Not c.IsMethanol
Check "any key by name", c.GetPropertyValue("TC", 298.15, P, 0, 0) = 647.14

c.Name = "my water"
Check "put and get in different interfaces", c.Name = "my water"
c.Family = 4
Check "a put that the default interface lacks", c.Family = 4
c.SetPointProperty "my number", 0, 2.5
Check "a property under an own name", c.GetPropertyValue("my number", 300, P, 0, 0) = 2.5

Dim coefficients
Set coefficients = CreateObject("QsHostKit.RealArray.1")
coefficients.Size = 3
coefficients(0) = 1
coefficients(1) = 2
coefficients(2) = 0.5
Check "array elements", coefficients(2) = 0.5 And coefficients.Size = 3
c.SetEquationProperty "LDN", 1, 19, 200, 400, 1, 1000, coefficients
Check "an equation from an array", c.LDN(10, P, 0, 0) = 71

c.SetEquationProperty "LCP", 1, 19, 200, 400, 1, 1000, Array(1, 2, 0.5)
Check "an equation from the script's own array", c.LCP(10, P, 0, 0) = 71

Dim copy
Set copy = CreateObject("COQSCompound.COQSCompound.1")
copy.CopyToThis 5, c
Check "a copy", copy.Name = "my water" And copy.LDN(10, P, 0, 0) = 71

Dim source, copied, again
source = c.GetPropertySource("VP")
Check "where a value comes from", source(0) = 2 And InStr(source(2), "ChemSep") = 1 And source(4) = -32767
copied = copy.GetPropertySource("VP")
Check "of a copied value", copied(2) = source(2) And copied(8) = source(8)
Set again = CreateObject("COQSCompound.COQSCompound.1")
CreateObject("QsHostKit.XMLParser.1").ParseText c.StoreAsXMLEx(7), again
copied = again.GetPropertySource("VP")
Check "of a value from XML", copied(2) = source(2) And copied(8) = source(8)
c.SetPropertySource "my number", 5, 2, "me", "", 2020, "", "", "", ""
source = c.GetPropertySource("my number")
Check "of a value of one's own", source(0) = 5 And source(1) = 2 And source(2) = "me" And source(4) = 2020

On Error Resume Next
c.NoSuchMember
Check "an unknown member is an error", Err.Number <> 0
Err.Clear
c.Init "no such directory", 19
Check "a failing call is an error", Err.Number <> 0
Err.Clear
Check "and says why", InStr(c.LastError, "Init: no such directory\purecmp1.idx: ") = 1
Check "an element outside is an error", Not IsNumeric(coefficients(3)) Or Err.Number <> 0
On Error Goto 0
WScript.Echo "end"
