import ctypes
import gc
import math
import pathlib
import pickle
import re
import threading
from array import array

import pytest

import qscontainers as qs
from qscontainers import _com, interfaces

ROOT = pathlib.Path(__file__).resolve().parents[2]


def members():
    """The members that compiled hosts rely on: class, interface, kind, name, number of arguments and of results."""
    for line in (ROOT / "tests/interfaces.txt").read_text().splitlines():
        found = re.match(r"(\w+) (\w+) (get|put|method) (\w+) -?\d+(.*)", line)
        if found:
            arguments = [word.split(":")[0] for word in found[5].split()]
            yield *found.groups()[:4], arguments.count("in"), arguments.count("out") + arguments.count("result")


def test_every_member_of_every_class_is_there():
    seen = set()
    for name, interface, kind, member, given, returned in members():
        cls, by_interface = getattr(interfaces, name), getattr(interfaces, interface)
        assert issubclass(cls, by_interface)
        taken = f"put_{member}" if kind == "put" and given > 1 else member
        assert hasattr(cls, taken), f"{name}.{taken}"
        found = getattr(by_interface, taken)
        if isinstance(found, _com.Attribute):
            found = found.put if kind == "put" else found.get
        if interface.endswith("Arrays"):  # results are written into buffers that are arguments
            given, returned = given + returned, 0
        plan = found.planned()
        assert (len(plan.arguments), len(plan.results)) == (given, returned), f"{interface}.{taken}"
        seen.add((name, taken))
    assert len(seen) > 400


def live_objects():
    """Whether the modules say that one of their objects is there."""
    gc.collect()
    return any(_com.imported(module, "DllCanUnloadNow", ctypes.c_int)() for module in _com.MODULES.values())


def test_references_are_counted():
    gc.collect()
    before = live_objects()
    water = qs.compound("water")
    some = qs.Compounds([water, "ethanol"])
    kept = [some[0], some.view([0]), water.VP, water.com.UNIFAC1Groups, water.com.query(interfaces.IXMLStore),
            qs.Phases(some).com.Compounds, some.com.GetOffsetH()]
    offsets = interfaces.HostRealArray()
    offsets[:] = [1.0, 2.0]
    some.com.PutOffsetH(offsets)
    for _ in range(3):
        assert list(some.com.GetOffsetH()) == [1.0, 2.0]
    assert live_objects() and kept
    del water, some, kept, offsets
    assert live_objects() == before is False


def test_values_of_every_kind_go_there_and_back():
    container = interfaces.COQSPhase()
    container.RegisterProperties(registry := interfaces.PropertyRegistry())
    number = registry.RegisterProperty("of the test")
    for value in (None, True, False, 7, 2.5, "text with ü and 水", "", 2**40, [1.5, 2.5], [1, 2], [],
                  [1, "a", None, [2.0]]):
        try:
            container.RemoveProperty(number)
        except qs.Error:
            pass
        container.AddProperty(number, value)
        found = container.GetPropertyValue(number)
        assert (list(found) if isinstance(found, _com.HostArray) else found) == value
    assert math.isnan(interfaces.COQSCompound().Evaluate("VP", 0, [300.0], 101.325, 1)[1][0])
    _com.fill_variant(reals := _com.VARIANT(), [1.5, float(_com.NOT_SET)])
    assert _com.variant_value(reals)[0] == 1.5 and math.isnan(_com.variant_value(reals)[1])
    _com.variant_clear(ctypes.byref(reals))
    matrix = interfaces.HostRealMatrix()
    matrix.SetSize(2, 3)
    matrix[1, 2] = 5.0
    assert matrix.shape == (2, 3) and matrix[1, 2] == 5.0 and matrix.tolist()[1][2] == 5.0


def test_strings_attributes_and_names(water):
    com = water.com
    for name in ("ü水\U0001F600", "", "with\0inside", None):
        com.Name = name
        assert com.Name == name
    com.Family = qs.Family.eAlcohol
    assert com.Family is qs.Family.eAlcohol and com.IsWater() in (True, False)
    assert com.VP(dTemp=300.0, dPres=101.325, eExtrapolationMethod=0)[1] == water.VP(300.0)
    for wrong in (lambda: com.VP(300.0), lambda: com.VP(300.0, 1.0, 0, nothing=1), interfaces.IXMLStore):
        with pytest.raises(TypeError):
            wrong()
    for short in ((2, array("d", [300.0]), array("d", [0.0] * 2)), (2, array("d", [300.0] * 2), array("d", [0.0]))):
        with pytest.raises(ValueError, match="has to have 2 elements"):
            com.EvaluateArray("VP", *short[:2], 101.325, 0, short[2], None, None, None)
    with pytest.raises(OverflowError):
        com.Init(qs.DATABASE, 2**32 + 19)
    with pytest.raises(AttributeError):
        interfaces.HostRealMatrix().Rows = 3


def test_failures_are_exceptions(water, tmp_path):
    with pytest.raises(qs.Error, match="IQueryLoader.GetVelIDs: .*purecmp1.idx: ") as caught:
        qs.compound("water", tmp_path)
    assert caught.value.code == 0x80004005 and str(pickle.loads(pickle.dumps(caught.value))) == str(caught.value)
    for call in (lambda: water.com.query(interfaces.IBasicPhase), lambda: qs.from_xml("<Compound"),
                 lambda: water.com.EvaluateArray("VP", -1, None, 101.325, 0, None, None, None, None)):
        with pytest.raises(qs.Error):
            call()
    assert water.VP(300.0)


def test_another_thread_may_not_use_an_object(water):
    wrong = []

    def use():
        for call in (lambda: water.VP(300.0), lambda: water.VP([300.0]), lambda: water.name, lambda: water.TC):
            with pytest.raises(qs.WrongThread):
                call()
            wrong.append(call)
        assert qs.compound("water").VP(300.0)

    thread = threading.Thread(target=use)
    thread.start()
    thread.join()
    assert len(wrong) == 4


def test_what_another_thread_collects_is_released_by_the_owner():
    gc.collect()
    made = [qs.compound("water")]
    owner = made[0].com._owner
    pointers = len(made[0].com._pointers)
    thread = threading.Thread(target=made.clear)
    thread.start()
    thread.join()
    assert len(owner.pending) == pointers and live_objects()
    interfaces.HostRealArray()
    assert not owner.pending and not live_objects()
