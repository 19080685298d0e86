"""First steps in Python with pywin32: fills three compounds, prints a table of properties, flashes a mixture of them by
Raoult's law, stores the result in a collection of phases, reads it back, and writes the last compound as XML.

    python first_steps_pywin32.py DATABASE-DIRECTORY XML-FILE
"""
import pathlib
import sys

from win32com.client import Dispatch

T, P = 330.0, 250.0
NO_EXTRAPOLATION, FEED, VAPOUR, LIQUID, ACTIVE = 0, 2, 3, 4, 1


def value(result):
    """The value of a property; its dependency word may stand behind it."""
    return result[0] if isinstance(result, tuple) else result


def store(phase, fraction, composition):
    phase.Temperature = T
    phase.Pressure = P
    phase.PhaseStatus = ACTIVE
    phase.PhaseFraction = fraction
    phase.MolarComposition = composition


compounds = Dispatch("COQSCompoundCollection.COQSCompoundCollection.1")
for number in (3, 5, 7):
    compound = Dispatch("COQSCompound.COQSCompound.1")
    compound.Init(sys.argv[1], number)
    compounds.AddCompound(compound)

K = []
for i in range(3):
    compound = compounds.Compound(i)
    TC, PC, VP = (value(get(T, P, NO_EXTRAPOLATION, 0)) for get in (compound.TC, compound.PC, compound.VP))
    K.append(VP / P)
    print(f"{compound.Name} {compound.CASN}: TC {round(TC, 2)} K, PC {round(PC, 2)} kPa, VP {round(VP, 2)} kPa")

# The vapour fraction where the mole fractions of both phases add up to one, by bisection.
z, low, high = (0.3, 0.4, 0.3), 0.0, 1.0
while high - low > 1e-12:
    fraction = (low + high) / 2
    if sum(z[i] * (K[i] - 1) / (1 + fraction * (K[i] - 1)) for i in range(3)) > 0:
        low = fraction
    else:
        high = fraction
x = [z[i] / (1 + fraction * (K[i] - 1)) for i in range(3)]
y = [K[i] * x[i] for i in range(3)]

phases = Dispatch("COQSPhaseCollection.COQSPhaseCollection.1")
phases.RegisterProperties(Dispatch("QsHostKit.PropertyRegistry.1"))
phases.Finalize(compounds, 2, 1)
phases.NumberOfEquilibriumPhases = 2
phases.GetEquilibriumPhase(0).PhaseType = VAPOUR
phases.GetEquilibriumPhase(1).PhaseType = LIQUID
store(phases.LocatePhase(FEED, 0), 1, z)
store(phases.LocatePhase(VAPOUR, 0), fraction, y)
store(phases.LocatePhase(LIQUID, 0), 1 - fraction, x)

for i in range(phases.NumberOfActivePhases):
    phase = phases.GetActivePhase(i)
    composition = (str(round(phase.MolarComposition.IthValue(j), 4)) for j in range(3))
    print(f"phase of kind {phase.PhaseType}: fraction {round(phase.PhaseFraction, 4)}, composition", *composition)

pathlib.Path(sys.argv[2]).write_text(compound.StoreAsXML(), encoding="utf-8")
