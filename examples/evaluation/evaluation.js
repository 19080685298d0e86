// Evaluation in JScript: vapour pressures from below to above the range of their data, each with its status; a boiling
// point as an inverse; and heats of vaporisation against the slope of the vapour pressure, by Clapeyron's equation.
//   cscript //nologo evaluation.js DATABASE-DIRECTORY
var P = 101.325;           // kPa; none of these properties depends on it
var R = 8.31446261815324;  // kJ/(kmol K)
var value = 0, firstDerivative = 1, recommended = 6;
var statusNames = {1: "inside", 2: "below", 4: "above", 16: "by policy", 512: "not found"}, notSet = 64;

function rounded(value, digits) {
  return Math.round(value * Math.pow(10, digits)) / Math.pow(10, digits);
}

function row(columns) {
  var text = "";
  for (var i = 0; i < columns.length; ++i) text += ("            " + columns[i]).slice(-12);
  return text;
}

function statusText(status) {
  var names = [];
  for (var bit in statusNames) if (status & bit) names.push(statusNames[bit]);
  return names.join(", ");
}

function listOf(array) {
  return new VBArray(array).toArray();
}

// The status is left out: numbers and statuses are returned as an array of two.
function evaluated(c, property, quantity, temperatures) {
  var both = listOf(c.Evaluate(property, quantity, temperatures, P, recommended));
  return {numbers: listOf(both[0]), statuses: listOf(both[1])};
}

function compoundOf(number) {
  var c = new ActiveXObject("COQSCompound.COQSCompound.1");
  c.Init(WScript.Arguments(0), number);
  return c;
}

function printVapourPressures(c) {
  var range = listOf(c.GetRange("VP"));
  var temperatures = [240, 255, 263.15, 298.15, 373.15, 500, 647.14, 700, 900];
  var pressures = evaluated(c, "VP", value, temperatures);
  WScript.Echo(c.Name + ", vapour pressure; data from " + rounded(range[0], 2) + " to " + rounded(range[1], 2) + " K");
  WScript.Echo(row(["K", "kPa"]) + "  status");
  for (var i = 0; i < temperatures.length; ++i)
    WScript.Echo(row([rounded(temperatures[i], 2), rounded(pressures.numbers[i], 4)]) + "  " +
                 statusText(pressures.statuses[i]));
}

// Along the boiling curve, T dP/dT (Vg - Vl). The vapour's volume is that of an ideal gas, corrected by the second
// virial coefficient where there is one. Acetic acid has none, and its vapour is far from ideal: most molecules are in
// pairs.
function printHeatsOfVaporisation(c) {
  var pressures = [10, 50, 101.325, 500, 1000];
  var T = listOf(listOf(c.FindTemperature("VP", pressures, P))[0]);
  var heats = evaluated(c, "HVP", value, T).numbers;
  var slopes = evaluated(c, "VP", firstDerivative, T).numbers;
  var masses = evaluated(c, "MW", value, T).numbers;
  var densities = evaluated(c, "LDN", value, T).numbers;
  var virials = evaluated(c, "SVR", value, T);
  WScript.Echo(c.Name);
  WScript.Echo(row(["kPa", "K", "kJ/kmol", "Clapeyron", "%"]));
  for (var i = 0; i < pressures.length; ++i) {
    var virial = virials.statuses[i] & notSet ? 0 : virials.numbers[i];
    var clapeyron = T[i] * slopes[i] * (R * T[i] / pressures[i] + virial - masses[i] / densities[i]);
    WScript.Echo(row([rounded(pressures[i], 3), rounded(T[i], 3), rounded(heats[i], 1), rounded(clapeyron, 1),
                      rounded(100 * (clapeyron / heats[i] - 1), 2)]));
  }
}

var water = compoundOf(19);
printVapourPressures(water);
var both = listOf(water.FindTemperature("VP", 50, P));
WScript.Echo("");
WScript.Echo(water.Name + " boils at " + rounded(both[0], 4) + " K under 50 kPa: " + statusText(both[1]));
WScript.Echo("");
WScript.Echo("heats of vaporisation, and from the slope of the vapour pressure");
for (var numbers = [19, 21, 46]; numbers.length > 0;) printHeatsOfVaporisation(compoundOf(numbers.shift()));
WScript.Echo("end of evaluation");
