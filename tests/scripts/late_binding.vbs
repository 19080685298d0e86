' What late-bound callers get back: out-parameters, results, conversions and failures. Prints a line `ok - ...` or
' `not ok - ...` for each check and `end` at the end.
'   cscript //nologo late_binding.vbs
Option Explicit

Dim c, phase, loader, fractions, low, high, flag, value
Set c = CreateObject("COQSCompound.COQSCompound.1")
Set phase = CreateObject("COQSPhase.COQSPhase.1")
Set loader = CreateObject("QsHostKit.JsonLoader.1")
Set fractions = CreateObject("QsHostKit.RealArray.1")

Function Shown(value)
  Dim i
  If IsObject(value) Then
    Shown = "object"
    If value Is Nothing Then Shown = "no object"
  ElseIf IsArray(value) Then
    For i = 0 To UBound(value)
      If i > 0 Then Shown = Shown & ", "
      Shown = Shown & Shown_(value, i)
    Next
    Shown = "[" & Shown & "]"
  Else
    Shown = TypeName(value) & " " & value
  End If
End Function

Function Shown_(values, i)
  If IsObject(values(i)) Then
    Shown_ = "object"
  Else
    Shown_ = TypeName(values(i)) & " " & values(i)
  End If
End Function

' A call that fails leaves its error to the next check.
Sub Expect(expected, got)
  If Err.Number = 0 And got = expected Then
    WScript.Echo "ok - " & expected
  Else
    WScript.Echo "not ok - " & expected & ": " & got & " " & Err.Number
  End If
  Err.Clear
End Sub

Sub ExpectError(expected)
  Dim number
  number = Err.Number
  Err.Clear
  Expect "error " & expected, "error " & number
End Sub

On Error Resume Next

' What is given for an output receives it; what is left out at the end is returned.
Expect "Boolean True", Shown(c.SetEquationProperty("VP", 1, 19, 200, 400, 1, 2, Array(1, 1, 0)))
Expect "Double 301", Shown(c.VP(300, 1, 0, 0))
Expect "[Double 301, Long 1]", Shown(c.VP(300, 1, 0))
Expect "[Double 200, Double 400, Double 1, Double 2]", Shown(c.get_VPTPRange)
Expect "[Byte 1, Byte 1]", Shown(c.FindProperty("VP"))
Expect "[Double 301, Long 1]", Shown(c.Evaluate("VP", 0, 300, 1, 1))
Expect "[Double 301, Double -32767]", Shown(c.Evaluate("VP", 0, Array(300, 500), 1, 1, value))
Expect "[Long 1, Long 68]", Shown(value)
Expect "Boolean False", Shown(c.FindProperty("none", 0, 0))
Expect "[String Y = A + X^B, Long 2]", Shown(c.GetEquationInfo(25))
Expect "[Long 19, String Y = A + B*X + C*X^2, Double 200, Double 400, Double 1, Double 2, Long 3, object]", _
  Shown(c.GetEquationProperty("VP"))
low = "a text"
Expect "Boolean False", Shown(c.get_RITPRange(low, high, 1, 0))
Expect "[Double -32767, Double -32767]", Shown(Array(low, high))
Expect "Long 13", Shown(UBound(loader.Get_PropEquation("", "", "VP")))

' What is not written reads as the empty value.
Expect "Double -32767", Shown(c.RI(300, 1, 0, 0))
Expect "Long -32767", Shown(c.GetNonCondensable)
Expect "Long -32767", Shown(c.NonCondensable)
Expect "String ", Shown(c.SynonymName(3))
Expect "no object", Shown(c.GetUserProperty("none"))
c.NonCondensable = 1
Expect "Byte 1", Shown(c.GetNonCondensable)
Expect "Boolean True", Shown(c.NonCondensable)

' A method without results tells success.
Expect "Boolean False", Shown(c.IsWater)
c.VelcorinID = 19
Expect "Boolean True", Shown(c.IsWater)
Expect "Boolean False", Shown(c.SetVoidProperty("no key", 1))

' Arguments are converted; True is 1 for a byte, also in a variable.
Expect "Boolean True", Shown(c.SetPointProperty("TC", "1", "647"))
Expect "Double 647", Shown(c.TC("300", "1", 0, 0))
flag = True
c.SetPointProperty "TC", flag, 500
Expect "Double 500", Shown(c.TC(300, 1, 0, 0))
c.SetPointProperty "TC", False, 600
Expect "Double 500", Shown(c.TC(300, 1, 0, 0))
c.Name = 12
Expect "String 12", Shown(c.Name)
value = c.TC("hot", 1, 0, 0)
ExpectError 13
value = c.SetEquationProperty("VP", 1, 19, 1, 2, 3, 4, 5)
ExpectError 13
value = c.SetEquationProperty("VP", 1, 19, 1, 2, 3, 4, Array(1, 2))
ExpectError -2147467259
value = c.CopyToThis(1)
ExpectError 449
value = c.IsWater(1)
ExpectError 450

' Objects are put by reference, and their elements by position.
fractions.Size = 2 : fractions(1) = 0.75
Set phase.MolarComposition = fractions
Set phase.Temperature = fractions
ExpectError 438
Expect "Double 0.75", Shown(phase.MolarComposition(1))
phase.MolarComposition(1) = 0.5
Expect "Double 0.5", Shown(phase.MolarComposition(1))
value = phase.MolarComposition(2)
ExpectError -2147483637
value = phase.MolarComposition(1, 1)
ExpectError 450
value = phase.MassComposition(1)
ExpectError 445
value = phase.Compounds(0)
ExpectError 438
value = phase.Temperature(1)
ExpectError 450
phase.Temperature(1) = 300
ExpectError 450

' A matrix goes row by row of its first dimension; an array is none.
Dim matrix(2, 1), row, column
For row = 0 To 2
  For column = 0 To 1
    matrix(row, column) = 10 * row + column
  Next
Next
Expect "Long 0", Shown(phase.AddDerivativeProp(1, 2, 3, 3))
phase.PutMatrixDerivative 0, matrix
Expect "Double 21", Shown(phase.GetMatrixDerivative(0).Value(2, 1))
phase.PutMatrixDerivative 0, Array(1, 2)
ExpectError 13
phase.PutVariantDerivative 0, matrix
Expect "Double 21", Shown(phase.GetMatrixDerivative(0).Value(2, 1))
phase.PutVariantDerivative 0, Array(1, 2)
ExpectError 13
On Error Goto 0
WScript.Echo "end"
