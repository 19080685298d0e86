// The installed classes from JScript. Prints a line `ok - ...` or `not ok - ...` for each check and `end` at the end.
//   cscript //nologo compound.js DATABASE-DIRECTORY
var P = 101.325;

function check(name, passed) {
  WScript.Echo((passed ? "ok - " : "not ok - ") + name);
}

function fails(action) {
  try {
    action();
    return false;
  } catch (error) {
    return true;
  }
}

var c = new ActiveXObject("COQSCompound.COQSCompound.1");
c.Init(WScript.Arguments(0), 29);
check("MW by name", c.MW(298.15, P, 0, 0) == 32.04186);
check("TC by name", c.TC(298.15, P, 0, 0) == 512.64);
check("VP by name", Math.abs(c.VP(337.69, P, 0, 0) / P - 1) < 0.01);
check("a member of another interface", c.ChemicalFormula == "CH4O");
check("a name with an index", c.SynonymName(0) != "");
c.Name = "my methanol";
check("put and get in different interfaces", c.Name == "my methanol");
c.SynonymName(0) = "spirit";
check("a put with an index", c.SynonymName(0) == "spirit");
c.SetPointProperty("TC", 1, 500);
check("a value stored by name", c.TC(298.15, P, 0, 0) == 500);
c.SetPointProperty("TC", true, 501);
check("true for a flag", c.TC(298.15, P, 0, 0) == 501);
c.SetVoidProperty("TC", 1);
check("a void property reads as the empty value", c.TC(298.15, P, 0, 0) == -32767);

var range = new VBArray(c.get_VPTPRange()).toArray();
check("out-parameters left out are returned", range.length == 4 && range[0] == 175.47);
check("a result code alone", c.IsMethanol() === true && c.IsWater() === false);
c.SetEquationProperty("LCP", 1, 19, 200, 400, 1, 1000, [1, 2, 0.5]);
check("an equation from the script's own array", c.LCP(10, P, 0, 0) == 71);

function elements(array) { return new VBArray(array).toArray(); }
var found = elements(c.Evaluate("LCP", 0, [300, 500], P, 1));
check("many values with their statuses", elements(found[0]).join() == "45601,-32767" && elements(found[1]).join() == "1,68");
check("one slope and its status", elements(c.Evaluate("LCP", 1, 300, P, 1)).join() == "302,1");
check("an inverse", Math.abs(elements(c.FindTemperature("LCP", 45601, P))[0] - 300) < 1e-9);
check("a description", elements(c.Describe("LCP"))[2] == "Y = A + B*X + C*X^2");
check("what is no temperature is an error", fails(function () { c.Evaluate("LCP", 0, null, P, 1); }));

var phase = new ActiveXObject("COQSPhase.COQSPhase.1");
phase.AddDerivativeProp(1, 2, 2, 2);
phase.PutVariantDerivative(0, [3, 4]);
phase.MolarComposition = [0.25, 0.75];
phase.MolarComposition(0) = 0.5;
check("a phase's arrays from the script's own", phase.GetVariantDerivative(0).IthValue(1) == 4 && phase.MolarComposition(0) == 0.5);

var integers = new ActiveXObject("QsHostKit.IntegerArray.1");
integers.Size = 2;
integers.IthValue(1) = 7;
check("array elements", integers(1) == 7 && integers(0) == -32767);

check("an unknown member is an error", fails(function () { c.NoSuchMember(); }));
check("a failing call is an error", fails(function () { c.Init("no such directory", 19); }));
check("and says why", c.LastError.indexOf("Init: no such directory\\purecmp1.idx: ") == 0);
check("an element outside is an error", fails(function () { return integers(2); }));
WScript.Echo("end");
