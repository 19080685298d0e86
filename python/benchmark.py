"""Measures the package against what it calls: medians of interleaved runs.

    python benchmark.py [--check]       --check: exit code 1 where a ratio is above its target
"""
import ctypes
import statistics
import subprocess
import sys
import time
from array import array

import qscontainers as qs
from qscontainers import _com
from qscontainers.interfaces import ICompoundEvaluationArrays

COUNT, CALLS, ROUNDS, STARTS = 1_000_000, 20_000, 15, 15

water = qs.compound("water")


def seconds(work):
    start = time.perf_counter()
    work()
    return time.perf_counter() - start


def medians(*works):
    times = [[seconds(work) for work in works] for _ in range(ROUNDS)]
    return [statistics.median(column) for column in zip(*times)]


def scalar_call():
    """water.VP(T) against a call of a function that does nothing, with the same arguments."""
    VP = water.VP
    plan = ICompoundEvaluationArrays.EvaluateArray.plan
    empty = plan.prototype(("CoUninitialize", _com.ole)) if sys.platform != "win32" else \
        plan.prototype(("GetCurrentThreadId", ctypes.windll.kernel32))
    this, name, at, result = VP._this, VP._name, VP._at, VP._result

    def package():
        for _ in range(CALLS):
            VP(373.15)

    def nothing():
        for _ in range(CALLS):
            empty(this, name, 1, at, 101.325, 1, result, None, None, None)

    ours, theirs = medians(package, nothing)
    return "one value", ours / CALLS * 1e9, theirs / CALLS * 1e9, "ns", 3


def arrays():
    """water.VP(array) against the members of the module, with addresses, as a C++ host calls them."""
    numpy = sys.modules.get("numpy")
    temperatures = array("d", (280 + 360 * i / COUNT for i in range(COUNT)))
    given, out = temperatures, array("d", temperatures)
    if numpy:
        given, out = numpy.frombuffer(given), numpy.frombuffer(out)
    VP, this = water.VP, water.com._pointer(ICompoundEvaluationArrays)
    raw = VP._function
    buffer = (ctypes.c_double * COUNT)()
    source = ctypes.c_void_p(temperatures.buffer_info()[0])
    malloc = ctypes.CDLL(None) if sys.platform != "win32" else ctypes.CDLL("msvcrt")
    malloc.malloc.restype, malloc.malloc.argtypes = ctypes.c_void_p, [ctypes.c_size_t]
    malloc.free.restype, malloc.free.argtypes = None, [ctypes.c_void_p]

    def batch(target):
        raw(this, VP._name, COUNT, source, 101.325, qs.options.policy, target, None, None, None)

    def new_buffer():
        target = malloc.malloc(8 * COUNT)
        batch(target)
        malloc.free(target)

    new, same, ours, into = medians(new_buffer, lambda: batch(buffer), lambda: VP(given), lambda: VP(given, out=out))
    yield "an array", ours * 1e3, new * 1e3, "ms", 1.2
    yield "an array, out=", into * 1e3, same * 1e3, "ms", 1.1


def starting():
    """The import, beyond that of what it needs of the library anyway: the time of the process, medians of many."""
    text = "import time, ctypes, enum; t = time.process_time(); import qscontainers; print(time.process_time() - t)"
    times = [float(subprocess.run([sys.executable, "-c", text], check=True, capture_output=True).stdout)
             for _ in range(STARTS)]
    return "import", statistics.median(times) * 1e3, 50, "ms", 1


def main():
    high = False
    for name, ours, theirs, unit, limit in (scalar_call(), *arrays(), starting()):
        high |= ours > limit * theirs
        print(f"{name:16} {ours:8.2f} {unit}, against {theirs:8.2f} {unit}: {ours / theirs:.2f} of at most {limit}")
    return high and "--check" in sys.argv


if __name__ == "__main__":
    if "--plain" not in sys.argv:
        try:
            import numpy  # noqa: F401
        except ImportError:
            pass
    sys.exit(main())
