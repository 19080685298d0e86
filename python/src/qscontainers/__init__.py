"""Data of pure compounds, with the bundled database of common ones.

    import qscontainers as qs
    water = qs.compound("water")
    water.VP(373.15)

Temperatures are in K, pressures in kPa; `water.VP.unit` is the unit of the values. A number that is not set is None, in
an array NaN. An object is used by the thread that made it. `interfaces` has the modules' own classes, with all members.
"""
from . import interfaces
from ._com import Error, WrongThread
from ._compound import DATABASE, Compound, Compounds, NotFound, all_compounds, compound, find, from_xml, table
from .interfaces import (tagCompoundFamilyEnum as Family, tagLimitPolicyEnum as Policy, tagPhaseTypeEnum as PhaseKind,
                         tagValueKindEnum as SourceKind, tagValueQualityEnum as Quality)
from ._options import OutOfRange, OutOfRangeWarning, options
from ._phase import Phase, Phases
from ._property import Property, Range, Source, Status
from ._version import version as __version__

__all__ = ["Compound", "Compounds", "DATABASE", "Error", "Family", "NotFound", "OutOfRange", "OutOfRangeWarning",
           "Phase", "PhaseKind", "Phases", "Policy", "Property", "Quality", "Range", "Source", "SourceKind", "Status",
           "WrongThread", "all_compounds", "compound", "find", "from_xml", "interfaces", "options", "table"]
