#!/usr/bin/env python3
"""Writes expected.txt, the results that functions_test.cpp expects of the elementary functions.

    tests/math/expected.py > tests/math/expected.txt

A line is FUNCTION X Y RESULT REST. The numbers are the bits of doubles; Y is 0 for functions of one argument. RESULT is
the exact result, from 60 digits, rounded to a double; what is lost is REST, in millionths of a unit of RESULT's last
place. REST is "exact" where no other result will do: special values, exact results, and what is too large.
Needs mpmath (Debian: python3-mpmath). The largest errors that math/accuracy.py found, in docs/numbers.md, are included.
"""
import itertools
import math
import pathlib
import random
import re
import struct

from mpmath import mp, mpf

mp.dps = 60
INF, NAN = math.inf, math.nan
LEAST, LEAST_NORMAL, MOST = 2.0**-1074, 2.0**-1022, math.nextafter(INF, 0)
DOCUMENT = pathlib.Path(__file__).resolve().parent.parent.parent / 'docs/numbers.md'

EXACT = {
    'exp': mp.exp,
    'log': mp.log,
    'log10': mp.log10,
    'sinh': mp.sinh,
    'cosh': mp.cosh,
    'cbrt': lambda x: mp.sign(x) * mp.cbrt(abs(x)),
    'pow': mp.power,
}
# From a result to an argument, where the result's last places say less than the argument's.
INVERSE = {
    'exp': mp.log,
    'log': mp.exp,
    'log10': lambda y: mpf(10)**y,
    'sinh': mp.asinh,
    'cosh': mp.acosh,
    'cbrt': lambda y: y**3,
}


def bits(x):
    return f'{struct.unpack("<Q", struct.pack("<d", x))[0]:x}'


def write(function, arguments, result, rest):
    x, y = (*arguments, 0.0)[:2]
    print(function, bits(x), bits(y), bits(result), rest)


def rounded(exact):
    """The nearest double, and what is lost, in units of its last place; None for a double beside the unit's change."""
    exponent = max(mp.frexp(exact)[1] - 1, -1022) - 52 if exact else -1074
    whole = mp.nint(mp.ldexp(exact, -exponent))
    rest = mp.ldexp(exact, -exponent) - whole
    if abs(exact) >= mpf(2)**1024:
        return mp.sign(exact) * INF, mpf(0)
    if abs(whole) == 2**53 and rest * whole < 0 and abs(rest) > 1e-40:
        return None
    return math.copysign(float(mp.ldexp(whole, exponent)), -1 if exact < 0 else 1), rest


def compute(function, *arguments):
    """A line for finite arguments in the function's domain."""
    answer = rounded(EXACT[function](*map(mpf, arguments)))
    if answer:
        result, rest = answer
        write(function, arguments, result, 'exact' if abs(rest) < 1e-40 else int(mp.nint(rest * 10**6)))


def of_exponents(low, high):
    return math.ldexp(random.uniform(1, 2), random.randint(low, high))


def signed(x):
    return random.choice((x, -x))


def base_and_exponent(base, low, high):
    return base, random.uniform(low, high) / math.log(base)


def near(x, most):
    for _ in range(abs(step := random.randint(-most, most))):
        x = math.nextafter(x, step * INF)
    return x


# Random arguments, as many as stated, for each function.
RANGES = {
    'exp': [(250, lambda: random.uniform(-745.2, 709.78)), (60, lambda: random.uniform(-746, -708.3)),
            (60, lambda: signed(of_exponents(-56, 0))), (60, lambda: near(random.randint(-34000, 32700) * math.log(2) / 32, 3))],
    'log': [(250, lambda: of_exponents(-1022, 1023)), (40, lambda: of_exponents(-1074, -1023)),
            (60, lambda: 1 + signed(of_exponents(-52, -3))), (60, lambda: random.uniform(0.6, 1.4)),
            (60, lambda: near((random.randint(21, 43) + 0.5) / 32, 3)), (4, lambda: near(0.68, 3))],
    'sinh': [(250, lambda: random.uniform(-710.47, 710.47)), (60, lambda: signed(of_exponents(-30, 4))),
             (40, lambda: signed(near(random.choice((350, 709.78, 2.0**-27)), 9))),
             (60, lambda: near(random.randint(-32800, 32800) * math.log(2) / 32, 3))],
    'cbrt': [(250, lambda: signed(of_exponents(-1022, 1023))), (60, lambda: signed(of_exponents(-1074, -1023))),
             (60, lambda: random.uniform(1, 8))],
    'pow': [(250, lambda: (10**random.uniform(-3, 3), random.uniform(-10, 10))),
            (250, lambda: base_and_exponent(of_exponents(-1022, 1023), -745, 709.7)),
            (60, lambda: base_and_exponent(of_exponents(-1074, -1023), -745, 709.7)),
            (60, lambda: base_and_exponent(of_exponents(-1022, 1023), -746, -708.3)),
            (60, lambda: base_and_exponent(1 + signed(of_exponents(-52, -3)), -745, 709.7)),
            (60, lambda: (10**random.uniform(-6, 6), random.randint(-60, 60) / 12)),
            (60, lambda: (-of_exponents(-20, 20), float(random.randint(-30, 30))))],
}
RANGES['log10'] = RANGES['log']
RANGES['cosh'] = RANGES['sinh']


def hard_arguments(function, make, wanted=15, tried=6000):
    """Arguments whose exact results are next to the middle between two doubles, like those that `make` makes."""
    found = []
    for _ in range(tried):
        arguments = make()
        arguments = arguments if isinstance(arguments, tuple) else (arguments,)
        if function in INVERSE:
            exact = EXACT[function](mpf(arguments[0]))
            if exact == 0:
                continue
            result = rounded(exact)
            middle = (mpf(result[0]) + mpf(math.nextafter(result[0], INF))) / 2 if result else exact
            arguments = (float(INVERSE[function](middle)),)
            if not 0 < abs(arguments[0]) < INF:
                continue
        answer = rounded(EXACT[function](*map(mpf, arguments)))
        if answer and abs(answer[0]) < INF and LEAST < abs(answer[0]):
            found.append((abs(abs(answer[1]) - 0.5), arguments))
    return [arguments for _, arguments in sorted(set(found))[:wanted]]


def worst_arguments(function):
    """Those of the document's table."""
    title = 'cube root' if function == 'cbrt' else function
    for row in re.findall(rf'^\| {title} \|.*\| (.*) \|$', DOCUMENT.read_text(), re.MULTILINE):
        yield tuple(map(float.fromhex, row.split(', ')))


def special_values():
    """As IEEE 754 and annex F of the C standard have them."""
    for function in EXACT:
        if function != 'pow':
            yield function, (NAN,), NAN
    for x in (0.0, -0.0, INF, -INF):
        yield 'sinh', (x,), x
        yield 'cbrt', (x,), x
        yield 'exp', (x,), {INF: INF, -INF: 0.0}.get(x, 1.0)
        yield 'cosh', (x,), abs(x) or 1.0
        for function in ('log', 'log10'):
            yield function, (x,), {INF: INF, -INF: NAN}.get(x, -INF)
    for x in (-LEAST, -LEAST_NORMAL, -1.0, -2.5, -MOST):
        yield 'log', (x,), NAN
        yield 'log10', (x,), NAN

    odd, even, fractions = (1.0, 3.0, 2.0**53 - 1), (2.0, 6.0, 2.0**53, 1e300, MOST), (0.5, 1.5, LEAST, 2.0**51 + 0.5)
    large, small = (1.5, MOST, INF), (LEAST, LEAST_NORMAL, 0.5)
    for x in (0.0, -0.0, 1.0, -1.0, INF, -INF, NAN, 2.5, -LEAST):
        yield 'pow', (x, 0.0), 1.0
        yield 'pow', (x, -0.0), 1.0
        yield 'pow', (1.0, x), 1.0
    for y in (1.0, -1.5, INF, -INF, NAN):
        yield 'pow', (NAN, y), NAN
    for x in (0.0, -0.0, -1.0, 2.5, INF, -INF):
        yield 'pow', (x, NAN), NAN
    yield 'pow', (-1.0, INF), 1.0
    yield 'pow', (-1.0, -INF), 1.0
    for y in odd:
        for zero in (0.0, -0.0):
            yield 'pow', (zero, y), zero
            yield 'pow', (zero, -y), math.copysign(INF, zero)
        for infinity in (INF, -INF):
            yield 'pow', (infinity, y), infinity
            yield 'pow', (infinity, -y), math.copysign(0.0, infinity)
    for y, sign in itertools.product((*even, *fractions, INF), (1, -1)):
        yield 'pow', (sign * 0.0, y), 0.0
        yield 'pow', (sign * 0.0, -y), INF
        yield 'pow', (sign * INF, y), INF
        yield 'pow', (sign * INF, -y), 0.0
    for x, sign in itertools.product(large, (1, -1)):
        yield 'pow', (sign * x, INF), INF
        yield 'pow', (sign * x, -INF), 0.0
    for x, sign in itertools.product(small, (1, -1)):
        yield 'pow', (sign * x, INF), 0.0
        yield 'pow', (sign * x, -INF), INF
    for x, y in itertools.product((*small, 1.0, 1.5, MOST), fractions):
        yield 'pow', (-x, y), NAN
        yield 'pow', (-x, -y), NAN


def chosen_arguments():
    """Exact results, the ends of ranges, results too large and too small."""
    above, below = math.nextafter(1, 2), math.nextafter(1, 0)
    for n in range(-307, 309):
        yield 'log10', float(f'1e{n}')
    for n in (*range(1, 60), 1000, 12345, 99999, 200000, 0.5, -3, -0.125, 1.5, 2.0**100, 2.0**-341):
        yield 'cbrt', float(n)**3
    for n in range(-1074, 1024, 37):
        yield 'pow', 2.0, float(n)
        yield 'log', 2.0**n
        yield 'log10', 2.0**n
        yield 'cbrt', 2.0**n
    for x, y in itertools.product((10.0, 3.0, 1.5, -0.25), range(-22, 23)):
        yield 'pow', x, float(y)
    for n in (16, 25, 144, 1e6 + 1, 2.0**26 - 1):
        yield 'pow', n * n, 0.5
        yield 'pow', n * n, 1.5
        yield 'pow', n, 2.0
    for x in (LEAST, LEAST_NORMAL, 0.1, MOST, -MOST, -LEAST):
        yield 'pow', x, 1.0
        yield 'cbrt', x
        for y in (LEAST, -LEAST, 1e-20):
            yield 'pow', abs(x), y
    for x in (above, below, 0.5, 2.0, MOST, LEAST):
        for y in (1e17, -1e17, 1e308, -1e308, 1100, -1100):
            yield 'pow', x, float(y)
    for y in (1025.0, -1101.0, 1026.0, -1102.0):
        yield 'pow', -2.0, y
    for x in (LEAST, LEAST_NORMAL, 2.0**-60, 2.0**-54, 2.0**-53, 2.0**-27, 2.0**-26, 745.13, 746.0, 709.78, 709.79, 710.47,
              710.48, 711.0, 800.0, 801.0, 1e5, 1e308):
        for function, sign in itertools.product(('exp', 'sinh', 'cosh'), (1, -1)):
            yield function, sign * x
    for x in (LEAST, LEAST_NORMAL, below, 1.0, above, MOST):
        yield 'log', x
        yield 'log10', x


def main():
    random.seed(1)
    for function, arguments, result in special_values():
        write(function, arguments, result, 'exact')
    for function, *arguments in chosen_arguments():
        compute(function, *arguments)
    for function in EXACT:
        for count, make in RANGES[function]:
            for _ in range(count):
                arguments = make()
                compute(function, *(arguments if isinstance(arguments, tuple) else (arguments,)))
            for arguments in hard_arguments(function, make):
                compute(function, *arguments)
        for arguments in worst_arguments(function):
            compute(function, *arguments)


if __name__ == '__main__':
    main()
