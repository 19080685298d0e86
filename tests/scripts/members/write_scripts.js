// Writes two scripts, compound_members.vbs and compound_members.js, that use every member of every dual interface of
// the compound, as the type library lists them: what fills first, then setters, what reads, and what removes. A value set
// must be read, every out-parameter must come back, and no call may fail.
//   cscript //nologo write_scripts.js TYPE-LIBRARY-TEXT DIRECTORY
var files = new ActiveXObject("Scripting.FileSystemObject");

// Arguments in both languages, by member or else by parameter or its type.
var memberArguments = {
  Init: "database, 19",
  SetPointProperty: '"own", 0, 512.5',
  SetEquationProperty: '"density", 0, 19, 200, 400, 1, 1000, reals',
  SetCOMProperty: '"component", 0, "A.Class", none',
  GetCOMProperty: '"component"',
  SetVoidProperty: '"nothing", 0',
  SetPropertyLoader: '"density", "my loader"',
  GetPropertyLoader: '"density"',
  SetPropertySource: '"density", 1, 2, "title", "authors", 1999, "licence", "changes", "1 %", "note"',
  ErasePropFromMap: '"own", 0',
  CopyToThis: "7, other",
  SetUserProperty: '"mine", "{01234567-89AB-CDEF-0123-456789ABCDEF}", other',
  SetEquationPropertyXYShape: '"density", 1, 1, 1, 1, 1, 1, 0, 0'
};
var parameterArguments = {
  dTemp: "300", dPres: "101.325", eExtrapolationMethod: "0", Name: '"density"', strName: '"mine"', shape: "19",
  pGroupTypes: "groups", nNumGroup: "2", attribs: "attributes", Temp: "300", dFrom: "300", To: "310", Value: "46"
};
var typeArguments = { INT: "0", BYTE: "1", "IIntegerArrayDisp*": "integers", "IDispatch*": "groups" };
// A put stores a value of its own; groups are as many as their arrays hold.
var memberValues = { UNIFAC1NumberOfGroups: "2", UNIFAC1Groups: "groups" };

function newValue(member, number) {
  if (memberValues[member.name]) return memberValues[member.name];
  var type = member.ins[member.ins.length - 1].type;
  if (type == "BSTR") return '"text ' + number + '"';
  if (type == "VARIANT_BOOL") return "yes";
  if (type.charAt(0) == "I" && type != "INT") return "integers";
  return String(2 + number % 7);
}

function readMembers(path) {
  var members = [];
  var text = files.OpenTextFile(path, 1);
  while (!text.AtEndOfStream) {
    var words = text.ReadLine().split(" ");
    if (words[0] != "COQSCompound" || words.length < 5) continue;  // or an identifier
    var member = { face: words[1], kind: words[2], name: words[3], ins: [], outs: [], result: null };
    var reachable = true;
    for (var i = 5; i < words.length; ++i) {
      var parts = words[i].split(":");
      if (parts.length < 3) reachable = false;  // not for late-bound callers
      else if (parts[0] == "result") member.result = parts[1];
      else member[parts[0] + "s"].push({ type: parts[1], name: parts[2] });
    }
    if (reachable) members.push(member);
  }
  text.Close();
  return members;
}

function argumentsOf(member) {
  if (memberArguments[member.name]) return memberArguments[member.name];
  var list = [];
  var count = member.ins.length - (member.kind == "put" ? 1 : 0);
  for (var i = 0; i < count; ++i) {
    var parameter = member.ins[i];
    list.push(parameterArguments[parameter.name] || typeArguments[parameter.type] || "0");
  }
  return list.join(", ");
}

function isKey(member) { return member.kind == "get" && member.ins.length == 3 && member.ins[0].name == "dTemp"; }
function isObject(type) { return type.charAt(0) == "I" && type.charAt(type.length - 2) == "*"; }

// The calls in their order: { title, call, put, outs, object, expected }, where `put` is the value of a property put.
function stepsOf(members) {
  var phases = [[], [], [], []];
  var stored = {};
  for (var i = 0; i < members.length; ++i) {
    var member = members[i];
    var title = member.face + "." + member.name;
    if (isKey(member)) {
      stored[member.name] = 1000 + i;
      phases[1].push({ title: title + ", set", call: 'SetPointProperty("' + member.name + '", 1, ' + (1000 + i) + ")",
                       outs: [] });
    }
    var step = { title: title, call: member.name, outs: member.outs };
    var list = argumentsOf(member);
    if (list || member.kind == "method") step.call += "(" + list + ")";
    if (member.kind == "put") {
      step.put = newValue(member, i);
      if (!/^(integers|groups)$/.test(step.put)) stored[step.call] = step.put;
    }
    step.results = member.outs.length + (member.result ? 1 : 0);
    step.object = member.result && !member.outs.length && isObject(member.result);
    step.member = member;
    var phase = /^(Init|Copy)/.test(member.name) ? 0
              : member.kind == "put" || /^Set/.test(member.name) ? 1
              : /^(Delete|Erase)/.test(member.name) ? 3 : 2;
    phases[phase].push(step);
  }
  var steps = phases[0].concat(phases[1], phases[2], phases[3]);
  for (i = 0; i < steps.length; ++i) {
    member = steps[i].member;
    if (member && member.kind == "get") steps[i].expected = isKey(member) ? stored[member.name] : stored[steps[i].call];
  }
  return steps;
}

function write(path, lines) {
  var file = files.CreateTextFile(path, true);
  for (var i = 0; i < lines.length; ++i) file.WriteLine(lines[i]);
  file.Close();
}

function writeJScript(path, steps) {
  var lines = [
    'var database = WScript.Arguments(0), integers = [1, 2], reals = [1, 2, 0.5], yes = true, none = null, passes = 0;',
    'var groups = new ActiveXObject("QsHostKit.IntegerArray.1");',
    'groups.Size = 2; groups.IthValue(0) = 1; groups.IthValue(1) = 2;',
    'var attributes = new ActiveXObject("QsHostKit.AttributeSet.1");',
    'var other = new ActiveXObject("COQSCompound.COQSCompound.1");',
    'var c = new ActiveXObject("COQSCompound.COQSCompound.1");',
    'function step(title, results, expected, call) {',
    '  try {',
    '    var value = call();',
    '    var list = results > 1 ? new VBArray(value).toArray() : [value];',
    '    var passed = list.length == Math.max(results, 1) && (results == 0 || value !== undefined) &&',
    '                 (expected === null || list[0] === expected);',
    '    if (passed) ++passes;',
    '    else WScript.Echo("not ok - " + title + ": " + list.join(" "));',
    '  } catch (error) {',
    '    WScript.Echo("not ok - " + title + ": " + error.number + " " + error.message);',
    '  }',
    '}'
  ];
  for (var i = 0; i < steps.length; ++i) {
    var s = steps[i];
    var expected = s.expected === undefined ? "null" : s.expected;
    lines.push('step("' + s.title + '", ' + (s.results || 0) + ", " + expected + ", function () { " +
               (s.put ? "c." + s.call + " = " + s.put : "return c." + s.call) + "; });");
  }
  lines.push('WScript.Echo((passes == ' + steps.length + ' ? "" : "not ") + "ok - " + passes + " of ' + steps.length +
             ' calls");', 'WScript.Echo("end");');
  write(path, lines);
}

// VBScript gives variables for the out-parameters too, and assigns objects by Set.
function writeVBScript(path, steps) {
  var lines = [
    "Dim database, integers, reals, yes, none, groups, attributes, other, c, value, outs(12), passes",
    "database = WScript.Arguments(0)",
    "integers = Array(1, 2)",
    "reals = Array(1, 2, 0.5)",
    "yes = True",
    "Set none = Nothing",
    'Set groups = CreateObject("QsHostKit.IntegerArray.1")',
    "groups.Size = 2",
    "groups(0) = 1",
    "groups(1) = 2",
    'Set attributes = CreateObject("QsHostKit.AttributeSet.1")',
    'Set other = CreateObject("COQSCompound.COQSCompound.1")',
    'Set c = CreateObject("COQSCompound.COQSCompound.1")',
    "Sub Start()",
    "  Dim i",
    "  value = Empty",
    "  For i = 0 To 12",
    '    outs(i) = "before"',
    "  Next",
    "  Err.Clear",
    "End Sub",
    "Sub Finish(title, passed)",
    "  If Err.Number <> 0 Then",
    '    WScript.Echo "not ok - " & title & ": " & Err.Number & " " & Err.Description',
    "  ElseIf Not passed Then",
    '    WScript.Echo "not ok - " & title & ": " & TypeName(value)',
    "  Else",
    "    passes = passes + 1",
    "  End If",
    "End Sub",
    "Function Changed(count)",
    "  Dim i",
    "  Changed = True",
    "  For i = 0 To count - 1",
    '    If VarType(outs(i)) = vbString Then If outs(i) = "before" Then Changed = False',
    "  Next",
    "End Function",
    "On Error Resume Next"
  ];
  var calls = 0;
  for (var i = 0; i < steps.length; ++i) {
    var s = steps[i];
    ++calls;
    var passed = s.results > 1 ? "UBound(value) = " + (s.results - 1)
               : s.object ? "IsObject(value)"
               : "True";
    if (s.expected !== undefined) passed = (s.results > 1 ? "value(0)" : "value") + " = " + s.expected;
    lines.push("Start");
    lines.push(s.put ? "c." + s.call + " = " + s.put : (s.object ? "Set " : "") + "value = c." + s.call);
    lines.push('Finish "' + s.title + '", ' + passed);
    if (!s.outs.length || s.put) continue;
    ++calls;
    var given = [];
    for (var out = 0; out < s.outs.length; ++out) given.push("outs(" + out + ")");
    var call = s.call.replace(/\(?\)?$/, "") + (/\(.+\)$/.test(s.call) ? ", " : "(") + given.join(", ") + ")";
    lines.push("Start", "value = c." + call, 'Finish "' + s.title + ', received", Changed(' + s.outs.length + ")");
  }
  // A call that fails may take its own check with it.
  lines.push("If passes = " + calls + " Then",
             'WScript.Echo "ok - ' + calls + ' calls"',
             "Else",
             'WScript.Echo "not ok - " & passes & " of ' + calls + ' calls"',
             "End If",
             'WScript.Echo "end"');
  write(path, lines);
}

var steps = stepsOf(readMembers(WScript.Arguments(0)));
var directory = WScript.Arguments(1);
writeJScript(files.BuildPath(directory, "compound_members.js"), steps);
writeVBScript(files.BuildPath(directory, "compound_members.vbs"), steps);
WScript.Echo(steps.length + " calls");
