// Registration scripts as text.
#include "com/registry_script.h"

#include <gtest/gtest.h>

#include "com/error.h"

namespace qs::test {
namespace {

const Replacements kReplacements = {{OLESTR("ID"), OLESTR("{1-2}")}, {OLESTR("FILE"), OLESTR("C:\\it's 100% {x}")}};

// A tree as one line: name[removal]=value(name=value ...){children}
WideString shown(const std::vector<RegistryKey>& keys) {
  WideString text;
  for (const RegistryKey& key : keys) {
    text.append(key.name);
    if (key.removal == RegistryKey::Removal::Never) text.append(OLESTR("[keep]"));
    if (key.removal == RegistryKey::Removal::WithAll) text.append(OLESTR("[all]"));
    if (key.value) text.append(OLESTR("=")).append(*key.value);
    for (const auto& [name, value] : key.namedValues)
      text.append(OLESTR("(")).append(name).append(OLESTR("=")).append(value).append(OLESTR(")"));
    if (!key.children.empty()) text.append(OLESTR("{")).append(shown(key.children)).append(OLESTR("}"));
    text.append(OLESTR(";"));
  }
  return text;
}

TEST(RegistryScript, ReadsNestedKeysValuesAndReplacements) {
  const struct {
    WideView script, tree;
  } rows[] = {
      {OLESTR(""), OLESTR("")},
      {OLESTR("A { B {\r\n\tC } D } E "), OLESTR("A{B{C;};D;};E;")},
      {OLESTR("A = s 'it''s' { val N = s 'v w' B = s x }"), OLESTR("A=it's(N=v w){B=x;};")},
      {OLESTR("NoRemove CLSID { ForceRemove %ID% = s '%FILE%' }"),
       OLESTR("CLSID[keep]{{1-2}[all]=C:\\it's 100% {x};};")},
      {OLESTR("'NoRemove' = s ''"), OLESTR("NoRemove=;")},
      {OLESTR("a%ID%b%ID% = s ok"), OLESTR("a{1-2}b{1-2}=ok;")},
  };
  for (const auto& row : rows)
    EXPECT_EQ(shown(parseRegistryScript(row.script, kReplacements)), row.tree) << narrow(row.script);
}

TEST(RegistryScript, RefusesWhatIsMalformed) {
  WideString deep;
  for (int i = 0; i < 100000; ++i) deep += OLESTR("A { ");
  const WideString rows[] = {OLESTR("{"),         OLESTR("}"),     OLESTR("A {"),           OLESTR("A { B"),
                             OLESTR("A }"),       OLESTR("A ="),   OLESTR("A = s"),         OLESTR("A = d '1'"),
                             OLESTR("A = s 'x"),  OLESTR("= s x"), OLESTR("%NONE%"),        OLESTR("%ID"),
                             OLESTR("A { val }"), OLESTR("''"),    OLESTR("A { val N = }"), deep};
  for (const WideString& script : rows)
    EXPECT_THROW(parseRegistryScript(script, kReplacements), CQSCOMError) << narrow(script.substr(0, 20));
}

}  // namespace
}  // namespace qs::test
