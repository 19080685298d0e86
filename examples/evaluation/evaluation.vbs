' Evaluation in VBScript: vapour pressures from below to above the range of their data, each with its status; a boiling
' point as an inverse; and heats of vaporisation against the slope of the vapour pressure, by Clapeyron's equation.
'   cscript //nologo evaluation.vbs DATABASE-DIRECTORY
Option Explicit

Const P = 101.325           ' kPa; none of these properties depends on it
Const R = 8.31446261815324  ' kJ/(kmol K)
Const Quantity = 0, FirstDerivative = 1, Recommended = 6
Const Inside = 1, Below = 2, Above = 4, ByPolicy = 16, NotSet = 64, NoConvergence = 512

Function Rounded(value, digits)
  Rounded = Int(value * 10 ^ digits + 0.5) / 10 ^ digits
End Function

Function Column(value)
  Column = Space(12 - Len(value)) & value
End Function

Function StatusText(status)
  If status And Inside Then StatusText = StatusText & ", inside"
  If status And Below Then StatusText = StatusText & ", below"
  If status And Above Then StatusText = StatusText & ", above"
  If status And ByPolicy Then StatusText = StatusText & ", by policy"
  If status And NoConvergence Then StatusText = StatusText & ", not found"
  StatusText = Mid(StatusText, 3)
End Function

Function CompoundOf(number)
  Dim c
  Set c = CreateObject("COQSCompound.COQSCompound.1")
  c.Init WScript.Arguments(0), number
  Set CompoundOf = c
End Function

Sub PrintVapourPressures(c)
  Dim range, temperatures, pressures, statuses, i
  range = c.GetRange("VP")
  temperatures = Array(240, 255, 263.15, 298.15, 373.15, 500, 647.14, 700, 900)
  pressures = c.Evaluate("VP", Quantity, temperatures, P, Recommended, statuses)
  WScript.Echo c.Name & ", vapour pressure; data from " & Rounded(range(0), 2) & " to " & Rounded(range(1), 2) & " K"
  WScript.Echo Column("K") & Column("kPa") & "  status"
  For i = 0 To UBound(temperatures)
    WScript.Echo Column(Rounded(temperatures(i), 2)) & Column(Rounded(pressures(i), 4)) & "  " & StatusText(statuses(i))
  Next
End Sub

' Along the boiling curve, T dP/dT (Vg - Vl). The vapour's volume is that of an ideal gas, corrected by the second
' virial coefficient where there is one. Acetic acid has none, and its vapour is far from ideal: most molecules are in
' pairs.
Sub PrintHeatsOfVaporisation(c)
  Dim pressures, T, heats, slopes, masses, densities, virials, statuses, virial, clapeyron, i
  pressures = Array(10, 50, 101.325, 500, 1000)
  T = c.FindTemperature("VP", pressures, P, statuses)
  heats = c.Evaluate("HVP", Quantity, T, P, Recommended, statuses)
  slopes = c.Evaluate("VP", FirstDerivative, T, P, Recommended, statuses)
  masses = c.Evaluate("MW", Quantity, T, P, Recommended, statuses)
  densities = c.Evaluate("LDN", Quantity, T, P, Recommended, statuses)
  virials = c.Evaluate("SVR", Quantity, T, P, Recommended, statuses)
  WScript.Echo c.Name
  WScript.Echo Column("kPa") & Column("K") & Column("kJ/kmol") & Column("Clapeyron") & Column("%")
  For i = 0 To UBound(pressures)
    virial = 0
    If (statuses(i) And NotSet) = 0 Then virial = virials(i)
    clapeyron = T(i) * slopes(i) * (R * T(i) / pressures(i) + virial - masses(i) / densities(i))
    WScript.Echo Column(Rounded(pressures(i), 3)) & Column(Rounded(T(i), 3)) & Column(Rounded(heats(i), 1)) & _
      Column(Rounded(clapeyron, 1)) & Column(Rounded(100 * (clapeyron / heats(i) - 1), 2))
  Next
End Sub

Dim water, boilingPoint, status, number
Set water = CompoundOf(19)
PrintVapourPressures water
boilingPoint = water.FindTemperature("VP", 50, P, status)
WScript.Echo ""
WScript.Echo water.Name & " boils at " & Rounded(boilingPoint, 4) & " K under 50 kPa: " & StatusText(status)
WScript.Echo ""
WScript.Echo "heats of vaporisation, and from the slope of the vapour pressure"
For Each number In Array(19, 21, 46)
  PrintHeatsOfVaporisation CompoundOf(number)
Next
WScript.Echo "end of evaluation"
