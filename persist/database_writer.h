// Makes the files of a pure-component database (docs/database.md) from compounds in memory. Tools, tests and
// benchmarks use it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "interfaces/interfaces.h"
#include "persist/database_files.h"
#include "persist/provenance_file.h"
#include "props/key_table.h"

namespace qs::database {

// A temperature-dependent property. Coefficients are in the order of the form's letters, as many as the form has; an
// ideal-gas enthalpy (IGH) has one more, the entropy constant. Temperatures in K, pressures in kPa.
struct Correlation {
  tagEquationShapeEnum form = PropCurveVoid;
  std::vector<double> coefficients;
  double tmin = 1e-5, tmax = 1e10;
  double pmin = 1e-5, pmax = 1e15;
  tagXYShapeEnum xShape = COMx, yShape = COMx;
  double xPower = 1.0, yPower = 1.0;
};

struct UnifacGroup {
  int subgroup = 0;
  int count = 0;
};

// One compound; omitted values are not known. Text is printable ASCII.
struct CompoundData {
  std::int32_t number = 0;  // from 1 on, unique in a database
#define BANK_TEXT(key, field, record_name, size, member) std::string field;
#define BANK_LONG(key, field, record_name, member) std::optional<std::int32_t> field;
#define BANK_SHORT(key, field, type, record_name, member) std::optional<type> field;
#include "props/identity.def"
  std::vector<UnifacGroup> unifac;
  std::vector<std::string> synonyms;
  std::map<Key, double> constants;  // units of docs/units.md
  std::map<Key, Correlation> correlations;
};

// A compound's correlation of a key. Readers derive IGCP and IGS from IGH, but a later field replaces them, so where
// other compounds bring such a field of their own, the derived correlation is written out.
std::optional<Correlation> correlationOf(const CompoundData& compound, Key key);

// The bytes of all files; the compounds may come in any order. Throws std::invalid_argument, naming compound and
// field, for anything that the files cannot hold or that readers would take for something else.
DatabaseFiles encodeDatabase(std::span<const CompoundData> compounds, const Annotations& annotations = {});

// The number of coefficients of a form; an ideal-gas enthalpy also has the entropy constant.
std::size_t coefficientCount(Key key, tagEquationShapeEnum form);

// A compound as messages name it.
std::string describe(const CompoundData& compound);

}  // namespace qs::database
