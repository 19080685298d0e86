"""One property of one compound: its values at temperatures, and what is known of it."""
from __future__ import annotations

import math
import sys
from array import array
from ctypes import byref, c_double
from enum import IntFlag
from typing import Any, Callable, NamedTuple

from . import _com
from ._com import NOT_SET, S_OK, Elements, WrongThread
from .interfaces import (ICompoundEvaluationArrays, tagEquationShapeEnum, tagIntegrandEnum, tagLimitPolicyEnum,
                          tagPropTypeEnum, tagValueKindEnum, tagValueQualityEnum)
from ._options import options

STANDARD_TEMPERATURE, STANDARD_PRESSURE = 298.15, 101.325  # K, kPa


class Status(IntFlag):
    """What is known of a number."""

    INSIDE = 1
    BELOW = 2
    ABOVE = 4
    OUTSIDE_PRESSURE = 8
    BY_POLICY = 16
    CLAMPED = 32
    NOT_SET = 64
    NO_SUCH_PROPERTY = 128
    NOT_A_NUMBER = 256
    NO_CONVERGENCE = 512
    SEVERAL_SOLUTIONS = 1024

    def __str__(self) -> str:
        return ", ".join(str(bit.name).lower().replace("_", " ") for bit in Status if bit & self)


OUTSIDE = int(Status.BELOW | Status.ABOVE | Status.OUTSIDE_PRESSURE)


class Range(NamedTuple):
    """The temperatures in K that the data cover."""

    low: float
    high: float


class Description(NamedTuple):
    type: tagPropTypeEnum
    shape: tagEquationShapeEnum
    form: str | None
    coefficients: list[float]
    low: float | None
    high: float | None
    low_pressure: float | None
    high_pressure: float | None
    transformations: list[float]
    unit: str | None
    help: str | None
    policy: tagLimitPolicyEnum


class Source(NamedTuple):
    """Where a value comes from, as far as it is known."""

    kind: tagValueKindEnum
    quality: tagValueQualityEnum
    title: str | None
    authors: str | None
    year: int | None
    licence: str | None
    changes: str | None
    uncertainty: str | None
    note: str | None


class Key:
    """The property under a key, as an attribute of compounds."""

    def __init__(self, help: str, unit: str) -> None:
        self.help, self.unit = help, unit
        self.__doc__ = help if unit == "-" else f"{help}, {unit}"

    def __set_name__(self, owner: type, name: str) -> None:
        self.name = name

    def __get__(self, compound: Any, owner: type | None = None) -> Property:
        if compound is None:
            return self  # type: ignore[return-value]
        found = compound.__dict__[self.name] = Property(compound.com, self.name)
        return found


def counted(values: Any) -> tuple[Any, int]:
    """Values as a buffer of doubles, which is their own where they have one, and how many there are."""
    for _ in range(2):
        try:
            elements = Elements(values)
        except (TypeError, ValueError, BufferError):
            numpy = sys.modules.get("numpy")
            values = numpy.ascontiguousarray(values, float) if numpy else array("d", values)
            continue
        elements.close()
        return values, elements.count
    raise TypeError("numbers are needed")


def like(values: Any, kind: str, count: int) -> Any:
    """New doubles (d) or 32-bit integers (i): a NumPy array of the same shape for one, else an array."""
    numpy = sys.modules.get("numpy")
    if numpy and hasattr(values, "__array__"):
        return numpy.empty(numpy.shape(values), "f8" if kind == "d" else "i4")
    return array(kind, [0]) * count


def mark_missing(values: Any) -> None:
    """NaN for each number that is not set."""
    elements: Any = memoryview(values).cast("B").cast("d")
    numpy = sys.modules.get("numpy")
    if numpy:
        found = numpy.frombuffer(elements)
        found[found == NOT_SET] = math.nan
        return
    for i, value in enumerate(elements):
        if value == NOT_SET:
            elements[i] = math.nan


def first_outside(statuses: array[int]) -> int | None:
    numpy = sys.modules.get("numpy")
    if numpy:
        found = numpy.flatnonzero(numpy.frombuffer(statuses, "i4") & OUTSIDE)
        return int(found[0]) if len(found) else None
    return next((i for i, status in enumerate(statuses) if status & OUTSIDE), None)


def statuses_for(count: int) -> Any:
    """Where a call puts statuses, when the options want to know them."""
    return None if options.allows else array("i", [0]) * count


def complain(key: str, name_of: Callable[[int], str | None], temperatures: Any, statuses: Any) -> None:
    """Of the first temperature outside the range, as the options say; each row of statuses is of another compound."""
    place = None if statuses is None else first_outside(statuses)
    if place is not None:
        given = memoryview(temperatures).cast("B").cast("d")
        row, column = divmod(place, len(given))
        options.complain(f"{key} of {name_of(row)} at {given[column]:g} K is outside the range of the data: "
                         f"{Status(statuses[place])}")


class Property:
    """A property of a compound. `water.VP(T)` is its value at a temperature in K or at each of many: a number, any
    buffer of doubles (without a copy) or a sequence of numbers. A number gives a number, None where there is none;
    anything else gives an array of the same shape, NaN where there is none, or fills `out`. A constant needs no
    temperature.

    The pressure, in kPa, matters to components and to equations with a pressure in them. `policy` says how the property
    goes on outside its range, `options.policy` unless it is given.
    """

    def __init__(self, com: Any, key: str) -> None:
        self.key = key
        self._com = com
        self._owner = com._owner
        # What a call for one value is made with; only the thread of the compound uses it.
        self._this = com._pointer(ICompoundEvaluationArrays)
        member: Any = ICompoundEvaluationArrays.EvaluateArray
        self._function = member.function(self._this)
        self._name = key.encode("utf-16-le") + b"\0\0"
        self._T, self._value = c_double(), c_double()
        self._at, self._result = byref(self._T), byref(self._value)

    def __call__(self, T: Any = None, P: float = STANDARD_PRESSURE, *, policy: int | None = None,
                 out: Any = None) -> Any:
        if type(T) is float and policy is None and out is None and options.allows:
            owner = self._owner
            if owner is not _com.here.owner:
                raise WrongThread("a property belongs to the thread that made its compound")
            if owner.pending:
                owner.release_pending()
            self._T.value = T
            hr = self._function(self._this, self._name, 1, self._at, P, options.policy, self._result, None, None, None)
            if hr == S_OK:
                return self._value.value
        if T is None:
            if self.description.type == tagPropTypeEnum.EquationProp:
                raise TypeError(f"{self.key} needs a temperature")
            T = STANDARD_TEMPERATURE
        return self._evaluated(0, T, P, policy, out)

    def derivative(self, T: Any, order: int = 1, P: float = STANDARD_PRESSURE, *, policy: int | None = None,
                   out: Any = None) -> Any:
        """The first or second derivative, per K or per K²."""
        if order not in (1, 2):
            raise ValueError("order is 1 or 2")
        return self._evaluated(order, T, P, policy, out)

    def status(self, T: Any, P: float = STANDARD_PRESSURE, *, policy: int | None = None) -> Any:
        """What is known of the value at T: a Status, or an array of their numbers."""
        def evaluate(given: Any, count: int, statuses: Any) -> bool:
            return self._com.EvaluateArray(self.key, count, given, P, policy_of(policy), None, None, None, statuses)

        found = self._computed(T, "i", None, evaluate)
        return Status(found) if isinstance(found, int) else found

    def integral(self, T1: float, T2: Any, P: float = STANDARD_PRESSURE, *, over_T: bool = False,
                 policy: int | None = None, out: Any = None) -> Any:
        """The integral from T1 to T2 or to each of many, of the property or, `over_T`, of it divided by T."""
        integrand = tagIntegrandEnum.eIntegralOfYOverT if over_T else tagIntegrandEnum.eIntegralOfY

        def integrate(ends: Any, count: int, results: Any) -> bool:
            starts, statuses = array("d", [T1]) * count, statuses_for(count)
            there = self._com.IntegrateArray(self.key, integrand, count, starts, ends, P, policy_of(policy), results,
                                             statuses)
            complain(self.key, lambda row: self._com.Name, ends, statuses)
            return there

        return self._computed(T2, "d", out, integrate)

    def solve(self, value: Any, P: float = STANDARD_PRESSURE, *, out: Any = None) -> Any:
        """The lowest temperature of the range, in K, at which the property has a value, or each of many; None or NaN
        where it does not reach it."""
        def find(given: Any, count: int, results: Any) -> bool:
            return self._com.FindTemperatures(self.key, count, given, P, results, None)

        return self._computed(value, "d", out, find)

    def _evaluated(self, quantity: int, T: Any, P: float, policy: int | None, out: Any) -> Any:
        def evaluate(given: Any, count: int, results: Any) -> bool:
            statuses = statuses_for(count)
            wanted = [results if i == quantity else None for i in range(3)]
            there = self._com.EvaluateArray(self.key, count, given, P, policy_of(policy), *wanted, statuses)
            complain(self.key, lambda row: self._com.Name, given, statuses)
            return there

        return self._computed(T, "d", out, evaluate)

    def _computed(self, values: Any, kind: str, out: Any, compute: Callable[[Any, int, Any], bool]) -> Any:
        """What `compute` makes of values, their count and a buffer for its results."""
        single = not hasattr(type(values), "__len__") and out is None
        given, count = counted([float(values)] if not hasattr(type(values), "__len__") else values)
        if out is None:
            results = like(None if single else values, kind, count)
        else:
            results, room = counted(out)
            if results is not out or room != count:
                raise ValueError(f"out has to be a buffer of {count} doubles")
        there = compute(given, count, results)
        if single:
            return results[0] if there or kind == "i" else None
        if not there and kind == "d":
            mark_missing(results)
        return results

    @property
    def description(self) -> Description:
        """All that there is to show of it."""
        return Description(*self._com.Describe(self.key))

    @property
    def help(self) -> str | None:
        return self.description.help

    @property
    def unit(self) -> str | None:
        """The unit of values; "-" for a number without one, None for a property that is no key."""
        return self.description.unit

    @property
    def range(self) -> Range | None:
        """The temperatures in K that the data cover; None for a constant and for what is not set."""
        found: Any = self.description
        return Range(found.low, found.high) if found.type == tagPropTypeEnum.EquationProp else None

    @property
    def form(self) -> str | None:
        """The formula of an equation, with the letters of its coefficients."""
        return self.description.form

    @property
    def shape(self) -> tagEquationShapeEnum:
        """The form of an equation by its name."""
        return self.description.shape

    @property
    def coefficients(self) -> list[float]:
        """The coefficients of an equation, from A on."""
        return self.description.coefficients or []

    @property
    def policy(self) -> tagLimitPolicyEnum:
        """How the property is recommended to go on outside its range."""
        return self.description.policy

    @property
    def is_set(self) -> bool:
        return self.description.type != tagPropTypeEnum.VoidProp

    @property
    def source(self) -> Source | None:
        """Where the values come from; None where it is not known."""
        found = Source(*self._com.GetPropertySource(self.key))
        return found if any(found) else None

    @source.setter
    def source(self, value: Source) -> None:
        self._com.SetPropertySource(self.key, *value)

    def __float__(self) -> float:
        value = self()
        return math.nan if value is None else value

    def __repr__(self) -> str:
        found = self.description
        return f"<{self.key} of {self._com.Name}: {what(found)}>"

    def _repr_html_(self) -> str:
        found = self.description
        rows = [("property", found.help), ("value", what(found)), ("form", found.form),
                ("coefficients", ", ".join(f"{value:.10g}" for value in found.coefficients or []))]
        source = self.source
        if source:
            rows.append(("source", source.title))
        return html_table(f"{self.key} of {self._com.Name}", [(name, text) for name, text in rows if text])

    def plot(self, T: Any = None, ax: Any = None, **style: Any) -> Any:
        """Draws it with Matplotlib, over its range or at the temperatures T, and returns the axes."""
        import matplotlib.pyplot as pyplot

        found = self.description
        if T is None:
            if not self.range:
                raise ValueError(f"{self.key} of {self._com.Name} has no range to draw it over")
            low, high = self.range
            steps = 200
            T = array("d", (low + (high - low) * i / steps for i in range(steps + 1)))
        ax = ax or pyplot.subplots()[1]
        ax.plot(T, self(T), **{"label": self._com.Name, **style})
        ax.set_xlabel("T, K")
        ax.set_ylabel(labelled(found.help or self.key, found.unit))
        return ax


def policy_of(policy: int | None) -> int:
    return options.policy if policy is None else policy


def labelled(name: str, unit: str | None) -> str:
    return name if unit in (None, "", "-") else f"{name}, {unit}"


def what(found: Description) -> str:
    """A property's value, or its range, in a few words."""
    name = labelled(found.help or "", found.unit)
    if found.type == tagPropTypeEnum.VoidProp:
        return f"{name}; not set"
    if found.type == tagPropTypeEnum.EquationProp:
        return f"{name}; {found.low:g} to {found.high:g} K"
    return name


def html_table(title: str, rows: list[tuple[str, Any]]) -> str:
    cells = "".join(f"<tr><th>{escape(str(name))}</th><td>{escape(str(value))}</td></tr>" for name, value in rows)
    return f"<table><caption>{escape(title)}</caption>{cells}</table>"


def escape(text: str) -> str:
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
