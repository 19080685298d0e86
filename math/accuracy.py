#!/usr/bin/env python3
"""Measures the errors of the elementary functions and writes the table of docs/numbers.md.

    math/accuracy.py [POINTS]       5,000,000 points for each range of arguments, if not said otherwise

accuracy.cpp finds the largest errors in quadruple precision; the ten largest of each range are computed again with 60
digits, which decide. Fails when one is more than 0.9 units of the last place, or where the two disagree.
Needs g++ and mpmath (Debian: python3-mpmath).
"""
import os
import pathlib
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

from mpmath import mp, mpf

mp.dps = 60
ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / 'docs/numbers.md'
PROGRAM = ROOT / 'build/math_accuracy'
BEGIN, END = '<!-- errors, by math/accuracy.py -->\n', '<!-- end of errors -->\n'
BOUND = 0.9

EXACT = {
    'exp': lambda x, y: mp.exp(x),
    'log': lambda x, y: mp.log(x),
    'log10': lambda x, y: mp.log10(x),
    'sinh': lambda x, y: mp.sinh(x),
    'cosh': lambda x, y: mp.cosh(x),
    'cbrt': lambda x, y: mp.sign(x) * mp.cbrt(abs(x)),
    'pow': mp.power,
}
TITLES = {'cbrt': 'cube root'}


def unit_of(exact):
    """The unit of the last place of a number, of 2^-1074 where doubles are subnormal."""
    exponent = mp.frexp(exact)[1] - 1 if exact else -1022
    return mp.ldexp(1, min(max(exponent, -1022), 1023) - 52)


def error_of(function, x, y, result):
    exact = EXACT[function](mpf(x), mpf(y))
    value = mp.sign(result) * mp.ldexp(1, 1024) if abs(result) == float('inf') else mpf(result)
    return float(abs(value - exact) / unit_of(exact))


def measure(function, points):
    """The ranges of a function, each as points, description, largest error and where it was."""
    output = subprocess.run([PROGRAM, function, points], check=True, capture_output=True, text=True).stdout
    ranges = []
    for line in output.splitlines():
        if len(line.split()) == 4 and line.split()[1].lstrip('-').startswith('0x'):
            x, y, result, quadruple = line.split()
            x, y, result = float.fromhex(x), float.fromhex(y), float.fromhex(result)
            error = error_of(function, x, y, result)
            if abs(error - float(quadruple)) > 1e-9:
                sys.exit(f'{function} of {x.hex()}, {y.hex()}: {error} with 60 digits, {quadruple} in quadruple precision')
            ranges[-1][2] = max(ranges[-1][2], (error, x, y))
        else:
            count, description = line.split(maxsplit=1)
            ranges.append([int(count), description, (-1.0, 0.0, 0.0)])
    return ranges


def main():
    points = sys.argv[1] if len(sys.argv) > 1 else '5000000'
    PROGRAM.parent.mkdir(exist_ok=True)
    subprocess.run(['g++', '-std=c++20', '-O2', '-ffp-contract=off', '-I', ROOT, ROOT / 'math/accuracy.cpp',
                    ROOT / 'math/functions.cpp', '-lquadmath', '-o', PROGRAM], check=True)
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        measured = list(pool.map(lambda function: measure(function, points), EXACT))
    lines = ['| function | arguments | points | largest error | at |\n', '|---|---|---|---|---|\n']
    for function, ranges in zip(EXACT, measured):
        worst = max(error for _, _, (error, _, _) in ranges)
        for count, description, (error, x, y) in ranges:
            shown = f'**{error:.4f}**' if error == worst else f'{error:.4f}'
            place = f'{x.hex()}, {y.hex()}' if function == 'pow' else x.hex()
            lines.append(f'| {TITLES.get(function, function)} | {description} | {count:,} | {shown} | {place} |\n')
        if worst > BOUND:
            print(f'{function}: {worst} units', file=sys.stderr)
    before, rest = DOCUMENT.read_text().split(BEGIN)
    DOCUMENT.write_text(before + BEGIN + ''.join(lines) + END + rest.split(END)[1])
    sys.exit(any(error > BOUND for ranges in measured for _, _, (error, _, _) in ranges))


if __name__ == '__main__':
    main()
