// First steps in JScript: fills three compounds, prints a table of properties, flashes a mixture of them by Raoult's
// law, stores the result in a collection of phases, reads it back, and writes the last compound as XML.
//   cscript //nologo first_steps.js DATABASE-DIRECTORY XML-FILE
var T = 330, P = 250;
var noExtrapolation = 0, feed = 2, vapour = 3, liquid = 4, active = 1;

function round(value, digits) {
  return Math.round(value * Math.pow(10, digits)) / Math.pow(10, digits);
}

var compounds = new ActiveXObject("COQSCompoundCollection.COQSCompoundCollection.1"), compound, i;
for (var numbers = [3, 5, 7]; numbers.length > 0;) {
  compound = new ActiveXObject("COQSCompound.COQSCompound.1");
  compound.Init(WScript.Arguments(0), numbers.shift());
  compounds.AddCompound(compound);
}

// The last argument of a property receives its dependency word, which is not wanted here.
var K = [];
for (i = 0; i < 3; ++i) {
  compound = compounds.Compound(i);
  K[i] = compound.VP(T, P, noExtrapolation, 0) / P;
  WScript.Echo(compound.Name + " " + compound.CASN + ": TC " + round(compound.TC(T, P, noExtrapolation, 0), 2) +
               " K, PC " + round(compound.PC(T, P, noExtrapolation, 0), 2) + " kPa, VP " + round(K[i] * P, 2) + " kPa");
}

// The vapour fraction where the mole fractions of both phases add up to one, by bisection.
var z = [0.3, 0.4, 0.3], x = [], y = [], low = 0, high = 1, fraction;
while (high - low > 1e-12) {
  fraction = (low + high) / 2;
  var sum = 0;
  for (i = 0; i < 3; ++i) sum += z[i] * (K[i] - 1) / (1 + fraction * (K[i] - 1));
  if (sum > 0) low = fraction; else high = fraction;
}
for (i = 0; i < 3; ++i) {
  x[i] = z[i] / (1 + fraction * (K[i] - 1));
  y[i] = K[i] * x[i];
}

function store(phase, fraction, composition) {
  phase.Temperature = T;
  phase.Pressure = P;
  phase.PhaseStatus = active;
  phase.PhaseFraction = fraction;
  phase.MolarComposition = composition;
}

var phases = new ActiveXObject("COQSPhaseCollection.COQSPhaseCollection.1");
phases.RegisterProperties(new ActiveXObject("QsHostKit.PropertyRegistry.1"));
phases.Finalize(compounds, 2, 1);
phases.NumberOfEquilibriumPhases = 2;
phases.GetEquilibriumPhase(0).PhaseType = vapour;
phases.GetEquilibriumPhase(1).PhaseType = liquid;
store(phases.LocatePhase(feed, 0), 1, z);
store(phases.LocatePhase(vapour, 0), fraction, y);
store(phases.LocatePhase(liquid, 0), 1 - fraction, x);

for (i = 0; i < phases.NumberOfActivePhases; ++i) {
  var phase = phases.GetActivePhase(i), composition = phase.MolarComposition;
  WScript.Echo("phase of kind " + phase.PhaseType + ": fraction " + round(phase.PhaseFraction, 4) + ", composition " +
               round(composition.IthValue(0), 4) + " " + round(composition.IthValue(1), 4) + " " +
               round(composition.IthValue(2), 4));
}

new ActiveXObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(1), true).Write(compound.StoreAsXML());
