"""Compounds of the database, alone and in collections."""
from __future__ import annotations

import os
import re
import sys
from collections.abc import Iterable, Iterator, Sequence
from typing import Any

from ._com import FOLDER
from .interfaces import (COQSCompound, COQSCompoundCollection, XMLParser, tagCompoundFamilyEnum, tagPropTypeEnum,
                         tagXMLFormEnum)
from ._keys import Keys
from ._property import (STANDARD_PRESSURE, Property, complain, counted, html_table, labelled, like, mark_missing,
                        policy_of, statuses_for, what)

DATABASE = os.path.join(FOLDER, "database")
EXACT = tagXMLFormEnum.xmlExactForm | tagXMLFormEnum.xmlProvenance


class NotFound(LookupError):
    """No compound has the name, synonym, CAS number or number."""


class Compound(Keys):
    """A compound. Each key is an attribute, a `Property`: `water.VP(373.15)`; `com` has all members of its interfaces.

    `water["TC"]` is the number of a constant; of a property that depends on temperature it is the Property. Both take
    the names of properties that are no keys too.
    """

    def __init__(self, com: COQSCompound | None = None) -> None:
        self.com: Any = com or COQSCompound()

    @property
    def name(self) -> str | None:
        return self.com.Name

    @property
    def number(self) -> int | None:
        """Its number in the database."""
        return self.com.VelcorinID

    @property
    def cas(self) -> str | None:
        return self.com.CASN

    @property
    def formula(self) -> str | None:
        return self.com.ChemicalFormula

    @property
    def iupac_name(self) -> str | None:
        return self.com.IUPACName

    @property
    def family(self) -> tagCompoundFamilyEnum | None:
        return self.com.Family

    @property
    def synonyms(self) -> list[str]:
        return [self.com.SynonymName(i) for i in range(self.com.NumberOfSynonymNames)]

    def keys(self) -> list[str]:
        """The names of the properties that are set, in their order."""
        com = self.com
        names = [com.GetPropertyName(fixed, i) for fixed in (1, 0) for i in range(com.GetNumbOfProperty(fixed))]
        return [name for name, kind in names if kind != tagPropTypeEnum.VoidProp]

    def __iter__(self) -> Iterator[str]:
        return iter(self.keys())

    def __contains__(self, key: str) -> bool:
        return self.property(key).is_set

    def property(self, key: str) -> Property:
        """A property by its name."""
        return getattr(self, key) if hasattr(Keys, key) else Property(self.com, key)

    def __getitem__(self, key: str) -> Any:
        found = self.property(key)
        description = found.description
        if description.type == tagPropTypeEnum.VoidProp:
            if description.help is None and not self.com.FindProperty(key)[0]:
                raise KeyError(f"{self.name} has no property {key}")
            return None
        return found() if description.type == tagPropTypeEnum.PointProp else found

    def __setitem__(self, key: str, value: float | None) -> None:
        """Stores a constant; None takes its value away."""
        fixed = hasattr(Keys, key)
        if value is None:
            self.com.SetVoidProperty(key, fixed)
        else:
            self.com.SetPointProperty(key, fixed, value)

    def xml(self, form: int = EXACT) -> str:
        """The compound as XML text, by default with every bit and every source."""
        return self.com.StoreAsXMLEx(form)

    def copy(self) -> Compound:
        made = Compound()
        made.com.CopyToThis(self.number or 0, self.com)
        return made

    def __reduce__(self) -> Any:
        return from_xml, (self.xml(),)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Compound) and self.com == other.com

    def __hash__(self) -> int:
        return hash(self.com)

    def __str__(self) -> str:
        return self.name or "a compound without a name"

    def __repr__(self) -> str:
        return f"<Compound {self.number}: {self.name}, {self.formula}, CAS {self.cas}>"

    def _repr_html_(self) -> str:
        rows = [("formula", self.formula), ("CAS", self.cas), ("number", self.number)]
        for key in self.keys():
            value = self[key]
            description = self.property(key).description
            text = f"{labelled(description.help or '', None)}: {value:.10g} {description.unit or ''}" \
                if isinstance(value, float) else what(description)
            rows.append((key, text))
        return html_table(str(self), [row for row in rows if row[1] is not None])


class Compounds(Sequence[Compound]):
    """An ordered collection of compounds: of names, numbers or compounds, by position or by name, synonym or CAS
    number. `com` has all members of its interfaces."""

    def __init__(self, compounds: Iterable[Any] = (), com: COQSCompoundCollection | None = None) -> None:
        self.com: Any = com or COQSCompoundCollection()
        for each in compounds:
            self.append(each)

    def append(self, which: Any) -> None:
        """Adds a compound, or the one of the bundled database that has a name, synonym, CAS number or number."""
        self.com.AddCompound(as_compound(which).com)

    def __len__(self) -> int:
        return self.com.NumberOfCompounds

    def __getitem__(self, which: Any) -> Any:
        if isinstance(which, slice):
            return [self[i] for i in range(*which.indices(len(self)))]
        if isinstance(which, str):
            for each in self:
                if each and matches(each, which):
                    return each
            raise NotFound(f"none of these compounds has the name, synonym or CAS number {which}")
        found = self.com.Compound(range(len(self))[which])
        return None if found is None else Compound(found)

    def __setitem__(self, position: int, compound: Any) -> None:
        self.com.put_Compound(range(len(self))[position], as_compound(compound).com)

    def evaluate(self, key: str, T: Any, P: float = STANDARD_PRESSURE, *, policy: int | None = None) -> Any:
        """A property of all compounds at temperatures, a row for each compound: an array of two dimensions with NumPy,
        a list of arrays without. NaN where there is no number."""
        given, count = counted([T] if isinstance(T, (int, float)) else T)
        values, statuses = like(None, "d", len(self) * count), statuses_for(len(self) * count)
        there = self.com.EvaluateCompoundArray(key, len(self), None, count, given, P, policy_of(policy), values, None,
                                               None, statuses)
        complain(key, lambda row: self[row].name, given, statuses)
        if not there:
            mark_missing(values)
        numpy = sys.modules.get("numpy")
        if numpy:
            return numpy.frombuffer(values).reshape(len(self), count)
        return [values[row * count:(row + 1) * count] for row in range(len(self))]

    def view(self, positions: Sequence[int]) -> Compounds:
        """A collection that shows the compounds at some positions."""
        return Compounds(com=self.com.CreateSubCompList(positions))

    def xml(self, form: int = EXACT) -> str:
        return self.com.StoreAsXMLEx(form)

    def __reduce__(self) -> Any:
        return from_xml, (self.xml(),)

    def __repr__(self) -> str:
        return f"Compounds({[str(each) for each in self]})"

    def _repr_html_(self) -> str:
        return html_table("Compounds", [(str(each), each.formula) for each in self])


def matches(compound: Compound, text: str) -> bool:
    wanted = text.casefold()
    return any(name and name.casefold() == wanted for name in (compound.name, compound.cas, *compound.synonyms))


def numbers_with(field: str, text: str, database: str) -> list[int]:
    """The numbers of the compounds with a text in a field of the database."""
    return list(COQSCompoundCollection().GetVelIDs(database, field, text) or ())


def by_number(number: int, database: str) -> Compound:
    made = Compound()
    if not made.com.Init(database, number):
        raise NotFound(f"no compound of {database} has the number {number}")
    return made


def compound(which: str | int, database: str | os.PathLike[str] = DATABASE) -> Compound:
    """A compound of the bundled database, or of another, by name, synonym, CAS number or number."""
    database = os.fspath(database)
    if isinstance(which, int):
        return by_number(which, database)
    numbers = dict.fromkeys(number for field in ("PName", "CASN") for number in numbers_with(field, which, database))
    if len(numbers) == 1:
        return by_number(next(iter(numbers)), database)
    if numbers:
        several = ", ".join(f"{number} ({by_number(number, database).name})" for number in numbers)
        raise NotFound(f"several compounds of {database} have the name {which}; give a number: {several}")
    import difflib
    names = {name.casefold(): name for each in all_compounds(database) for name in (each.name, *each.synonyms) if name}
    like_it = [names[name] for name in difflib.get_close_matches(which.casefold(), names, 3, 0.7)]
    hint = f"; did you mean {' or '.join(like_it)}?" if like_it else ""
    raise NotFound(f"no compound of {database} has the name, synonym or CAS number {which}{hint}")


def as_compound(which: Any) -> Compound:
    return which if isinstance(which, Compound) else compound(which)


def all_compounds(database: str | os.PathLike[str] = DATABASE) -> list[Compound]:
    """All compounds of the bundled database, or of another, by number."""
    database = os.fspath(database)
    # A query wants a field's text; this field has one of these in every record.
    texts = ("0", "1", "-1", "-32767")
    numbers = {number for text in texts for number in numbers_with("NonCondensable", text, database)}
    return [by_number(number, database) for number in sorted(numbers)]


def find(text: str, database: str | os.PathLike[str] = DATABASE) -> list[Compound]:
    """The compounds that have a text in a name, synonym, CAS number or the name of their family, or that have it as
    formula or number. Case does not matter."""
    wanted = text.casefold()

    def has(each: Compound) -> bool:
        family = each.family.name[1:] if isinstance(each.family, tagCompoundFamilyEnum) else ""
        parts = (each.name, each.iupac_name, each.cas, family, *each.synonyms)
        return any(part and wanted in part.casefold() for part in parts) or \
            wanted in ((each.formula or "").casefold(), str(each.number))

    return [each for each in all_compounds(database) if has(each)]


def from_xml(text: str) -> Compound | Compounds:
    """The compound, or the collection, that an XML text describes."""
    root = re.search(r"<(CompoundCollection|SubCompList|Compound)\b", text)
    made: Any = Compound() if root is None or root[1] == "Compound" else Compounds()
    XMLParser().ParseText(text, made.com)
    return made


def table(compounds: Iterable[Any], keys: Iterable[str], T: Any = None, P: float = STANDARD_PRESSURE) -> Any:
    """A pandas frame with a row for each compound and a column for each key, with its unit; and for many temperatures a
    row for each compound and temperature. NaN where a property is not set."""
    import pandas

    compounds, keys = [as_compound(each) for each in compounds], list(keys)
    names = pandas.Index([each.name for each in compounds], name="compound")
    many = hasattr(type(T), "__len__")
    columns = {}
    for key in keys:
        column: list[Any] = []
        for each in compounds:
            values = each.property(key)(T, P)
            column.extend(values if many else [values])
        columns[labelled(key, compounds[0].property(key).unit if compounds else None)] = pandas.array(column, float)
    index = pandas.MultiIndex.from_product([names, T], names=["compound", "T, K"]) if many else names
    return pandas.DataFrame(columns, index=index)
