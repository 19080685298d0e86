"""Phases of a calculation."""
from __future__ import annotations

from collections.abc import Iterable, Sequence
from typing import Any

from ._compound import Compounds
from .interfaces import COQSPhase, COQSPhaseCollection, PropertyRegistry, tagPhaseStatusEnum, tagPhaseTypeEnum


class Value:
    """A value of a phase, as an attribute; None when it is not set."""

    def __init__(self, member: str, help: str) -> None:
        self.member, self.__doc__ = member, help

    def __get__(self, phase: Any, owner: type | None = None) -> Any:
        return self if phase is None else getattr(phase.com, self.member)

    def __set__(self, phase: Any, value: Any) -> None:
        setattr(phase.com, self.member, value)


class Phase:
    """A phase of a calculation. `com` has all members of its interfaces."""

    kind = Value("PhaseType", "Kind of the phase")
    fraction = Value("PhaseFraction", "Molar fraction of the phase")
    mass_fraction = Value("PhaseMassFraction", "Mass fraction of the phase")
    temperature = Value("Temperature", "Temperature, K")
    pressure = Value("Pressure", "Pressure, kPa")
    enthalpy = Value("Enthalpy", "Enthalpy, kJ/kmol")
    entropy = Value("Entropy", "Entropy, kJ/(kmol K)")
    heat_capacity = Value("Cp", "Heat capacity at constant pressure, kJ/(kmol K)")
    molar_volume = Value("MolarVolume", "Molar volume, m3/kmol")
    molecular_weight = Value("MolecularWeight", "Molecular weight, kg/kmol")

    def __init__(self, com: COQSPhase) -> None:
        self.com: Any = com

    @property
    def active(self) -> bool:
        """Whether the phase takes part in the calculation."""
        return self.com.IsActivePhase()

    @active.setter
    def active(self, value: bool) -> None:
        self.com.PhaseStatus = tagPhaseStatusEnum.xpsActivePhase if value else tagPhaseStatusEnum.xpsInactivePhase

    @property
    def composition(self) -> list[float | None]:
        """Mole fractions, in the order of the compounds."""
        return list(self.com.MolarComposition or ())

    @composition.setter
    def composition(self, fractions: Iterable[float | None]) -> None:
        self.com.MolarComposition = fractions

    def __repr__(self) -> str:
        kind = self.kind.name[3:] if isinstance(self.kind, tagPhaseTypeEnum) else "without a kind"
        return f"<Phase {kind}: {self.temperature} K, {self.pressure} kPa, fraction {self.fraction}>"


class Phases(Sequence[Phase]):
    """The equilibrium phases of a calculation, by position; `feed(i)` is one of the feeds."""

    def __init__(self, compounds: Any, phases: int = 2, feeds: int = 1) -> None:
        self.compounds = compounds if isinstance(compounds, Compounds) else Compounds(compounds)
        self.com: Any = COQSPhaseCollection()
        self.com.RegisterProperties(PropertyRegistry())
        self.com.Finalize(self.compounds.com, phases, feeds)
        self.com.NumberOfEquilibriumPhases = phases

    def __len__(self) -> int:
        return self.com.NumberOfEquilibriumPhases

    def __getitem__(self, position: Any) -> Any:
        if isinstance(position, slice):
            return [self[i] for i in range(*position.indices(len(self)))]
        return Phase(self.com.GetEquilibriumPhase(range(len(self))[position]))

    def feed(self, position: int = 0) -> Phase:
        return Phase(self.com.LocatePhase(tagPhaseTypeEnum.xptFeed, position))

    @property
    def active(self) -> list[Phase]:
        """The phases that take part, feeds among them."""
        return [Phase(self.com.GetActivePhase(i)) for i in range(self.com.NumberOfActivePhases)]

    def __repr__(self) -> str:
        return f"Phases({list(self)})"
