import math
import pickle
import warnings
from array import array

import pytest

import qscontainers as qs

numpy = pytest.importorskip("numpy")


@pytest.mark.parametrize("which", ["water", "WATER", "Oxidane", "7732-18-5", 19])
def test_found(which):
    found = qs.compound(which)
    assert (found.name, found.number, found.cas, found.formula) == ("Water", 19, "7732-18-5", "H2O")


@pytest.mark.parametrize("which, text", [("watr", "did you mean Water"), (999, "999"), ("", "no compound")])
def test_not_found(which, text):
    with pytest.raises(qs.NotFound, match=text):
        qs.compound(which)


@pytest.mark.parametrize("text, names", [
    ("alcohol", {"Ethanol", "Methanol", "1-Propanol"}), ("H2O", {"Water"}), ("7732-18", {"Water"}), ("nothing", set())])
def test_find(text, names):
    found = {each.name for each in qs.find(text)}
    assert found >= names and ("Water" in found) == ("Water" in names)


def test_all_compounds_are_those_of_the_source():
    assert len(qs.all_compounds()) == len({each.number for each in qs.all_compounds()}) == 54


# DIPPR 101 with the bundled coefficients: exp(A + B/T + C ln T + D T^E), in kPa.
def pressure(T):
    A, B, C, D, E = 67.647264721, -7295.586, -7.442448, 4.2881e-06, 2.0
    return math.exp(A + B / T + C * math.log(T) + D * T**E)


TEMPERATURES = [263.15, 298.15, 373.15, 640.0]


@pytest.mark.parametrize("many", [
    list, tuple, lambda T: array("d", T), numpy.array, lambda T: numpy.array(T).reshape(2, 2),
    lambda T: numpy.repeat(T, 2)[::2], lambda T: memoryview(array("d", T)).toreadonly(),
    lambda T: numpy.frombuffer(array("d", T).tobytes())])
def test_each_value_of_many(water, many):
    given = many(TEMPERATURES)
    values = water.VP(given)
    assert numpy.shape(values) == numpy.shape(given)
    assert isinstance(values, numpy.ndarray if isinstance(given, numpy.ndarray) else array)
    assert numpy.ravel(values) == pytest.approx([pressure(T) for T in TEMPERATURES], rel=1e-13)
    assert list(numpy.ravel(values)) == [water.VP(T) for T in TEMPERATURES]


@pytest.mark.parametrize("T", [300, 300.0, numpy.float64(300), numpy.float32(300), numpy.int64(300)])
def test_one_value(water, T):
    assert type(water.VP(T)) is float and water.VP(T) == pytest.approx(pressure(300), rel=1e-13)


def test_out(water):
    for out in (array("d", [0] * 4), numpy.zeros(4), given := numpy.array(TEMPERATURES)):
        assert water.VP(given if out is given else TEMPERATURES, out=out) is out
        assert list(out) == [water.VP(T) for T in TEMPERATURES]
    frozen = numpy.zeros(4)
    frozen.flags.writeable = False
    for wrong in (array("d", [0] * 3), numpy.zeros(4, "f4"), numpy.zeros(8)[::2], frozen, [0.0] * 4):
        with pytest.raises((ValueError, BufferError)):
            water.VP(TEMPERATURES, out=wrong)


@pytest.mark.parametrize("policy, there", [
    (None, False), (qs.Policy.eNotSetOutside, False), (qs.Policy.eValueAtLimit, True)])
def test_outside(water, policy, there):
    assert water.VP(200.0, policy=policy) == (water.VP(263.15) if there else None)
    many = water.VP([200.0, 300.0], policy=policy)
    assert math.isnan(many[0]) != there and many[1] == water.VP(300.0)
    status = water.VP.status(200.0, policy=policy)
    assert qs.Status.BELOW in status and (qs.Status.NOT_SET in status) != there
    assert list(water.VP.status([300.0])) == [qs.Status.INSIDE]


def test_outside_complains_as_the_options_say(water, options):
    options.policy = qs.Policy.eValueAtLimit
    calls = [lambda: water.VP(200.0), lambda: water.VP([300.0, 200.0]), lambda: water.VP.derivative(200.0),
             lambda: water.VP.integral(300.0, 200.0), lambda: qs.Compounds([3, water]).evaluate("VP", [300.0, 200.0])]
    for call in calls:
        assert call() is not None
        options.outside = "raise"
        with pytest.raises(qs.OutOfRange, match="VP of Water at 200 K"):
            call()
        options.outside = "warn"
        with pytest.warns(qs.OutOfRangeWarning, match="VP of Water at 200 K") as caught:
            call()
        assert caught[0].filename == __file__
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            water.VP(300.0)
        options.outside = "allow"
    with pytest.raises(ValueError):
        options.outside = "ignore"


def test_calculus(water):
    T, h = 350.0, 1e-3
    slope = (water.VP(T + h) - water.VP(T - h)) / (2 * h)
    assert water.VP.derivative(T) == pytest.approx(slope, rel=1e-8)
    assert water.VP.derivative([T], order=2)[0] == pytest.approx(
        (water.VP.derivative(T + h) - water.VP.derivative(T - h)) / (2 * h), rel=1e-7)
    middles = numpy.linspace(300, 400, 20001)[:-1] + 100 / 40000
    assert water.VP.integral(300.0, 400.0) == pytest.approx(water.VP(middles).mean() * 100, rel=1e-7)
    assert water.VP.integral(300.0, [300.0, 400.0], over_T=True)[1] == pytest.approx(
        (water.VP(middles) / middles).mean() * 100)
    assert water.VP(water.VP.solve(101.325)) == pytest.approx(101.325, rel=1e-12)
    solved = water.VP.solve([101.325, 1e9])
    assert solved[0] == water.VP.solve(101.325) and math.isnan(solved[1]) and water.VP.solve(1e9) is None


def test_what_is_known(water):
    VP = water.VP
    assert VP.range == (263.15, 647.14) and VP.unit == "kPa" and VP.help == "Vapour Pressure"
    assert len(VP.coefficients) == 5
    assert "exp" in VP.form and VP.shape.name == "PropCurveDIPPR101" and VP.policy.name == "eTangentLnYOverInverseT"
    assert VP.source.title.startswith("ChemSep") and VP.source.licence == "Artistic License 2.0"
    assert water.RI.source is None and VP.source.kind is qs.SourceKind.eKindFitted and VP.source.year is None
    assert water.TC.range is None and water.TC() == water["TC"] == float(water.TC) == 647.14
    assert water["VP"] is water.VP and water["RI"] is None and math.isnan(float(water.RI))
    assert "VP" in water and "RI" not in water and "VP" in water.keys() and "RI" not in list(water)
    with pytest.raises(TypeError, match="temperature"):
        water.VP()
    with pytest.raises(KeyError):
        water["NOPE"]
    water["RI"], water["my own"] = 1.333, 2.5
    assert water["RI"] == 1.333 and water["my own"] == 2.5 and "my own" in water.keys()
    water.RI.source = stated = VP.source._replace(title="my own", year=2020)
    assert water.RI.source == stated
    water["RI"] = None
    assert water["RI"] is None
    for html in (water._repr_html_(), VP._repr_html_(), qs.Compounds([water])._repr_html_()):
        assert html.startswith("<table>") and html.endswith("</table>") and "Water" in html


def test_pickles_keep_every_bit(water):
    water["my own"] = 1 / 3
    one, many, view = pickle.loads(pickle.dumps((water, (two := qs.Compounds([water, "ethanol"])), two.view([1]))))
    assert one.VP.source == water.VP.source and one["my own"] == 1 / 3 and one != water
    assert one.xml() == water.copy().xml() == water.xml()
    assert [each.name for each in view] == ["Ethanol"]
    assert [each.name for each in many] == ["Water", "Ethanol"] and many[0].VP(300.0) == water.VP(300.0)


def test_collections():
    some = qs.Compounds(["water", 3, "ethanol"])
    assert [each.name for each in some] == ["Water", "Propane", "Ethanol"] and some["steam"] == some[0] == some[-3]
    assert [each.name for each in some.view([2, 0])] == ["Ethanol", "Water"] and len(some[1:]) == 2
    values = some.evaluate("VP", [300.0, 400.0])
    assert values.shape == (3, 2) and values[2][1] == some[2].VP(400.0) and math.isnan(values[1][1])
    some[1] = "methanol"
    assert some[1].name == "Methanol"
    with pytest.raises(IndexError):
        some[3]
    with pytest.raises(qs.NotFound):
        some["propane"]


def test_phases():
    phases = qs.Phases(["water", "ethanol"], phases=2, feeds=1)
    feed, vapour = phases.feed(), phases[0]
    feed.composition, feed.temperature, feed.active = [0.25, 0.75], 350.0, True
    vapour.kind, vapour.fraction, vapour.active = qs.PhaseKind.xptVapour, 0.5, True
    assert feed.composition == [0.25, 0.75] and feed.temperature == 350.0 and feed.pressure is None
    assert phases[0].kind is qs.PhaseKind.xptVapour and len(phases) == 2 and len(phases.active) == 2


def test_tables_and_plots(water):
    pytest.importorskip("pandas")
    frame = qs.table(["water", "methanol"], ["TC", "RI", "ACEN", "VP"], T=300.0)
    assert list(frame.columns) == ["TC, K", "RI", "ACEN", "VP, kPa"]
    assert frame["TC, K"]["Water"] == 647.14 and math.isnan(frame["RI"]["Water"])
    many = qs.table([water, "methanol"], ["VP"], T=[300.0, 310.0])
    assert many["VP, kPa"]["Methanol", 310.0] == qs.compound("methanol").VP(310.0)
    pytest.importorskip("matplotlib").use("agg")
    axes = water.VP.plot()
    assert axes.get_ylabel() == "Vapour Pressure, kPa" and axes.lines[0].get_label() == "Water"
    assert list(axes.lines[0].get_xdata()[[0, -1]]) == [263.15, 647.14]
