"""First steps in Python with the package qscontainers: fills three compounds, prints a table of properties, flashes a
mixture of them by Raoult's law, stores the result in a collection of phases, reads it back, and writes the last
compound as XML.

    python first_steps.py DATABASE-DIRECTORY XML-FILE
"""
import math
import pathlib
import sys

import qscontainers as qs

T, P = 330.0, 250.0


def rounded(value, digits):
    return f"{math.floor(value * 10**digits + 0.5) / 10**digits:.15g}"


compounds = qs.Compounds(qs.compound(number, sys.argv[1]) for number in (3, 5, 7))
K = [each.VP(T, P) / P for each in compounds]
for each, ratio in zip(compounds, K):
    print(f"{each.name} {each.cas}: TC {rounded(each['TC'], 2)} K, PC {rounded(each['PC'], 2)} kPa, "
          f"VP {rounded(ratio * P, 2)} kPa")

# The vapour fraction where the mole fractions of both phases add up to one, by bisection.
z, low, high = [0.3, 0.4, 0.3], 0.0, 1.0
while high - low > 1e-12:
    fraction = (low + high) / 2
    if sum(zi * (Ki - 1) / (1 + fraction * (Ki - 1)) for zi, Ki in zip(z, K)) > 0:
        low = fraction
    else:
        high = fraction
x = [zi / (1 + fraction * (Ki - 1)) for zi, Ki in zip(z, K)]
y = [Ki * xi for Ki, xi in zip(K, x)]

phases = qs.Phases(compounds, phases=2, feeds=1)
phases[0].kind, phases[1].kind = qs.PhaseKind.xptVapour, qs.PhaseKind.xptLiquid
for phase, share, composition in ((phases.feed(), 1.0, z), (phases[0], fraction, y), (phases[1], 1 - fraction, x)):
    phase.temperature, phase.pressure, phase.active = T, P, True
    phase.fraction, phase.composition = share, composition
for phase in phases.active:
    print(f"phase of kind {phase.kind:d}: fraction {rounded(phase.fraction, 4)}, composition",
          *(rounded(part, 4) for part in phase.composition))

pathlib.Path(sys.argv[2]).write_text(compounds[2].com.StoreAsXML(), encoding="utf-8", newline="")
