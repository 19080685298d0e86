// A host in JScript: fills compounds from the database and tabulates their properties.
//   cscript //nologo property_table.js DATABASE-DIRECTORY
var PRESSURE = 101.325;
var NOT_SET = -32767;

function shown(value) {
  return value == NOT_SET ? "not set" : String(value);
}

function constant(c, key) {
  // A property that the compound does not have is of kind 0.
  return c.GetPropertyType(key) == 0 ? "not set" : shown(c.GetPropertyValue(key, 298.15, PRESSURE, 0, 0));
}

function printCompound(directory, number) {
  var c = new ActiveXObject("COQSCompound.COQSCompound.1");
  c.Init(directory, number);

  var synonyms = [];
  for (var i = 0; i < c.NumberOfSynonymNames; ++i) synonyms.push(c.SynonymName(i));
  WScript.Echo("");
  WScript.Echo(c.Name + "  " + c.ChemicalFormula + "  CAS " + c.CASN + "  synonyms: " + synonyms.join("; "));
  // The number in place of the fourth argument stands for the dependency word, which is not wanted here.
  WScript.Echo("  molecular weight     " + shown(c.MW(298.15, PRESSURE, 0, 0)) + " kg/kmol");
  WScript.Echo("  critical temperature " + shown(c.TC(298.15, PRESSURE, 0, 0)) + " K");
  WScript.Echo("  critical pressure    " + shown(c.PC(298.15, PRESSURE, 0, 0)) + " kPa");
  WScript.Echo("  refractive index     " + constant(c, "RI"));
  WScript.Echo("  T [K], vapour pressure [kPa], liquid density [kg/m3], heat of vaporisation [kJ/kmol], " +
               "ideal-gas heat capacity [kJ/(kmol K)]");
  var temperatures = [298.15, 350, 373.15];
  for (var k = 0; k < temperatures.length; ++k) {
    var t = temperatures[k];
    WScript.Echo("  " + [t, shown(c.VP(t, PRESSURE, 0, 0)), shown(c.LDN(t, PRESSURE, 0, 0)),
                         shown(c.HVP(t, PRESSURE, 0, 0)), shown(c.IGCP(t, PRESSURE, 0, 0))].join(", "));
  }
}

var numbers = [19, 29, 30];
for (var n = 0; n < numbers.length; ++n) printCompound(WScript.Arguments(0), numbers[n]);
WScript.Echo("end of table");
