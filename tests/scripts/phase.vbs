' Phases from VBScript. Prints a line `ok - ...` or `not ok - ...` for each check and `end` at the end.
'   cscript //nologo phase.vbs
Option Explicit

Sub Check(name, passed)
  If passed Then
    WScript.Echo "ok - " & name
  Else
    WScript.Echo "not ok - " & name
  End If
End Sub

Function Reals(values)
  Dim i
  Set Reals = CreateObject("QsHostKit.RealArray.1")
  Reals.Size = UBound(values) + 1
  For i = 0 To UBound(values)
    Reals(i) = values(i)
  Next
End Function

Dim compounds, registry, phases, phase, index, value
Set compounds = CreateObject("COQSCompoundCollection.COQSCompoundCollection.1")
compounds.NumberOfCompounds = 2
Set registry = CreateObject("QsHostKit.PropertyRegistry.1")
Check "a registry of the host kit", registry.RegisterProperty("PhaseType") = 1 And registry.GetPropertyName(1) = "PhaseType"
Set phases = CreateObject("COQSPhaseCollection.COQSPhaseCollection.1")
phases.RegisterProperties registry
phases.Finalize compounds, 3, 2
Check "the phases of a collection", phases.MaximumNumberOfEquilibriumPhases = 3 And phases.LocatePhase(1, 0).PhaseType = 1

Set phase = phases.GetEquilibriumPhase(0)
Check "what is not set reads as the marker", phase.Temperature = -32767 And phase.PhaseStatus = -32767
phase.Temperature = 350
phase.PhaseType = 3
Check "values by name", phase.Temperature = 350 And phases.LocatePhase(3, 0).Temperature = 350
Check "and by number", phase.GetPropertyValue(6) = 350
value = 2.5
phase.AddProperty 500, value
value = 4
Check "a further property has its own value", phase.GetPropertyValue(500) = 2.5 And phase.SupportsProperty(500)
phase.RemoveProperty 500
Check "which stays when it is removed", phase.GetPropertyValue(500) = 2.5 And Not phase.SupportsProperty(500)

phase.MolarComposition = Reals(Array(0.25, 0.75))
phase.LnFugacity = Reals(Array(-1, -2))
Check "arrays by name", phase.MolarComposition.IthValue(1) = 0.75 And phase.LnFugacity.IthValue(0) = -1
Set phase.MolarComposition = Reals(Array(0.5, 0.5))
phase.MolarComposition(1) = 0.125
Check "elements of what a property gives", phase.MolarComposition(0) = 0.5 And phase.MolarComposition(1) = 0.125
index = phase.AddDerivativeProp(15, 18, 3, 3)
Dim matrix(1, 1)
matrix(0, 1) = "2.5"
phase.PutVariantDerivative index, matrix
Check "a matrix from the script's own array", phase.GetVariantDerivative(index).Value(0, 1) = 2.5
phase.PutMatrixDerivative index, matrix
Check "and as an argument", phase.GetMatrixDerivative(index).Value(0, 1) = 2.5
phase.PutPropertyValue 16, True
Check "True for a flag", phase.IsPseudoRoot = 1
index = phase.AddDerivativeProp(15, 17, 2, 2)
phase.PutVariantDerivative index, Array(1, "2")
Check "an array from the script's own", phase.GetVariantDerivative(index).IthValue(1) = 2
phase.PutVariantDerivative index, Reals(Array(3, 4))
Check "derivatives", phase.GetVariantDerivative(index).IthValue(1) = 4 And phase.GetDerivativePropIndex(15, 17) = index
phases.SwapEquilibriumPhases 0, 2
Check "another order", phases.GetEquilibriumPhase(2).Temperature = 350 And phases.LocateEqmPhaseIndex(3, 0) = 2
phases.ApplyActor CreateObject("QsHostKit.PhaseActivator.1")
Check "an actor", phases.NumberOfActivePhases = 7 And phase.IsActivePhase

On Error Resume Next
Set value = phase.MolarCompositionDisp
Check "a lent array is not for scripts", Err.Number <> 0
Err.Clear
Set value = phase.GetLnFugacity()
Check "nor are logarithms of fugacities", Err.Number <> 0
Err.Clear
Set value = phase.GetLnFugacityCoeff()
Check "nor those of their coefficients", Err.Number <> 0
Err.Clear
phase.PutVariantDerivative index, 1.5
Check "a value of another shape is an error", Err.Number <> 0
Err.Clear
phases.GetEquilibriumPhase 3
Check "a failing call is an error", Err.Number <> 0
On Error Goto 0
WScript.Echo "end"
