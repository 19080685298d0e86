Attribute VB_Name = "FirstSteps"
' First steps in Excel VBA: fills three compounds, writes a table of properties into the active sheet, flashes a mixture
' of them by Raoult's law, stores the result in a collection of phases, reads it back into the sheet, and writes the last
' compound as XML. The folder of the database stands in cell A1, the XML file in cell B1.
Option Explicit

Const T As Double = 330
Const P As Double = 250
Const NoExtrapolation As Long = 0, Feed As Long = 2, Vapour As Long = 3, Liquid As Long = 4, Active As Long = 1

Private Sub Store(ByVal phase As Object, ByVal fraction As Double, ByVal composition As Variant)
    phase.Temperature = T
    phase.Pressure = P
    phase.PhaseStatus = Active
    phase.PhaseFraction = fraction
    phase.MolarComposition = composition
End Sub

Public Sub RunFirstSteps()
    Dim compounds As Object, compound As Object, phases As Object, phase As Object, number As Variant, i As Long
    Dim z As Variant, K(2) As Double, x(2) As Double, y(2) As Double
    Dim low As Double, high As Double, fraction As Double, total As Double

    Set compounds = CreateObject("COQSCompoundCollection.COQSCompoundCollection.1")
    For Each number In Array(3, 5, 7)
        Set compound = CreateObject("COQSCompound.COQSCompound.1")
        compound.Init CStr(Range("A1").Value), number
        compounds.AddCompound compound
    Next

    ' The last argument of a property receives its dependency word, which is not wanted here.
    Range("A3:E3").Value = Array("name", "CAS number", "TC, K", "PC, kPa", "VP, kPa")
    For i = 0 To 2
        Set compound = compounds.Compound(i)
        K(i) = compound.VP(T, P, NoExtrapolation, 0) / P
        Cells(4 + i, 1).Resize(1, 5).Value = Array(compound.Name, compound.CASN, compound.TC(T, P, NoExtrapolation, 0), _
            compound.PC(T, P, NoExtrapolation, 0), K(i) * P)
    Next

    ' The vapour fraction where the mole fractions of both phases add up to one, by bisection.
    z = Array(0.3, 0.4, 0.3)
    high = 1
    Do While high - low > 0.000000000001
        fraction = (low + high) / 2
        total = 0
        For i = 0 To 2
            total = total + z(i) * (K(i) - 1) / (1 + fraction * (K(i) - 1))
        Next
        If total > 0 Then low = fraction Else high = fraction
    Loop
    For i = 0 To 2
        x(i) = z(i) / (1 + fraction * (K(i) - 1))
        y(i) = K(i) * x(i)
    Next

    Set phases = CreateObject("COQSPhaseCollection.COQSPhaseCollection.1")
    phases.RegisterProperties CreateObject("QsHostKit.PropertyRegistry.1")
    phases.Finalize compounds, 2, 1
    phases.NumberOfEquilibriumPhases = 2
    phases.GetEquilibriumPhase(0).PhaseType = Vapour
    phases.GetEquilibriumPhase(1).PhaseType = Liquid
    Store phases.LocatePhase(Feed, 0), 1, z
    Store phases.LocatePhase(Vapour, 0), fraction, y
    Store phases.LocatePhase(Liquid, 0), 1 - fraction, x

    Range("A8:E8").Value = Array("kind of phase", "fraction", "composition", "", "")
    For i = 0 To phases.NumberOfActivePhases - 1
        Set phase = phases.GetActivePhase(i)
        Cells(9 + i, 1).Resize(1, 5).Value = Array(phase.PhaseType, phase.PhaseFraction, _
            phase.MolarComposition.IthValue(0), phase.MolarComposition.IthValue(1), phase.MolarComposition.IthValue(2))
    Next

    Open Range("B1").Value For Output As #1
    Print #1, compound.StoreAsXML;
    Close #1
End Sub
