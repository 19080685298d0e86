"""Objects of the modules, called over their virtual tables: what the classes of `interfaces` are made of.

A number that is not set is None, and so is a string or an object that is not there. A method without results returns
whether it succeeded (S_OK; False is S_FALSE), a method with one result that result, with several a tuple of them.
Failures raise `Error`. An object belongs to the thread that made it.
"""
from __future__ import annotations

import ctypes
import math
import os
import sys
import threading
from collections import deque
from ctypes import byref, c_double, c_int, c_short, c_ubyte, c_uint, c_void_p
from enum import IntEnum
from types import MethodType
from typing import Any, Callable, NamedTuple, Sequence

NOT_SET = -32767
S_OK = 0
INPROC_SERVER, MULTIPLE_USE = 1, 1
FOLDER = os.path.dirname(os.path.abspath(__file__))

CODES = {
    0x80004001: ("E_NOTIMPL", "not provided"),
    0x80004002: ("E_NOINTERFACE", "the object does not have the interface"),
    0x80004003: ("E_POINTER", "a result has no place"),
    0x80004005: ("E_FAIL", "the call failed"),
    0x8000000B: ("E_BOUNDS", "out of bounds"),
    0x8000FFFF: ("E_UNEXPECTED", "unexpected"),
    0x80070002: ("ERROR_FILE_NOT_FOUND", "the file is not there"),
    0x80070003: ("ERROR_PATH_NOT_FOUND", "the directory is not there"),
    0x8007000E: ("E_OUTOFMEMORY", "out of memory"),
    0x80070057: ("E_INVALIDARG", "an argument is not valid"),
    0x80020005: ("DISP_E_TYPEMISMATCH", "a value has the wrong type"),
    0x8002000A: ("DISP_E_OVERFLOW", "a number is too large"),
    0x8002000B: ("DISP_E_BADINDEX", "there is no such position"),
    0x80040154: ("REGDB_E_CLASSNOTREG", "the class is not registered"),
}


class Error(RuntimeError):
    """A call that failed: `code` is its result, `member` what was called, `text` what the module says of it."""

    def __init__(self, member: str, code: int, text: str = "") -> None:
        super().__init__(member, code, text)
        self.member, self.code, self.text = member, code & 0xFFFFFFFF, text

    def __str__(self) -> str:
        name, meaning = CODES.get(self.code, (f"0x{self.code:08X}", "the call failed"))
        return f"{self.member}: {self.text or meaning} ({name})"


class WrongThread(RuntimeError):
    """An object was used by a thread that did not make it."""


# The component model: the system's on Windows, elsewhere the runtime that the modules share.
def loaded(name: str) -> Any:
    """A module of the package; its file has the ending of the system, and on Linux the number of a version."""
    folder = os.path.join(FOLDER, "native")
    file = next(file for file in os.listdir(folder) if file.startswith((f"{name}.dll", f"lib{name}.so")))
    return load(os.path.join(folder, file))


if sys.platform == "win32":
    FUNCTION, load = ctypes.WINFUNCTYPE, ctypes.WinDLL
    ole, automation = load("ole32"), load("oleaut32")
else:
    FUNCTION, load = ctypes.CFUNCTYPE, ctypes.CDLL
    ole = automation = loaded("qsplatform")
MODULES = {name: loaded(name) for name in ("qscontainers", "qshostkit")}


def imported(library: Any, name: str, result: Any, *arguments: Any) -> Any:
    function = library[name]  # a new object each time, whose types nobody else changes
    function.restype, function.argtypes = result, arguments
    return function


class VARIANT(ctypes.Structure):
    _fields_ = [("type", ctypes.c_ushort), ("reserved", ctypes.c_ushort * 3), ("value", c_void_p), ("more", c_void_p)]


class BOUND(ctypes.Structure):
    _fields_ = [("elements", c_uint), ("lowest", c_int)]


co_initialize = imported(ole, "CoInitialize", c_int, c_void_p)
co_create_instance = imported(ole, "CoCreateInstance", c_int, ctypes.c_char_p, c_void_p, c_uint, ctypes.c_char_p,
                              c_void_p)
co_register_class = imported(ole, "CoRegisterClassObject", c_int, ctypes.c_char_p, c_void_p, c_uint, c_uint, c_void_p)
sys_alloc_string = imported(automation, "SysAllocStringLen", c_void_p, ctypes.c_char_p, c_uint)
sys_free_string = imported(automation, "SysFreeString", None, c_void_p)
sys_string_length = imported(automation, "SysStringByteLen", c_uint, c_void_p)
variant_clear = imported(automation, "VariantClear", c_int, c_void_p)
array_create = imported(automation, "SafeArrayCreate", c_void_p, ctypes.c_ushort, c_uint, c_void_p)
array_dimensions = imported(automation, "SafeArrayGetDim", c_uint, c_void_p)
array_lowest = imported(automation, "SafeArrayGetLBound", c_int, c_void_p, c_uint, c_void_p)
array_highest = imported(automation, "SafeArrayGetUBound", c_int, c_void_p, c_uint, c_void_p)
array_access = imported(automation, "SafeArrayAccessData", c_int, c_void_p, c_void_p)
array_unaccess = imported(automation, "SafeArrayUnaccessData", c_int, c_void_p)

query_interface = FUNCTION(c_int, c_void_p, ctypes.c_char_p, c_void_p)
count_reference = FUNCTION(c_uint, c_void_p)


def function_at(pointer: int, slot: int, prototype: Any) -> Any:
    table = c_void_p.from_address(pointer).value
    return prototype(c_void_p.from_address(table + slot * ctypes.sizeof(c_void_p)).value)  # type: ignore[operator]


def add_reference(pointer: int) -> None:
    function_at(pointer, 1, count_reference)(pointer)


def release(pointer: int) -> None:
    function_at(pointer, 2, count_reference)(pointer)


def queried(pointer: int, interface: Any) -> int | None:
    """A counted reference to another interface of an object, or None."""
    found = c_void_p()
    hr = function_at(pointer, 0, query_interface)(pointer, guid(interface._iid_), byref(found))
    return found.value if hr >= 0 else None


def guid(text: str) -> bytes:
    data = bytes.fromhex(text.replace("-", ""))
    return data[3::-1] + data[5:3:-1] + data[7:5:-1] + data[8:]


def check(hr: int, member: str) -> None:
    if hr < 0:
        raise Error(member, hr)


class Owner:
    """A thread and its apartment: the objects that it made, and references that others left to it to release."""

    registered = False

    def __init__(self) -> None:
        self.pending: deque[int] = deque()
        self.ident = threading.get_ident()
        co_initialize(None)  # a thread that has an apartment of the other kind keeps it
        # Elsewhere than on Windows, where they belong to an apartment, class objects are those of the process.
        if sys.platform == "win32" or not Owner.registered:
            Owner.registered = True
            for cls in CLASSES:
                register_class(cls)

    def release_pending(self) -> None:
        while self.pending:
            release(self.pending.popleft())


class Here(threading.local):
    """`owner` is the thread that runs."""

    def __init__(self) -> None:
        self.owner = Owner()


def register_class(cls: type[IUnknown]) -> None:
    get_class = imported(MODULES[cls._module_], "DllGetClassObject", c_int, ctypes.c_char_p, ctypes.c_char_p, c_void_p)
    clsid, factory, cookie = guid(cls._clsid_), c_void_p(), c_uint()
    check(get_class(clsid, guid(IUnknown._iid_), byref(factory)), cls.__name__)
    hr = co_register_class(clsid, factory, INPROC_SERVER, MULTIPLE_USE, byref(cookie))
    release(factory.value)  # type: ignore[arg-type]
    check(hr, cls.__name__)


class IUnknown:
    """An object of a module, known by one or more of its interfaces."""

    _iid_ = "00000000-0000-0000-C000-000000000046"
    _clsid_ = _module_ = ""
    _default_: type[IUnknown]

    def __init_subclass__(cls) -> None:
        cls._default_ = next(base for base in cls.__mro__ if "_iid_" in base.__dict__)

    def __init__(self) -> None:
        cls = type(self)
        if not cls._clsid_:
            raise TypeError(f"{cls.__name__} is an interface; objects are made of classes")
        here.owner.release_pending()
        pointer = c_void_p()
        clsid = guid(cls._clsid_)
        check(co_create_instance(clsid, None, INPROC_SERVER, guid(cls._default_._iid_), byref(pointer)), cls.__name__)
        self._take(pointer.value)  # type: ignore[arg-type]

    def _take(self, pointer: int) -> None:
        """Owns a reference that is counted already."""
        self._owner = here.owner
        self._pointers: dict[type, int] = {type(self)._default_: pointer}

    @classmethod
    def _adopt(cls, pointer: int) -> Any:
        adopted = cls.__new__(cls)
        adopted._take(pointer)
        return adopted

    def _pointer(self, interface: type) -> int:
        owner = self._owner
        if owner is not here.owner:
            raise WrongThread(f"this {type(self).__name__} belongs to the thread that made it")
        if owner.pending:
            owner.release_pending()
        pointer = self._pointers.get(interface)
        if pointer is None:
            pointer = queried(next(iter(self._pointers.values())), interface)
            if not pointer:
                raise Error(f"{type(self).__name__} as {interface.__name__}", 0x80004002)
            self._pointers[interface] = pointer
        return pointer

    def query(self, interface: type) -> Any:
        """The same object by one interface, or by a class; raises Error where it does not have it."""
        pointer = self._pointer(interface._default_)  # type: ignore[attr-defined]
        add_reference(pointer)
        return interface._adopt(pointer)  # type: ignore[attr-defined]

    def __eq__(self, other: object) -> bool:
        return self is other or isinstance(other, IUnknown) and self._pointer(IUnknown) == other._pointer(IUnknown)

    def __hash__(self) -> int:
        return hash(self._pointer(IUnknown))

    def __reduce__(self) -> Any:
        raise TypeError(f"{type(self).__name__} cannot be pickled")

    def __del__(self) -> None:
        pointers = self.__dict__.get("_pointers")
        if not pointers:
            return
        owner = self._owner
        # A thread that ends has lost what was its own in `here` before it lets go of its last objects.
        if owner is getattr(here, "owner", owner) and owner.ident == threading.get_ident():
            for pointer in pointers.values():
                release(pointer)
        else:
            owner.pending.extend(pointers.values())


IUnknown._default_ = IUnknown


class IDispatch(IUnknown):
    """An object of any class."""

    _iid_ = "00020400-0000-0000-C000-000000000046"


CLASSES: list[type[IUnknown]] = []
CLASS_OF: dict[type, type[IUnknown]] = {}  # by default interface
TYPES: dict[str, Any] = {}  # interfaces and enumerations by name
here: Here  # made when the classes are known


def define(names: dict[str, Any]) -> None:
    """Takes over the interfaces, classes and enumerations of a module that generate.py wrote."""
    for name, value in names.items():
        if isinstance(value, type) and issubclass(value, (IUnknown, IntEnum)):
            TYPES[name] = value
            if issubclass(value, IUnknown) and value._clsid_:
                CLASSES.append(value)
                CLASS_OF.setdefault(value._default_, value)
    global here
    here = Here()


def wrapped(pointer: int | None, interface: type) -> Any:
    """An object for a reference that is counted already: of the class that has the interface, where it is known."""
    if not pointer:
        return None
    if interface in (IUnknown, IDispatch):
        for cls in CLASSES:
            if found := queried(pointer, cls._default_):
                release(pointer)
                return cls._adopt(found)
    return CLASS_OF.get(interface, interface)._adopt(pointer)  # type: ignore[attr-defined]


# Values to and from the modules. What a call allocates goes on a list of functions that free it.

Cleanup = list[tuple[Callable[[Any], Any], Any]]


def new_string(text: str) -> int:
    data = text.encode("utf-16-le", "surrogatepass")
    string = sys_alloc_string(data, len(data) // 2)
    if not string:
        raise MemoryError
    return string


def text_of(string: int | None) -> str | None:
    if not string:
        return None
    return ctypes.string_at(string, sys_string_length(string)).decode("utf-16-le", "surrogatepass")


def taken_text(string: int | None) -> str | None:
    text = text_of(string)
    sys_free_string(string)
    return text


def object_of(value: Any) -> Any:
    """The object of a module behind what people use: a Compound, Compounds, Phase or Phases has it as `com`."""
    return getattr(value, "com", value)


def host_array(values: Any, interface: type) -> Any:
    """An array of the host kit's, of integers where the interface wants them and of reals otherwise."""
    cls = TYPES["HostIntegerArray" if interface.__name__ == "IIntegerArrayDisp" else "HostRealArray"]
    made = cls()
    made[:] = values
    return made


class PyBuffer(ctypes.Structure):
    _fields_ = [("address", c_void_p), ("exporter", ctypes.py_object), ("bytes", ctypes.c_ssize_t),
                ("item_size", ctypes.c_ssize_t), ("read_only", c_int), ("dimensions", c_int),
                ("format", ctypes.c_char_p), ("shape", c_void_p), ("strides", c_void_p), ("suboffsets", c_void_p),
                ("internal", c_void_p)]


get_buffer = ctypes.PYFUNCTYPE(c_int, ctypes.py_object, c_void_p, c_int)(("PyObject_GetBuffer", ctypes.pythonapi))
release_buffer = ctypes.PYFUNCTYPE(None, c_void_p)(("PyBuffer_Release", ctypes.pythonapi))
WRITABLE, FORMAT, CONTIGUOUS = 1, 4, 0x38
FORMATS = {"double": (b"d", b"<d", b"=d", b"@d"), "LONG": (b"i", b"<i", b"=i", b"@i", b"l", b"<l", b"=l")}


class Elements:
    """The elements of an object with a buffer, where they are: an address, which holds until `close`."""

    __slots__ = ("buffer", "address", "count")

    def __init__(self, values: Any, type_name: str = "double", writable: bool = False) -> None:
        self.buffer = PyBuffer()
        get_buffer(values, byref(self.buffer), FORMAT | CONTIGUOUS | (WRITABLE if writable else 0))
        size = 8 if type_name == "double" else 4
        if self.buffer.format not in FORMATS[type_name] or self.buffer.item_size != size:
            self.close()
            raise TypeError(f"a buffer of {'doubles' if size == 8 else '32-bit integers'} is needed")
        self.address, self.count = self.buffer.address, self.buffer.bytes // size

    def close(self) -> None:
        release_buffer(byref(self.buffer))


def closed_elements(values: Any, type_name: str, writable: bool, cleanup: Cleanup) -> int | None:
    if values is None:
        return None
    elements = Elements(values, type_name, writable)
    cleanup.append((Elements.close, elements))
    return elements.address


VT_EMPTY, VT_I4, VT_R8, VT_BSTR, VT_DISPATCH, VT_BOOL, VT_VARIANT, VT_UNKNOWN = 0, 3, 5, 8, 9, 11, 12, 13
VT_ARRAY = 0x2000
VARIANT_NUMBERS: dict[int, Any] = {
    2: c_short, VT_I4: c_int, 4: ctypes.c_float, VT_R8: c_double, 10: c_int, VT_BOOL: c_short, 16: ctypes.c_byte,
    17: c_ubyte, 18: ctypes.c_ushort, 19: c_uint, 20: ctypes.c_int64, 21: ctypes.c_uint64, 22: c_int, 23: c_uint}


def fill_variant(variant: VARIANT, value: Any) -> None:
    address = ctypes.addressof(variant) + 8
    value = object_of(value)
    if value is None:
        variant.type = VT_EMPTY
    elif isinstance(value, bool):
        variant.type, c_short.from_address(address).value = VT_BOOL, -value
    elif isinstance(value, int) and -2**31 <= value < 2**31:
        variant.type, c_int.from_address(address).value = VT_I4, value
    elif isinstance(value, (int, float)):
        variant.type, c_double.from_address(address).value = VT_R8, value
    elif isinstance(value, str):
        variant.type, variant.value = VT_BSTR, new_string(value)
    elif isinstance(value, IUnknown):
        pointer = value._pointer(IDispatch)
        add_reference(pointer)
        variant.type, variant.value = VT_DISPATCH, pointer
    else:
        fill_array(variant, list(value))


def fill_array(variant: VARIANT, values: list[Any]) -> None:
    if all(isinstance(value, int) and not isinstance(value, bool) for value in values):
        kind = VT_I4
    elif all(isinstance(value, (int, float)) and not isinstance(value, bool) for value in values):
        kind = VT_R8
    else:
        kind = VT_VARIANT
    made = array_create(kind, 1, byref(BOUND(len(values), 0)))
    if not made:
        raise MemoryError
    variant.type, variant.value = VT_ARRAY | kind, made
    data = c_void_p()
    check(array_access(made, byref(data)), "VARIANT")
    try:
        element: Any = VARIANT if kind == VT_VARIANT else VARIANT_NUMBERS[kind]
        elements = (element * len(values)).from_address(data.value) if values else ()
        for i, value in enumerate(values):
            if kind == VT_VARIANT:
                fill_variant(elements[i], value)
            else:
                elements[i] = value
    finally:
        array_unaccess(made)


def variant_value(variant: VARIANT) -> Any:
    """What a variant holds, which it keeps."""
    if variant.type & VT_ARRAY:
        return array_values(variant.value, variant.type & ~VT_ARRAY)
    if variant.type == VT_BSTR:
        return text_of(variant.value)
    if variant.type in (VT_DISPATCH, VT_UNKNOWN):
        if variant.value:
            add_reference(variant.value)
        return wrapped(variant.value, IDispatch)
    if variant.type not in VARIANT_NUMBERS:
        return None
    number = VARIANT_NUMBERS[variant.type].from_address(ctypes.addressof(variant) + 8).value
    if variant.type == VT_BOOL:
        return bool(number)
    return None if number == NOT_SET else number


def array_values(pointer: int | None, kind: int) -> list[Any]:
    """A list, or lists in a list for each further dimension."""
    counts = []
    for dimension in range(1, array_dimensions(pointer) + 1):
        lowest, highest = c_int(), c_int()
        check(array_lowest(pointer, dimension, byref(lowest)), "VARIANT")
        check(array_highest(pointer, dimension, byref(highest)), "VARIANT")
        counts.append(highest.value - lowest.value + 1)
    if not math.prod(counts):
        return []
    data = c_void_p()
    check(array_access(pointer, byref(data)), "VARIANT")
    try:
        element: Any = {VT_VARIANT: VARIANT, VT_BSTR: c_void_p}.get(kind) or VARIANT_NUMBERS[kind]
        flat: list[Any] = list((element * math.prod(counts)).from_address(data.value or 0))
        if kind == VT_VARIANT:
            flat = [math.nan if value.type == VT_R8 and number is None else number
                    for value, number in ((value, variant_value(value)) for value in flat)]
        elif kind == VT_BSTR:
            flat = [text_of(value) for value in flat]
        elif kind == VT_R8:
            flat = [math.nan if value == NOT_SET else value for value in flat]
    finally:
        array_unaccess(pointer)

    def nested(first: int, step: int, counts: list[int]) -> list[Any]:
        if not counts:
            return flat[first]
        return [nested(first + i * step, step * counts[0], counts[1:]) for i in range(counts[0])]

    return nested(0, 1, counts)


# Members.

NUMBERS = {"double": c_double, "LONG": c_int, "INT": c_int, "ULONG": c_uint, "UINT": c_uint, "DWORD": c_uint,
           "BYTE": c_ubyte, "VARIANT_BOOL": c_short}


def argument_of(type_name: str, lent: bool) -> tuple[Any, Callable[[Any, Cleanup], Any]]:
    """The type of an argument in C, and what makes it of a value."""
    if type_name.endswith("]"):
        element, rest = type_name.split("[")
        return c_void_p, lambda value, cleanup: closed_elements(value, element, not rest.startswith("const"), cleanup)
    if type_name == "BSTR":
        def string(value: str | None, cleanup: Cleanup) -> int | None:
            if value is None:
                return None
            made = new_string(value)
            cleanup.append((sys_free_string, made))
            return made
        return c_void_p, string
    if type_name == "LPCOLESTR":
        return ctypes.c_char_p, lambda value, cleanup: None if value is None else value.encode("utf-16-le") + b"\0\0"
    if type_name == "VARIANT":
        def variant(value: Any, cleanup: Cleanup) -> VARIANT:
            made = VARIANT()
            cleanup.append((variant_clear, byref(made)))
            fill_variant(made, value)
            return made
        return VARIANT, variant
    if type_name == "VARIANT_BOOL":
        return c_short, lambda value, cleanup: -bool(value)
    if type_name == "double":
        return c_double, lambda value, cleanup: NOT_SET if value is None else value
    named = TYPES.get(type_name, IUnknown)
    if type_name in NUMBERS or issubclass(named, IntEnum):
        kind: Any = NUMBERS.get(type_name, c_int)

        def integer(value: int | None, cleanup: Cleanup) -> Any:
            if value is None:
                return NOT_SET
            if kind(value).value != value:
                raise OverflowError(f"{value} is no {type_name}")
            return value
        return kind, integer

    def pointer(value: Any, cleanup: Cleanup) -> int | None:
        value = object_of(value)
        if value is None:
            return None
        if not isinstance(value, IUnknown):
            value = host_array(value, named)
        found = value._pointer(named)
        add_reference(found)  # for the call, or for the object that takes it over
        if not lent:
            cleanup.append((release, found))
        return found
    return c_void_p, pointer


def result_of(type_name: str, lent: bool) -> tuple[Any, Callable[[Any], Any]]:
    """The type of a result in C, and what makes a value of it."""
    if type_name == "BSTR":
        return c_void_p, lambda result: taken_text(result.value)
    if type_name == "VARIANT":
        def variant(result: VARIANT) -> Any:
            try:
                return variant_value(result)
            finally:
                variant_clear(byref(result))
        return VARIANT, variant
    if type_name == "VARIANT_BOOL":
        return c_short, lambda result: bool(result.value)
    if type_name in NUMBERS:
        return NUMBERS[type_name], lambda result: None if result.value == NOT_SET else result.value
    named = TYPES.get(type_name, IUnknown)
    if issubclass(named, IntEnum):
        known = {int(member): member for member in named}
        return c_int, lambda result: known.get(result.value, None if result.value == NOT_SET else result.value)

    def pointer(result: Any) -> Any:
        if lent and result.value:
            add_reference(result.value)
        return wrapped(result.value, named)
    return c_void_p, pointer


class Plan(NamedTuple):
    prototype: Any
    names: list[str]
    arguments: list[Callable[[Any, Cleanup], Any]]
    result_types: list[Any]
    results: list[Callable[[Any], Any]]
    buffers: list[tuple[int, list[int]]]  # positions of buffers, and those of the arguments that say how large they are


class Method:
    """A member of an interface, called over the virtual table of the object. `signature` has its arguments, each with
    its type, and behind an arrow its results."""

    def __init__(self, slot: int, signature: str = "", help: str = "", lent: bool = False) -> None:
        self.slot, self.signature, self.lent = slot, signature, lent
        self.__doc__ = f"{help}\n\n({signature})"
        self.plan: Plan | None = None
        self.functions: dict[int, Any] = {}  # by virtual table

    def __set_name__(self, interface: type, name: str) -> None:
        self.interface, self.__name__ = interface, name
        self.__qualname__ = f"{interface.__name__}.{name}"

    def __get__(self, instance: Any, cls: type | None = None) -> Any:
        return self if instance is None else MethodType(self, instance)

    def planned(self) -> Plan:
        given, returned = ([each.strip().split(": ") for each in part.split(",") if each.strip()]
                           for part in self.signature.partition("->")[::2])
        names, kinds = [name for name, _ in given], [kind for _, kind in given]
        converted = [argument_of(kind, self.lent) for kind in kinds]
        results = [result_of(kind, self.lent) for _, kind in returned]
        prototype = FUNCTION(c_int, c_void_p, *(kind for kind, _ in converted), *(c_void_p for _ in results))
        buffers = [(i, [names.index(name) for name in kind[:-1].split("[")[1].split() if name != "const"])
                   for i, kind in enumerate(kinds) if kind.endswith("]")]
        return Plan(prototype, names, [convert for _, convert in converted], [kind for kind, _ in results],
                    [convert for _, convert in results], buffers)

    def function(self, pointer: int) -> Any:
        """What is called on an object; the objects of a class share it."""
        table = c_void_p.from_address(pointer).value or 0
        function = self.functions.get(table)
        if function is None:
            self.plan = self.plan or self.planned()
            function = self.functions[table] = function_at(pointer, self.slot, self.plan.prototype)
        return function

    def __call__(self, instance: IUnknown, *values: Any, **named: Any) -> Any:
        pointer = instance._pointer(self.interface)
        function = self.function(pointer)
        plan = self.plan
        assert plan
        if named:
            values += tuple(named.pop(name) for name in plan.names[len(values):] if name in named)
        if named or len(values) != len(plan.arguments):
            raise TypeError(f"{self.__qualname__} takes ({', '.join(plan.names)})")
        for i, counts in plan.buffers:
            needed = math.prod(values[count] for count in counts)
            if values[i] is not None and memoryview(values[i]).nbytes < needed * memoryview(values[i]).itemsize:
                raise ValueError(f"{plan.names[i]} has to have {needed} elements")
        cleanup: Cleanup = []
        results = [kind() for kind in plan.result_types]
        try:
            given = [convert(value, cleanup) for convert, value in zip(plan.arguments, values)]
            hr = function(pointer, *given, *map(byref, results))
            if hr < 0:
                raise Error(self.__qualname__, hr, reason_of(hr, instance, self))
        finally:
            for free, what in cleanup:
                free(what)
        if not results:
            return hr == S_OK
        converted = [convert(result) for convert, result in zip(plan.results, results)]
        return converted[0] if len(converted) == 1 else tuple(converted)


def reason_of(code: int, instance: IUnknown, failed: Method) -> str:
    """What an object says of the last failure of the thread, where that is the one and the object says it."""
    interface = TYPES.get("ILastError")
    if not interface or failed.interface is interface:
        return ""
    try:
        last, _, text = interface.GetLastError(instance)
    except Error:
        return ""
    return text if last == code and text else ""


class Attribute:
    """A member that is read or set without further arguments."""

    def __init__(self, get: Method | None, put: Method | None, help: str = "") -> None:
        self.get, self.put, self.__doc__ = get, put, help

    def __set_name__(self, interface: type, name: str) -> None:
        for method, verb in ((self.get, "get"), (self.put, "put")):
            if method and not hasattr(method, "interface"):
                method.__set_name__(interface, f"{verb}_{name}")

    def __get__(self, instance: Any, cls: type | None = None) -> Any:
        if instance is None:
            return self
        if not self.get:
            raise AttributeError("this can only be set")
        return self.get(instance)

    def __set__(self, instance: Any, value: Any) -> None:
        if not self.put:
            raise AttributeError("this can only be read")
        self.put(instance, value)


def both(reader: Attribute, setter: Attribute) -> Attribute:
    """One attribute of two interfaces."""
    return Attribute(reader.get, setter.put, reader.__doc__ or "")


# Arrays of the host kit, as sequences. Their interfaces are those of the classes that derive from these.


class HostArray(Sequence[Any]):
    Size: Any
    IthValue: Any
    put_IthValue: Any

    def __len__(self) -> int:
        return self.Size

    def __getitem__(self, position: Any) -> Any:
        if isinstance(position, slice):
            return [self.IthValue(i) for i in range(*position.indices(len(self)))]
        return self.IthValue(range(len(self))[position])

    def __setitem__(self, position: Any, value: Any) -> None:
        if not isinstance(position, slice):
            self.put_IthValue(range(len(self))[position], value)
            return
        if position != slice(None):
            raise TypeError("all elements or one are set")
        values = list(value)
        self.Size = len(values)
        for i, element in enumerate(values):
            self.put_IthValue(i, element)

    def __repr__(self) -> str:
        return f"{type(self).__name__}({list(self)})"


class IntegerArray(HostArray):
    """Integers; `a[:] = values` sets all of them."""


class RealArray(HostArray):
    """Reals; `a[:] = values` sets all of them."""


class RealMatrix:
    """Reals, by row and column: `m[i, j]`."""

    Rows: Any
    Columns: Any
    Value: Any
    put_Value: Any

    @property
    def shape(self) -> tuple[int, int]:
        return self.Rows, self.Columns

    def __getitem__(self, place: tuple[int, int]) -> float | None:
        return self.Value(*place)

    def __setitem__(self, place: tuple[int, int], value: float | None) -> None:
        self.put_Value(*place, value)

    def tolist(self) -> list[list[float | None]]:
        return [[self.Value(i, j) for j in range(self.Columns)] for i in range(self.Rows)]
