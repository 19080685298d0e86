# First steps in PowerShell: fills three compounds, prints a table of properties, flashes a mixture of them by Raoult's
# law, stores the result in a collection of phases, reads it back, and writes the last compound as XML.
#   powershell -File first_steps.ps1 DATABASE-DIRECTORY XML-FILE
param([string]$Database, [string]$XmlFile)

$T = 330.0; $P = 250.0
$NoExtrapolation = 0; $Feed = 2; $Vapour = 3; $Liquid = 4; $Active = 1

$compounds = New-Object -ComObject COQSCompoundCollection.COQSCompoundCollection.1
foreach ($number in 3, 5, 7) {
    $compound = New-Object -ComObject COQSCompound.COQSCompound.1
    $compound.Init($Database, $number) | Out-Null
    $compounds.AddCompound($compound) | Out-Null
}

# The last argument of a property receives its dependency word, which is not wanted here.
$K = 0..2 | ForEach-Object {
    $compound = $compounds.Compound($_)
    $VP = $compound.VP($T, $P, $NoExtrapolation, 0)
    Write-Host ("{0} {1}: TC {2} K, PC {3} kPa, VP {4} kPa" -f $compound.Name, $compound.CASN,
        [math]::Round($compound.TC($T, $P, $NoExtrapolation, 0), 2),
        [math]::Round($compound.PC($T, $P, $NoExtrapolation, 0), 2), [math]::Round($VP, 2))
    $VP / $P
}

# The vapour fraction where the mole fractions of both phases add up to one, by bisection.
$z = 0.3, 0.4, 0.3; $low = 0.0; $high = 1.0
while ($high - $low -gt 1e-12) {
    $fraction = ($low + $high) / 2; $sum = 0.0
    foreach ($i in 0..2) { $sum += $z[$i] * ($K[$i] - 1) / (1 + $fraction * ($K[$i] - 1)) }
    if ($sum -gt 0) { $low = $fraction } else { $high = $fraction }
}
$x = 0..2 | ForEach-Object { $z[$_] / (1 + $fraction * ($K[$_] - 1)) }
$y = 0..2 | ForEach-Object { $K[$_] * $x[$_] }

function Store($phase, $fraction, $composition) {
    $phase.Temperature = $T
    $phase.Pressure = $P
    $phase.PhaseStatus = $Active
    $phase.PhaseFraction = $fraction
    $phase.MolarComposition = [double[]]$composition
}

$phases = New-Object -ComObject COQSPhaseCollection.COQSPhaseCollection.1
$phases.RegisterProperties((New-Object -ComObject QsHostKit.PropertyRegistry.1)) | Out-Null
$phases.Finalize($compounds, 2, 1) | Out-Null
$phases.NumberOfEquilibriumPhases = 2
$phases.GetEquilibriumPhase(0).PhaseType = $Vapour
$phases.GetEquilibriumPhase(1).PhaseType = $Liquid
Store ($phases.LocatePhase($Feed, 0)) 1 $z
Store ($phases.LocatePhase($Vapour, 0)) $fraction $y
Store ($phases.LocatePhase($Liquid, 0)) (1 - $fraction) $x

for ($i = 0; $i -lt $phases.NumberOfActivePhases; $i++) {
    $phase = $phases.GetActivePhase($i)
    $composition = 0..2 | ForEach-Object { [math]::Round($phase.MolarComposition.IthValue($_), 4) }
    Write-Host ("phase of kind {0}: fraction {1}, composition {2}" -f $phase.PhaseType,
        [math]::Round($phase.PhaseFraction, 4), ($composition -join ' '))
}

[IO.File]::WriteAllText($XmlFile, $compound.StoreAsXML())
