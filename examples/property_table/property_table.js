// A host in JScript: fills compounds from the database, tabulates their properties and says where some come from.
//   cscript //nologo property_table.js DATABASE-DIRECTORY
var PRESSURE = 101.325;
var NOT_SET = -32767;

function shown(value) {
  return value == NOT_SET ? "not set" : String(value);
}

// A method returns its out-parameters that the caller leaves out, several as an array.
function rangeOf(limits) {
  var array = new VBArray(limits).toArray();
  return array[0] + " to " + array[1] + " K";
}

// What is known of a source is kind, quality, title, authors, year, licence, changes, uncertainty and note.
function printSource(c, name) {
  var source = new VBArray(c.GetPropertySource(name)).toArray();
  WScript.Echo("  " + name + " from " + source[2] + (source[8] ? "; " + source[8] : ""));
}

function printCompound(directory, number) {
  var c = new ActiveXObject("COQSCompound.COQSCompound.1");
  c.Init(directory, number);

  var synonyms = [];
  for (var i = 0; i < c.NumberOfSynonymNames; ++i) synonyms.push(c.SynonymName(i));
  WScript.Echo("");
  WScript.Echo(c.Name + "  " + c.ChemicalFormula + "  CAS " + c.CASN + "  synonyms: " + synonyms.join("; "));
  WScript.Echo("  is water: " + c.IsWater() + ", is methanol: " + c.IsMethanol());
  // The fourth argument would receive the dependency word, which is not wanted here.
  WScript.Echo("  molecular weight     " + shown(c.MW(298.15, PRESSURE, 0, 0)) + " kg/kmol");
  WScript.Echo("  critical temperature " + shown(c.TC(298.15, PRESSURE, 0, 0)) + " K");
  WScript.Echo("  critical pressure    " + shown(c.PC(298.15, PRESSURE, 0, 0)) + " kPa");
  WScript.Echo("  refractive index     " + shown(c.RI(298.15, PRESSURE, 0, 0)));
  WScript.Echo("  T [K], vapour pressure [kPa], liquid density [kg/m3], heat of vaporisation [kJ/kmol], " +
               "ideal-gas heat capacity [kJ/(kmol K)]");
  var temperatures = [298.15, 350, 373.15];
  for (var k = 0; k < temperatures.length; ++k) {
    var t = temperatures[k];
    WScript.Echo("  " + [t, shown(c.VP(t, PRESSURE, 0, 0)), shown(c.LDN(t, PRESSURE, 0, 0)),
                         shown(c.HVP(t, PRESSURE, 0, 0)), shown(c.IGCP(t, PRESSURE, 0, 0))].join(", "));
  }
  WScript.Echo("  range " + [rangeOf(c.get_VPTPRange()), rangeOf(c.get_LDNTPRange()), rangeOf(c.get_HVPTPRange()),
                             rangeOf(c.get_IGCPTPRange())].join(", "));
  printSource(c, "VP");
  printSource(c, "LDN");
}

var numbers = [19, 29, 30];
for (var n = 0; n < numbers.length; ++n) printCompound(WScript.Arguments(0), numbers[n]);
WScript.Echo("end of table");
