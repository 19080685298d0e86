' A host in VBScript: fills compounds from the database, tabulates their properties and says where some come from.
'   cscript //nologo property_table.vbs DATABASE-DIRECTORY
Option Explicit

Const Pressure = 101.325
Const NotSet = -32767

Function Shown(value)
  If value = NotSet Then
    Shown = "not set"
  Else
    Shown = CStr(value)
  End If
End Function

Function RangeOf(limits)
  RangeOf = limits(0) & " to " & limits(1) & " K"
End Function

' Without arguments for them, what is known of a source comes as an array: kind, quality, title, authors, year, licence,
' changes, uncertainty and note.
Sub PrintSource(c, name)
  Dim source
  source = c.GetPropertySource(name)
  If source(8) <> "" Then source(2) = source(2) & "; " & source(8)
  WScript.Echo "  " & name & " from " & source(2)
End Sub

Sub PrintCompound(directory, number)
  Dim c, i, t, synonyms
  Set c = CreateObject("COQSCompound.COQSCompound.1")
  c.Init directory, number

  synonyms = ""
  For i = 0 To c.NumberOfSynonymNames - 1
    synonyms = synonyms & " " & c.SynonymName(i) & ";"
  Next
  WScript.Echo ""
  WScript.Echo c.Name & "  " & c.ChemicalFormula & "  CAS " & c.CASN & "  synonyms:" & synonyms
  WScript.Echo "  is water: " & c.IsWater & ", is methanol: " & c.IsMethanol
  ' The fourth argument would receive the dependency word, which is not wanted here.
  WScript.Echo "  molecular weight     " & Shown(c.MW(298.15, Pressure, 0, 0)) & " kg/kmol"
  WScript.Echo "  critical temperature " & Shown(c.TC(298.15, Pressure, 0, 0)) & " K"
  WScript.Echo "  critical pressure    " & Shown(c.PC(298.15, Pressure, 0, 0)) & " kPa"
  WScript.Echo "  refractive index     " & Shown(c.RI(298.15, Pressure, 0, 0))
  WScript.Echo "  T [K], vapour pressure [kPa], liquid density [kg/m3], heat of vaporisation [kJ/kmol], ideal-gas heat capacity [kJ/(kmol K)]"
  For Each t In Array(298.15, 350, 373.15)
    WScript.Echo "  " & t & ", " & Shown(c.VP(t, Pressure, 0, 0)) & ", " & Shown(c.LDN(t, Pressure, 0, 0)) & ", " & _
      Shown(c.HVP(t, Pressure, 0, 0)) & ", " & Shown(c.IGCP(t, Pressure, 0, 0))
  Next
  WScript.Echo "  range " & RangeOf(c.get_VPTPRange) & ", " & RangeOf(c.get_LDNTPRange) & ", " & _
    RangeOf(c.get_HVPTPRange) & ", " & RangeOf(c.get_IGCPTPRange)
  PrintSource c, "VP"
  PrintSource c, "LDN"
End Sub

Dim number
For Each number In Array(19, 29, 30)
  PrintCompound WScript.Arguments(0), number
Next
WScript.Echo "end of table"
