"""Writes what the package knows of the interfaces, from the definitions that everything else is made from.

    python generate.py FOLDER        writes interfaces.py, interfaces.pyi and _keys.py there

`interfaces/qscontainers.idl` gives every class, interface, member and enumeration, `props/keys.def` the keys of
properties with their units, and the `classes.def` of both modules the classes that each creates.
"""
from __future__ import annotations

import pathlib
import re
import sys
from dataclasses import dataclass, field
from typing import Iterator, NamedTuple

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNKNOWN_SLOTS, DISPATCH_SLOTS = 3, 7  # of the virtual tables of IUnknown and IDispatch

# What a stub says of the types of arguments and results.
ARGUMENT_TYPES = {"BSTR": "str | None", "double": "float | None", "VARIANT_BOOL": "bool", "VARIANT": "Any",
                  "LPCOLESTR": "str", "IIntegerArrayDisp": "IntegerArrayLike", "IRealArrayDisp": "RealArrayLike"}
RESULT_TYPES = {"BSTR": "str | None", "double": "float | None", "VARIANT_BOOL": "bool", "VARIANT": "Any",
                "IDispatch": "Any", "IUnknown": "Any"}
INTEGERS = ("BYTE", "INT", "LONG", "DWORD", "UINT", "ULONG")

# What makes sequences of the host's arrays.
SEQUENCES = {"HostIntegerArray": "IntegerArray", "HostRealArray": "RealArray", "HostRealMatrix": "RealMatrix"}


class Argument(NamedTuple):
    name: str
    type: str  # as in C, without pointers
    out: bool
    buffer: str  # "[n m]" and "[const n]": elements of the caller's, as many as the arguments n and m multiply to


@dataclass
class Member:
    name: str
    kind: str  # method, get or put
    slot: int
    help: str
    lent: bool  # a reference is passed that is not counted
    arguments: list[Argument] = field(default_factory=list)

    @property
    def python_name(self) -> str:
        """Getters and methods keep their name; a setter that takes a position is a method of its own."""
        return f"put_{self.name}" if self.kind == "put" and len(self.arguments) > 1 else self.name

    @property
    def is_attribute(self) -> bool:
        """Whether it is read or set as an attribute of the object, since it takes no arguments."""
        if self.kind == "get":
            return all(argument.out for argument in self.arguments)
        return self.kind == "put" and len(self.arguments) == 1

    @property
    def signature(self) -> str:
        given = ", ".join(f"{a.name}: {a.type}{a.buffer}" for a in self.arguments if not a.out)
        results = ", ".join(f"{a.name}: {a.type}" for a in self.arguments if a.out)
        return f"{given} -> {results}".strip() if results else given

    def constructor(self, *help: str) -> str:
        """What makes the member in Python."""
        values = [str(self.slot), *map(repr, (self.signature, *help)), *(["lent=True"] if self.lent else [])]
        return f"Method({', '.join(values)})"


@dataclass
class Interface:
    name: str
    base: str
    iid: str
    help: str
    members: list[Member]


class Coclass(NamedTuple):
    name: str
    clsid: str
    help: str
    interfaces: list[str]


FLAGS = r"\[((?:\"[^\"]*\"|[^\]\"])*)\]"  # attributes in brackets; texts may have brackets too


def preprocess(text: str) -> str:
    """Takes comments out and expands the macros, which have arguments and may use each other."""
    text = re.sub(r"//[^\n]*", "", text).replace("\\\n", " ")
    macros: dict[str, tuple[list[str], str]] = {}
    lines = []
    for line in text.split("\n"):
        if defined := re.match(r"#define (\w+)\(([^)]*)\)\s*(.*)", line):
            macros[defined[1]] = ([name.strip() for name in defined[2].split(",")], defined[3])
        else:
            lines.append(line)
    text = "\n".join(lines)
    call = re.compile(r"\b(%s)\(((?:\"[^\"]*\"|[^()\"])*)\)" % "|".join(macros))
    while found := call.search(text):
        names, body = macros[found[1]]
        values = [value.strip() for value in re.findall(r'(?:"[^"]*"|[^,"])+', found[2])]
        if len(values) != len(names):
            raise ValueError(f"{found[0]}: {len(names)} arguments are needed")
        given = dict(zip(names, values))
        body = re.sub(r"\w+", lambda word: given.get(word[0], word[0]), body.replace("##", " ## "))
        text = text[:found.start()] + body.replace(" ## ", "") + text[found.end():]
    return text


def attribute(attributes: str, name: str) -> str:
    found = re.search(rf'\b{name}\((?:"([^"]*)"|([^)]*))\)', attributes)
    return (found[1] or found[2] or "") if found else ""


def parse_arguments(text: str, local: bool) -> Iterator[Argument]:
    counts: list[str] = []  # those of the arguments so far that are numbers of elements
    for argument in re.findall(r"\[[^\]]*\][^,]*", text):
        flags, rest = argument[1:].split("]", 1)
        const, type_name, stars, name = re.fullmatch(r"\s*(const )?\s*(\w+)\s*(\**)\s*(\w+)\s*", rest).groups()
        if local and stars:  # the caller's buffer, whichever way its elements go
            yield Argument(name, type_name, False, f"[const {counts[-1]}]" if const else f"[{' '.join(counts)}]")
        else:
            if type_name == "LONG" and name.startswith("n"):
                counts.append(name)
            yield Argument(name, type_name, "out" in flags, "")


def parse_members(body: str, first_slot: int, local: bool) -> Iterator[Member]:
    pattern = re.compile(rf"(?:{FLAGS}\s*)?HRESULT\s+(\w+)\s*\(([^;]*)\)\s*;")
    for slot, (flags, name, arguments) in enumerate(pattern.findall(body), first_slot):
        kind = "get" if "propget" in flags else "put" if "propput" in flags else "method"
        text = re.sub(r"^(method|property) ", "", attribute(flags, "helpstring"))
        lent = "lent: not to be released" in text or "takes over the reference" in text
        member = Member(name, kind, slot, text, lent, list(parse_arguments(arguments, local)))
        if sorted(member.arguments, key=lambda a: a.out) != member.arguments:
            raise ValueError(f"{name}: an argument follows a result")
        yield member


def parse(text: str) -> tuple[dict[str, Interface], list[Coclass], dict[str, tuple[str, list[tuple[str, int]]]]]:
    text = preprocess(text)
    block = re.compile(FLAGS + r"\s*(interface|coclass)\s+(\w+)\s*(?::\s*(\w+)\s*)?\{(.*?)\}", re.S)
    interfaces: dict[str, Interface] = {}
    classes = []
    for flags, kind, name, base, body in block.findall(text):
        uuid, summary = attribute(flags, "uuid"), attribute(flags, "helpstring")
        if kind == "coclass":
            classes.append(Coclass(name, uuid, summary, re.findall(r"interface\s+(\w+)", body)))
            continue
        inherited = {"IUnknown": UNKNOWN_SLOTS, "IDispatch": DISPATCH_SLOTS}
        first = inherited[base] if base in inherited else interfaces[base].members[-1].slot + 1
        members = list(parse_members(body, first, bool(re.search(r"\blocal\b", flags))))
        if len(members) != body.count("HRESULT"):
            raise ValueError(f"{name}: {body.count('HRESULT')} members, {len(members)} understood")
        interfaces[name] = Interface(name, base, uuid, summary, members)
    enumerations = {}
    for flags, name, body in re.findall(rf"typedef\s*{FLAGS}\s*enum\s+(\w+)\s*\{{(.*?)\}}", text, re.S):
        values = [(key, int(value, 0)) for key, value in re.findall(r"(\w+)\s*=\s*(\w+)", body)]
        enumerations[name] = (attribute(flags, "helpstring"), values)
    return interfaces, classes, enumerations


class Key(NamedTuple):
    name: str
    help: str
    unit: str


def parse_keys(text: str) -> list[Key]:
    return [Key(*row) for row in re.findall(r'^FIXED_KEY(?:_BY_NAME)?\((\w+), "([^"]*)", "([^"]*)"', text, re.M)]


def created_by(definitions: str) -> set[str]:
    return set(re.findall(r"^QS_CLASS\((\w+),", definitions, re.M))


def help_of(member: Member, units: dict[str, str]) -> str:
    unit = units.get(member.name, "-")
    return member.help if unit == "-" else f"{member.help}, {unit}"


def merged_attributes(coclass: Coclass, interfaces: dict[str, Interface]) -> dict[str, tuple[str, str]]:
    """Attributes that one interface of a class reads and another sets: name, and the interfaces that do."""
    readers: dict[str, str] = {}
    setters: dict[str, str] = {}
    for interface in coclass.interfaces:
        for member in interfaces[interface].members:
            if member.is_attribute:
                (readers if member.kind == "get" else setters).setdefault(member.name, interface)
    return {name: (readers[name], setter) for name, setter in setters.items() if readers.get(name, setter) != setter}


def bases_of(coclass: Coclass) -> str:
    return ", ".join([*filter(None, [SEQUENCES.get(coclass.name)]), *coclass.interfaces])


def write_module(interfaces, classes, enumerations, units, modules) -> Iterator[str]:
    yield '"""Every interface, class and enumeration of the modules. Written by generate.py."""'
    yield "from enum import IntEnum\n"
    yield "from ._com import Attribute, IDispatch, IUnknown, Method, both, define"
    yield f"from ._com import {', '.join(SEQUENCES.values())}\n\n"
    for name, (summary, values) in enumerations.items():
        yield f"class {name}(IntEnum):\n    {summary!r}"
        yield from (f"    {key} = {value}" for key, value in values)
        yield "\n"
    for interface in interfaces.values():
        yield f"class {interface.name}({interface.base}):\n    {interface.help!r}\n    _iid_ = {interface.iid!r}"
        attributes: dict[str, dict[str, Member]] = {}
        for member in interface.members:
            if member.is_attribute:
                attributes.setdefault(member.name, {})[member.kind] = member
        for member in interface.members:
            if not member.is_attribute:
                yield f"    {member.python_name} = {member.constructor(help_of(member, units))}"
            elif member.name in attributes:
                pair = attributes.pop(member.name)
                get, put = (pair[kind].constructor() if kind in pair else None for kind in ("get", "put"))
                yield f"    {member.name} = Attribute({get}, {put}, {help_of(member, units)!r})"
        yield "\n"
    for coclass in classes:
        yield f"class {coclass.name}({bases_of(coclass)}):\n    {coclass.help!r}\n    _clsid_ = {coclass.clsid!r}"
        yield f"    _module_ = {modules[coclass.name]!r}"
        for name, (reader, setter) in merged_attributes(coclass, interfaces).items():
            yield f"    {name} = both({reader}.{name}, {setter}.{name})"
        yield "\n"
    yield "define(globals())"


def stub_type(argument: Argument, types: dict[str, str]) -> str:
    if argument.buffer:
        return "Buffer | None"
    return "int | None" if argument.type in INTEGERS else types.get(argument.type, argument.type)


def write_stub(interfaces, classes, enumerations, units, modules) -> Iterator[str]:
    yield "# Written by generate.py."
    yield "from collections.abc import Sequence\nfrom enum import IntEnum\nfrom typing import Any\n"
    yield f"from ._com import IDispatch, IUnknown, {', '.join(SEQUENCES.values())}\n"
    yield "Buffer = Any  # of doubles or 32-bit integers"
    yield "IntegerArrayLike = IIntegerArrayDisp | Sequence[int] | Buffer"
    yield "RealArrayLike = IRealArrayDisp | Sequence[float] | Buffer\n"
    # What is returned has the class of which an interface is the default.
    results_in_python = {**{coclass.interfaces[0]: coclass.name for coclass in classes}, **RESULT_TYPES}
    for name, (summary, values) in enumerations.items():
        yield f"class {name}(IntEnum):\n    {summary!r}"
        yield from (f"    {key} = {value}" for key, value in values)
    for interface in interfaces.values():
        yield f"class {interface.name}({interface.base}):\n    {interface.help!r}"
        for member in interface.members:
            results = [stub_type(a, results_in_python) for a in member.arguments if a.out]
            result = "bool" if not results else results[0] if len(results) == 1 else f"tuple[{', '.join(results)}]"
            given = "".join(f", {a.name}: {stub_type(a, ARGUMENT_TYPES)}" for a in member.arguments if not a.out)
            if member.is_attribute and member.kind == "put":
                readable = any(other.name == member.name and other.kind == "get" for other in interface.members)
                if not readable:
                    yield f"    @property\n    def {member.name}(self) -> Any: ..."
                yield f"    @{member.name}.setter\n    def {member.name}(self{given}) -> None: ..."
                continue
            if member.is_attribute:
                yield "    @property"
            yield f"    def {member.python_name}(self{given}) -> {result}: {help_of(member, units)!r}"
    for coclass in classes:
        yield f"class {coclass.name}({bases_of(coclass)}):\n    {coclass.help!r}"
        yield "    def __init__(self) -> None: ..."
        for name in merged_attributes(coclass, interfaces):
            yield f"    {name}: Any"


def write_keys(keys: list[Key]) -> Iterator[str]:
    yield '"""The keys of a compound\'s properties. Written by generate.py."""'
    yield "from ._property import Key\n\n\nclass Keys:"
    for key in keys:
        yield f"    {key.name} = Key({key.help!r}, {key.unit!r})"


def main(folder: pathlib.Path) -> None:
    definitions = parse((ROOT / "interfaces/qscontainers.idl").read_text())
    keys = parse_keys((ROOT / "props/keys.def").read_text())
    units = {key.name: key.unit for key in keys}
    modules = {name: module for module, path in (("qscontainers", "module"), ("qshostkit", "hostkit"))
               for name in created_by((ROOT / path / "classes.def").read_text())}
    for name, lines in (("interfaces.py", write_module(*definitions, units, modules)),
                        ("interfaces.pyi", write_stub(*definitions, units, modules)),
                        ("_keys.py", write_keys(keys))):
        (folder / name).write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
