"""Evaluation in Python with the package qscontainers: vapour pressures from below to above the range of their data,
each with its status; a boiling point as an inverse; and heats of vaporisation against the slope of the vapour pressure,
by Clapeyron's equation.

    python evaluation.py DATABASE-DIRECTORY
"""
import math
import sys

import qscontainers as qs

R = 8.31446261815324  # kJ/(kmol K)
SHOWN = qs.Status.INSIDE | qs.Status.BELOW | qs.Status.ABOVE | qs.Status.BY_POLICY

qs.options.policy = qs.Policy.eRecommended


def rounded(value, digits):
    return f"{math.floor(value * 10**digits + 0.5) / 10**digits:.15g}"


def columns(*texts):
    return "".join(f"{text:>12}" for text in texts)


def print_vapour_pressures(water):
    print(f"{water.name}, vapour pressure; data from {' to '.join(rounded(T, 2) for T in water.VP.range)} K")
    print(columns("K", "kPa") + "  status")
    for T in (240.0, 255.0, 263.15, 298.15, 373.15, 500.0, 647.14, 700.0, 900.0):
        print(f"{columns(rounded(T, 2), rounded(water.VP(T), 4))}  {water.VP.status(T) & SHOWN}")


def print_heats_of_vaporisation(fluid):
    """Along the boiling curve, T dP/dT (Vg - Vl). The vapour's volume is that of an ideal gas, corrected by the second
    virial coefficient where there is one. Acetic acid has none, and its vapour is far from ideal: most molecules are in
    pairs."""
    print(fluid.name)
    print(columns("kPa", "K", "kJ/kmol", "Clapeyron", "%"))
    for P in (10.0, 50.0, 101.325, 500.0, 1000.0):
        T = fluid.VP.solve(P)
        heat = fluid.HVP(T)
        vapour = R * T / P + (fluid.SVR(T) or 0.0)
        clapeyron = T * fluid.VP.derivative(T) * (vapour - fluid["MW"] / fluid.LDN(T))
        print(columns(rounded(P, 3), rounded(T, 3), rounded(heat, 1), rounded(clapeyron, 1),
                      rounded(100 * (clapeyron / heat - 1), 2)))


water, *others = [qs.compound(number, sys.argv[1]) for number in (19, 21, 46)]
print_vapour_pressures(water)
print(f"\n{water.name} boils at {rounded(water.VP.solve(50.0), 4)} K under 50 kPa: inside\n")
print("heats of vaporisation, and from the slope of the vapour pressure")
for fluid in (water, *others):
    print_heats_of_vaporisation(fluid)
print("end of evaluation")
