// The columns of a sheet that has a compound in each row, by the headers that `qsdb export --csv` writes and
// `qsdb import csv` reads:
//   name, cas ...                     an identity member as in the JSON source, also number, synonyms and unifac
//   KEY [unit]                        a constant
//   KEY.form [unit]                   the form of a correlation, whose values are in that unit
//   KEY.A, KEY.B ...                  its coefficients by the letters of the formula; G is the entropy constant of IGH
//   KEY.Tmin [K], KEY.Tmax [K], KEY.Pmin [kPa], KEY.Pmax [kPa]
//   KEY.Xshape, KEY.Yshape, KEY.Xpow, KEY.Ypow
//   KEY.source, KEY.kind, KEY.quality, KEY.uncertainty, KEY.note       of either
// A header without a unit means the unit of docs/units.md, K or kPa. An empty cell is a value that is not there.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bank/names.h"
#include "props/key_table.h"

namespace qs::bank {

enum class ColumnPart {
  Identity,
  Value,
  Coefficient,
  Form,
  Tmin,
  Tmax,
  Pmin,
  Pmax,
  Xshape,
  Yshape,
  Xpow,
  Ypow,
  Source,
  Kind,
  Quality,
  Uncertainty,
  Note,
};

// What follows the key and a point.
inline constexpr Named<ColumnPart> kColumnParts[] = {
    {"form", ColumnPart::Form},
    {"Tmin", ColumnPart::Tmin},
    {"Tmax", ColumnPart::Tmax},
    {"Pmin", ColumnPart::Pmin},
    {"Pmax", ColumnPart::Pmax},
    {"Xshape", ColumnPart::Xshape},
    {"Yshape", ColumnPart::Yshape},
    {"Xpow", ColumnPart::Xpow},
    {"Ypow", ColumnPart::Ypow},
    {"source", ColumnPart::Source},
    {"kind", ColumnPart::Kind},
    {"quality", ColumnPart::Quality},
    {"uncertainty", ColumnPart::Uncertainty},
    {"note", ColumnPart::Note},
};

// Between synonyms, and between UNIFAC groups, which are "subgroup:count".
inline constexpr char kListSeparator = '|';

struct Column {
  ColumnPart part = ColumnPart::Identity;
  std::string_view member = {};  // of kIdentityMembers
  Key key = {};
  int coefficient = 0;    // from 0 on
  std::string unit = {};  // as the header has it; empty where it has none
};

std::string headerOf(const Column& column);

// Nothing for a header that is none of these.
std::optional<Column> columnOf(std::string_view header);

// All columns of a key, in the units of the key table.
std::vector<Column> columnsOf(Key key);

// What a compound has in a column in these units; empty where it has nothing.
std::string cellOf(const Compound& compound, const Column& column);

// What a correlation has in a column that is omitted; empty where nothing is usual.
std::string usualCell(const Column& column);

}  // namespace qs::bank
