"""First steps in Python with comtypes: fills three compounds, prints a table of properties, flashes a mixture of them by
Raoult's law, stores the result in a collection of phases, reads it back, and writes the last compound as XML. The calls
are bound early, by the registered type library.

    python first_steps_comtypes.py DATABASE-DIRECTORY XML-FILE
"""
import pathlib
import sys

from comtypes.automation import IDispatch
from comtypes.client import CreateObject, GetModule

library = GetModule(("{8915F1F0-5707-11D2-B8D8-00A0C986F9F7}", 1, 0))
T, P = 330.0, 250.0


def store(phase, fraction, composition):
    array = CreateObject(library.HostRealArray, interface=library.IRealArrayDisp)
    array.Size = len(composition)
    for i, element in enumerate(composition):
        array.IthValue[i] = element
    phase.Temperature = T
    phase.Pressure = P
    phase.PhaseStatus = library.xpsActivePhase
    phase.PhaseFraction = fraction
    phase.MolarComposition = array


compounds = CreateObject(library.COQSCompoundCollection, interface=library.ICompoundCollection)
for number in (3, 5, 7):
    compound = CreateObject(library.COQSCompound, interface=library.IBasicCompound)
    compound.QueryInterface(library.ICompoundInitFromVelDB).Init(sys.argv[1], number)
    compounds.AddCompound(compound)

K = []
for i in range(3):
    compound = compounds.GetBasicCompound(i)
    identity = compound.QueryInterface(library.ICompoundID)
    # A property answers with its dependency word and its value.
    TC, PC, VP = (get[T, P, library.eNoExtrapolation][1] for get in (compound.TC, compound.PC, compound.VP))
    K.append(VP / P)
    print(f"{identity.Name} {identity.CASN}: TC {round(TC, 2)} K, PC {round(PC, 2)} kPa, VP {round(VP, 2)} kPa")

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

phases = CreateObject(library.COQSPhaseCollection, interface=library.IPhaseCollection)
registry = CreateObject("QsHostKit.PropertyRegistry.1", interface=IDispatch)
phases.QueryInterface(library.IRegisterableObject).RegisterProperties(registry)
phases.Finalize(compounds, 2, 1)
phases.NumberOfEquilibriumPhases = 2
phases.GetEquilibriumPhase(0).PhaseType = library.xptVapour
phases.GetEquilibriumPhase(1).PhaseType = library.xptLiquid
store(phases.LocatePhase(library.xptFeed, 0), 1, z)
store(phases.LocatePhase(library.xptVapour, 0), fraction, y)
store(phases.LocatePhase(library.xptLiquid, 0), 1 - fraction, x)

for i in range(phases.NumberOfActivePhases):
    phase = phases.GetActivePhase(i)
    array = phase.MolarComposition.QueryInterface(library.IRealArrayDisp)
    composition = (str(round(array.IthValue[j], 4)) for j in range(3))
    print(f"phase of kind {phase.PhaseType}: fraction {round(phase.PhaseFraction, 4)}, composition", *composition)

text = compound.QueryInterface(library.IXMLStore).StoreAsXML()
pathlib.Path(sys.argv[2]).write_text(text, encoding="utf-8")
