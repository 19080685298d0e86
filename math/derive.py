#!/usr/bin/env python3
"""Writes tables.h, the tables and coefficients of the elementary functions, with 300 bits.

Needs mpmath (Debian: python3-mpmath). functions.h describes what each number is for.

    math/derive.py > math/tables.h
"""
import struct

from mpmath import cbrt, exp, ldexp, linspace, log, lu_solve, matrix, mp, mpf, nint

mp.prec = 300

EXP_ENTRIES = 16
LOG_ENTRIES = 32


def bits(x):
    return struct.unpack('<Q', struct.pack('<d', float(x)))[0]


def literal(x):
    """A double as a hexadecimal literal."""
    return float(x).hex()


def high_bits(x, unit):
    """x rounded to a multiple of 2^unit."""
    return ldexp(nint(ldexp(x, -unit)), unit)


def remez(f, weight, powers, low, high):
    """The coefficients of x^p, p in powers, that minimise the largest |f(x) - sum| * weight(x); and that error."""
    n = len(powers)
    grid = [x for x in linspace(mpf(low), mpf(high), 3001) if x != 0]
    middle, half = (mpf(low) + high) / 2, (mpf(high) - low) / 2
    nodes = sorted(middle + half * mp.cos(mp.pi * (2 * i + 1) / (2 * n + 2)) for i in range(n + 1))
    nodes = [x if abs(x) > half / 100 else half / 4 for x in nodes]
    values = [(f(x), weight(x)) for x in grid]
    for _ in range(12):
        system = matrix(n + 1, n + 1)
        right = matrix(n + 1, 1)
        for i, x in enumerate(nodes):
            w = weight(x)
            for j, p in enumerate(powers):
                system[i, j] = x**p * w
            system[i, n] = (-1)**i
            right[i] = f(x) * w
        solution = lu_solve(system, right)
        coefficients = [solution[j] for j in range(n)]
        errors = [(v - sum(c * x**p for c, p in zip(coefficients, powers))) * w
                  for x, (v, w) in zip(grid, values)]
        # The largest error of each run of one sign.
        extremes = []
        for x, e in zip(grid, errors):
            if extremes and (extremes[-1][1] > 0) == (e > 0):
                if abs(e) > abs(extremes[-1][1]):
                    extremes[-1] = (x, e)
            else:
                extremes.append((x, e))
        while len(extremes) > n + 1:
            ends = (0, len(extremes) - 1)
            extremes.pop(min(ends, key=lambda i: abs(extremes[i][1])))
        if len(extremes) < n + 1:
            break
        nodes = [x for x, _ in extremes]
        largest = max(abs(e) for e in errors)
        if largest < abs(solution[n]) * (1 + mpf(1) / 1000):
            break
    return coefficients, max(abs(e) for e in errors)


def scalar(name, value, comment=''):
    print(f'inline constexpr double {name} = {literal(value)};{comment}')


def array(name, coefficients, error):
    print(f'// Largest error: 2^{float(log(error, 2)):.1f}.')
    print(f'inline constexpr double {name}[] = {{')
    for c in coefficients:
        print(f'    {literal(c)},')
    print('};')


print('''// The tables and coefficients of the elementary functions; functions.h describes them. Written by derive.py.
#pragma once

#include <cstdint>

namespace qs::math {

// clang-format off''')

# exp: x = k ln2/16 + r. 2^(j/16) as a double and what it lacks, relative to it.
step = log(2) / EXP_ENTRIES
high = high_bits(step, -42)
print('\n// ln 2 / 16: its high part has so few bits that its product with k is exact.')
scalar('kExpStepsPerUnit', 1 / step)
scalar('kExpStepHigh', high)
scalar('kExpStepLow', step - high)
print(f'''
// 2^(j/16): the bits of the nearest double less j << 48, and what the double lacks, relative to it.
struct ExpEntry {{
  std::uint64_t bits;
  double tail;
}};
inline constexpr ExpEntry kExpTable[{EXP_ENTRIES}] = {{''')
for j in range(EXP_ENTRIES):
    exact = mpf(2) ** (mpf(j) / EXP_ENTRIES)
    nearest = mpf(float(exact))
    print(f'    {{{(bits(nearest) - (j << 48)) & (2**64 - 1):#018x}, {literal(exact / nearest - 1)}}},')
print('};')
limit = step / 2 * (1 + mpf(2) ** -20)
print('\n// e^r = 1 + r + r^2 (c[0] + c[1] r + ...).')
array('kExp', *remez(lambda r: exp(r) - 1 - r, lambda r: 1, [2, 3, 4, 5, 6], -limit, limit))
print('\n// (sinh r)/r = 1 + r^2 (c[0] + c[1] r^2 + ...), cosh r = 1 + r^2 (c[0] + c[1] r^2 + ...).')
array('kSinh', *remez(lambda u: mp.sinh(mp.sqrt(u)) / mp.sqrt(u) - 1, lambda u: 1, [1, 2, 3], mpf(0), limit**2))
array('kCosh', *remez(lambda u: mp.cosh(mp.sqrt(u)) - 1, lambda u: 1, [1, 2, 3], mpf(0), limit**2))

# log: x = 2^k z, c = z rounded to 1/32, r = (z - c)/c.
print('\n// ln 2 and ln c: high parts are multiples of 2^-42, so sums of them are exact.')
ln2_high = high_bits(log(2), -42)
scalar('kLn2High', ln2_high)
scalar('kLn2Low', log(2) - ln2_high)
print(f'''
// For c = n/32: 1/c - 1 and ln c, at n mod 32; n goes from 22 to 44.
struct LogEntry {{
  double inverseLess1;
  double high;
  double low;
  double c;
}};
inline constexpr LogEntry kLogTable[{LOG_ENTRIES}] = {{''')
for j in range(LOG_ENTRIES):
    n = j if j >= 21 else j + LOG_ENTRIES
    c = mpf(n) / LOG_ENTRIES
    h = high_bits(log(c), -42)
    print(f'    {{{literal(1 / c - 1)}, {literal(h)}, {literal(log(c) - h)}, {literal(c)}}},')
print('};')
# |r| is at most 1/(64 c): beyond the two intervals beside 1, where the logarithm is 0.045 and more, it is |ln c| - |r|.
limit = mpf(1) / 64 / (mpf(22) / 32)
near = mpf('0.0162')
weight = lambda r: 1 / abs(r) if abs(r) < near else 1 / max(mpf('0.045'), log(64 * abs(r)) - abs(r))
cubic = lambda r: log(1 + r) - r + r * r / 2
print('\n// ln(1 + r) = r - r^2/2 + r^3 (c[0] + c[1] r + ...), relative to the logarithm.')
array('kLog', *remez(cubic, weight, list(range(3, 9)), -limit, limit))
array('kLogLong', *remez(cubic, weight, list(range(3, 11)), -limit, limit))

print('\n// 1/ln 10; the high part has 26 bits.')
inverse = 1 / log(mpf(10))
h = high_bits(inverse, -27)
scalar('kInverseLn10High', h)
scalar('kInverseLn10Low', inverse - h)

print('\n// The cube root of z in [1, 2), relative; and of 1, 2 and 4.')
array('kCubeRoot', *remez(cbrt, lambda z: 1 / cbrt(z), [0, 1, 2, 3, 4, 5], mpf(1), mpf(2)))
print('inline constexpr double kCubeRootOf[] = {1.0, ' + literal(cbrt(mpf(2))) + ', ' + literal(cbrt(mpf(4))) + '};')
print('''
// clang-format on

}  // namespace qs::math''')
