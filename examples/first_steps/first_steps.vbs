' First steps in VBScript: fills three compounds, prints a table of properties, flashes a mixture of them by Raoult's
' law, stores the result in a collection of phases, reads it back, and writes the last compound as XML.
'   cscript //nologo first_steps.vbs DATABASE-DIRECTORY XML-FILE
Option Explicit

Const T = 330
Const P = 250
Const NoExtrapolation = 0, Feed = 2, Vapour = 3, Liquid = 4, Active = 1
Dim compound, compounds, phases, phase, composition, number, i, z, K(2), x(2), y(2), low, high, fraction, sum

Function Rounded(value, digits)
  Rounded = Int(value * 10 ^ digits + 0.5) / 10 ^ digits
End Function

Set compounds = CreateObject("COQSCompoundCollection.COQSCompoundCollection.1")
For Each number In Array(3, 5, 7)
  Set compound = CreateObject("COQSCompound.COQSCompound.1")
  compound.Init WScript.Arguments(0), number
  compounds.AddCompound compound
Next

' The last argument of a property receives its dependency word, which is not wanted here.
For i = 0 To 2
  Set compound = compounds.Compound(i)
  K(i) = compound.VP(T, P, NoExtrapolation, 0) / P
  WScript.Echo compound.Name & " " & compound.CASN & ": TC " & Rounded(compound.TC(T, P, NoExtrapolation, 0), 2) & _
    " K, PC " & Rounded(compound.PC(T, P, NoExtrapolation, 0), 2) & " kPa, VP " & Rounded(K(i) * P, 2) & " kPa"
Next

' The vapour fraction where the mole fractions of both phases add up to one, by bisection.
z = Array(0.3, 0.4, 0.3)
low = 0
high = 1
Do While high - low > 1E-12
  fraction = (low + high) / 2
  sum = 0
  For i = 0 To 2
    sum = sum + z(i) * (K(i) - 1) / (1 + fraction * (K(i) - 1))
  Next
  If sum > 0 Then low = fraction Else high = fraction
Loop
For i = 0 To 2
  x(i) = z(i) / (1 + fraction * (K(i) - 1))
  y(i) = K(i) * x(i)
Next

Sub Store(phase, fraction, composition)
  phase.Temperature = T
  phase.Pressure = P
  phase.PhaseStatus = Active
  phase.PhaseFraction = fraction
  phase.MolarComposition = composition
End Sub

Set phases = CreateObject("COQSPhaseCollection.COQSPhaseCollection.1")
phases.RegisterProperties CreateObject("QsHostKit.PropertyRegistry.1")
phases.Finalize compounds, 2, 1
phases.NumberOfEquilibriumPhases = 2
phases.GetEquilibriumPhase(0).PhaseType = Vapour
phases.GetEquilibriumPhase(1).PhaseType = Liquid
Store phases.LocatePhase(Feed, 0), 1, z
Store phases.LocatePhase(Vapour, 0), fraction, y
Store phases.LocatePhase(Liquid, 0), 1 - fraction, x

For i = 0 To phases.NumberOfActivePhases - 1
  Set phase = phases.GetActivePhase(i)
  Set composition = phase.MolarComposition
  WScript.Echo "phase of kind " & phase.PhaseType & ": fraction " & Rounded(phase.PhaseFraction, 4) & ", composition " & _
    Rounded(composition(0), 4) & " " & Rounded(composition(1), 4) & " " & Rounded(composition(2), 4)
Next

CreateObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(1), True).Write compound.StoreAsXML
