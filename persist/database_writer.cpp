#include "persist/database_writer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "com/not_set.h"
#include "persist/byte_writer.h"
#include "persist/database_format.h"
#include "platform/text.h"
#include "props/forms.h"
#include "props/identity_fields.h"

namespace qs::database {
namespace {

constexpr double kVersion = 2.0;  // shapes are stored as they are used
constexpr std::size_t kIdealGasCoefficients = 7;

// The identity fields, in the order of the data record.
struct TextField {
  std::string_view name;
  std::size_t size;
  std::string CompoundData::*value;
};
constexpr TextField kTextFields[] = {
#define BANK_TEXT(key, field, record_name, size, member) {record_name, size, &CompoundData::field},
#include "props/identity.def"
};

struct LongField {
  std::string_view name;
  std::optional<std::int32_t> CompoundData::*value;
};
constexpr LongField kLongFields[] = {
#define BANK_LONG(key, field, record_name, member) {record_name, &CompoundData::field},
#include "props/identity.def"
};

struct ShortField {
  std::string_view name;
  int (*value)(const CompoundData&);
};
template <auto field>
int shortValue(const CompoundData& compound) {
  return compound.*field ? static_cast<int>(*(compound.*field)) : kEmptyInteger;
}
constexpr ShortField kShortFields[] = {
#define BANK_SHORT(key, field, type, record_name, member) {record_name, &shortValue<&CompoundData::field>},
#include "props/identity.def"
    {"SubComp", [](const CompoundData&) { return kEmptyInteger; }},
};

// A reader that finds no PRPVOLT replaces COSTALDACEN by the value of SRKVC, so both are always there, if only empty.
constexpr Key kDeclaredConstants[] = {Key::PRPVOLT, Key::SRKVC};

std::string keyName(Key key) { return narrow(nameOf(key)); }

[[noreturn]] void refuse(const CompoundData& compound, std::string_view field, std::string_view why) {
  throw std::invalid_argument(describe(compound).append(", ").append(field).append(": ").append(why));
}

void checkText(const CompoundData& compound, std::string_view field, std::string_view text, std::size_t limit) {
  if (text.size() > limit) refuse(compound, field, "longer than " + std::to_string(limit) + " bytes");
  if (!std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; })) {
    refuse(compound, field, "a character is not printable ASCII");
  }
  if (text.ends_with(' ')) refuse(compound, field, "a blank at the end");
}

void checkReal(const CompoundData& compound, std::string_view field, double value) {
  if (!std::isfinite(value)) refuse(compound, field, "not a finite number");
  if (value == kEmptyValue) refuse(compound, field, "-32767 stands for a value that is not set");
}

void checkIdentity(const CompoundData& compound) {
  if (compound.number < 1) refuse(compound, "number", "less than 1");
  for (const TextField& field : kTextFields) checkText(compound, field.name, compound.*field.value, field.size);
  if (compound.name.empty()) refuse(compound, "PName", "empty");
  for (const LongField& field : kLongFields) {
    if (compound.*field.value == kEmptyInteger)
      refuse(compound, field.name, "-32767 stands for a value that is not set");
  }
  if (compound.family && (*compound.family < eHydrocarbon || *compound.family > ePolymer)) {
    refuse(compound, "Family", "no such family");
  }
  constexpr int kMostShort = std::numeric_limits<std::int16_t>::max();
  for (const auto& [subgroup, count] : compound.unifac) {
    if (subgroup < 1 || subgroup > kMostShort || count < 1 || count > kMostShort) {
      refuse(compound, kGroupField, "a sub-group or a count is not within 1 to 32767");
    }
  }
  if (compound.synonyms.size() > kMostSynonyms) {
    refuse(compound, "synonyms", "more than " + std::to_string(kMostSynonyms));
  }
  for (const std::string& synonym : compound.synonyms) {
    if (synonym.empty()) refuse(compound, "synonyms", "empty");
    checkText(compound, "synonyms", synonym, kSynonymLength);
  }
}

void checkCorrelation(const CompoundData& compound, Key key, const Correlation& correlation) {
  const std::string name = keyName(key);
  if (static_cast<std::size_t>(correlation.form) >= kFormCount) refuse(compound, name, "no such form");
  if (key == Key::IGH && correlation.form != PropCurveVELDB3) {
    refuse(compound, name, "heat capacity and entropy follow from the form VELDB3 only");
  }
  const std::size_t given = correlation.coefficients.size();
  if (const std::size_t wanted = coefficientCount(key, correlation.form); given != wanted) {
    refuse(compound, name, std::to_string(given) + " coefficients instead of " + std::to_string(wanted));
  }
  for (const double coefficient : correlation.coefficients) checkReal(compound, name, coefficient);
  for (const double value : {correlation.tmin, correlation.tmax, correlation.pmin, correlation.pmax, correlation.xPower,
                             correlation.yPower}) {
    checkReal(compound, name, value);
  }
  if (correlation.tmin > correlation.tmax) refuse(compound, name, "tmin is above tmax");
  if (correlation.pmin > correlation.pmax) refuse(compound, name, "pmin is above pmax");
  for (const tagXYShapeEnum shape : {correlation.xShape, correlation.yShape}) {
    if (shape < COMx || shape > COMlnxp) refuse(compound, name, "no such transformation");
  }
}

bool derivesFromEnthalpy(Key key) { return key == Key::IGCP || key == Key::IGS; }

// The fields whose number and sizes depend on the compounds.
struct Layout {
  std::size_t groups = 0;
  std::set<Key> constants{std::begin(kDeclaredConstants), std::end(kDeclaredConstants)};
  std::map<Key, std::size_t> correlations;  // with the largest number of coefficients
};

Layout checkedLayout(std::span<const CompoundData> compounds) {
  Layout layout;
  std::set<std::int32_t> numbers;
  for (const CompoundData& compound : compounds) {
    checkIdentity(compound);
    if (!numbers.insert(compound.number).second) refuse(compound, "number", "given to two compounds");
    layout.groups = std::max(layout.groups, compound.unifac.size());
    for (const auto& [key, value] : compound.constants) {
      checkReal(compound, keyName(key), value);
      layout.constants.insert(key);
    }
    for (const auto& [key, correlation] : compound.correlations) {
      checkCorrelation(compound, key, correlation);
      std::size_t& size = layout.correlations[key];
      size = std::max(size, correlation.coefficients.size());
    }
  }
  for (const CompoundData& compound : compounds) {
    for (const auto& [key, value] : compound.constants) {
      if (derivesFromEnthalpy(key) && layout.correlations.contains(Key::IGH)) {
        refuse(compound, keyName(key), "a single value would be replaced by what readers derive from IGH");
      }
    }
    for (const auto& [key, correlation] : compound.correlations) {
      if (layout.constants.contains(key)) {
        refuse(compound, keyName(key), "a correlation, but the database has single values under this key");
      }
    }
  }
  for (const Key key : {Key::IGCP, Key::IGS}) {
    if (const auto own = layout.correlations.find(key); own != layout.correlations.end()) {
      own->second = std::max(own->second, kIdealGasCoefficients);
    }
  }
  return layout;
}

void writeHeader(ByteWriter& out, std::size_t fields, std::size_t compounds) {
  out.real(kVersion);
  out.text("", kRecordLengthOffset - sizeof(double), '\0');
  out.longInteger(kRecordLength);
  out.longInteger(static_cast<std::int32_t>(fields));
  out.longInteger(static_cast<std::int32_t>(compounds));
  out.text(kMark, kMark.size(), '\0');
  out.fillTo(kRecordLength);
}

struct FieldDefinition {
  std::string name;
  FieldKind kind;
  std::size_t size;
};

std::vector<FieldDefinition> fieldTable(const Layout& layout) {
  std::vector<FieldDefinition> fields;
  for (const TextField& field : kTextFields) fields.push_back({std::string(field.name), FieldKind::String, field.size});
  for (const LongField& field : kLongFields) fields.push_back({std::string(field.name), FieldKind::LongInteger, 4});
  for (const ShortField& field : kShortFields) fields.push_back({std::string(field.name), FieldKind::ShortInteger, 2});
  fields.push_back({std::string(kGroupField), FieldKind::Group, layout.groups});
  for (const Key key : layout.constants) fields.push_back({keyName(key), FieldKind::Double, 8});
  for (const auto& [key, size] : layout.correlations) fields.push_back({keyName(key), FieldKind::Equation, size});
  return fields;
}

void writeFieldTable(ByteWriter& out, std::span<const FieldDefinition> fields) {
  std::int32_t number = 0;
  for (const FieldDefinition& field : fields) {
    out.longInteger(++number);
    out.longInteger(static_cast<std::int32_t>(field.size));
    out.text(field.name, kFieldNameLength, ' ');
    out.text(std::ranges::find(kKindTexts, field.kind, &KindText::kind)->text, kFieldKindLength, ' ');
  }
}

void writeCorrelation(ByteWriter& out, const std::optional<Correlation>& correlation, std::size_t size) {
  const std::size_t held = correlation ? correlation->coefficients.size() : 0;
  out.shortInteger(correlation ? static_cast<int>(correlation->form) : kEmptyInteger);
  for (std::size_t i = 0; i < size; ++i) out.real(i < held ? correlation->coefficients[i] : kEmptyValue);
  for (const auto limit : {&Correlation::tmin, &Correlation::tmax, &Correlation::pmin, &Correlation::pmax}) {
    out.real(correlation ? (*correlation).*limit : kEmptyValue);
  }
  for (const auto shape : {&Correlation::xShape, &Correlation::yShape}) {
    out.shortInteger(correlation ? static_cast<int>((*correlation).*shape) : kEmptyInteger);
  }
  for (const auto power : {&Correlation::xPower, &Correlation::yPower}) {
    out.real(correlation ? (*correlation).*power : kEmptyValue);
  }
  for (std::size_t i = 0; i < kEquationReserved; ++i) out.shortInteger(0);
}

void writeDataRecord(ByteWriter& out, const Layout& layout, const CompoundData& compound) {
  for (const TextField& field : kTextFields) out.text(compound.*field.value, field.size, '\0');
  for (const LongField& field : kLongFields) out.longInteger((compound.*field.value).value_or(kEmptyInteger));
  for (const ShortField& field : kShortFields) out.shortInteger(field.value(compound));
  for (std::size_t i = 0; i < layout.groups; ++i) {
    const UnifacGroup group = i < compound.unifac.size() ? compound.unifac[i] : UnifacGroup{};
    out.shortInteger(group.subgroup);
    out.shortInteger(group.count);
  }
  for (const Key key : layout.constants) {
    const auto value = compound.constants.find(key);
    out.real(value != compound.constants.end() ? value->second : kEmptyValue);
  }
  for (const auto& [key, size] : layout.correlations) writeCorrelation(out, correlationOf(compound, key), size);
  out.fillTo(kRecordLength);
}

// FNV-1a of index and data, whose headers hold no build identifier yet.
std::uint64_t checksum(const DatabaseFiles& files) {
  std::uint64_t sum = 14695981039346656037u;
  for (const auto* file : {&files.index, &files.data}) {
    for (const std::byte byte : *file) sum = (sum ^ std::to_integer<std::uint64_t>(byte)) * 1099511628211u;
  }
  return sum;
}

}  // namespace

std::size_t coefficientCount(Key key, tagEquationShapeEnum form) {
  return key == Key::IGH ? kIdealGasCoefficients : static_cast<std::size_t>(kEquationForms[form].coefficients);
}

std::string describe(const CompoundData& compound) {
  return "compound " + std::to_string(compound.number) + " (" + compound.name + ")";
}

std::optional<Correlation> correlationOf(const CompoundData& compound, Key key) {
  if (const auto own = compound.correlations.find(key); own != compound.correlations.end()) return own->second;
  const auto enthalpy = compound.correlations.find(Key::IGH);
  if (!derivesFromEnthalpy(key) || enthalpy == compound.correlations.end() || compound.constants.contains(key))
    return std::nullopt;
  Correlation derived = enthalpy->second;
  derived.form = key == Key::IGCP ? PropCurveVELDB9 : PropCurveVELDB10;
  derived.coefficients.resize(coefficientCount(key, derived.form));
  derived.xShape = derived.yShape = COMx;
  derived.xPower = derived.yPower = 1.0;
  return derived;
}

DatabaseFiles encodeDatabase(std::span<const CompoundData> compounds, const Annotations& annotations) {
  const Layout layout = checkedLayout(compounds);
  const std::vector<FieldDefinition> fields = fieldTable(layout);

  std::vector<const CompoundData*> ordered;
  std::uint64_t synonyms = 0;
  for (const CompoundData& compound : compounds) {
    ordered.push_back(&compound);
    synonyms += compound.synonyms.size();
  }
  std::ranges::sort(ordered, {}, &CompoundData::number);
  std::uint64_t recordBytes = 0;
  for (const FieldDefinition& field : fields) recordBytes += fieldBytes(field.kind, field.size);
  const std::uint64_t recordsPerCompound = (recordBytes + kRecordLength - 1) / kRecordLength;
  if ((1 + fields.size() + compounds.size() + synonyms) * kRecordLength > kLargestIndexFile ||
      compounds.size() * recordsPerCompound > std::uint64_t{std::numeric_limits<std::int32_t>::max()}) {
    throw std::invalid_argument("more compounds than the files can number");
  }

  ByteWriter index, data;
  writeHeader(index, fields.size(), compounds.size());
  writeHeader(data, fields.size(), compounds.size());
  writeFieldTable(index, fields);
  for (const CompoundData* compound : ordered) {
    index.longInteger(compound->number);
    index.longInteger(static_cast<std::int32_t>(data.size() / kRecordLength - 1));
    index.text(compound->name, kIndexNameLength, ' ');
    index.text(compound->cas, kIndexIdentifierLength, ' ');
    writeDataRecord(data, layout, *compound);
  }
  for (const CompoundData* compound : ordered) {
    for (const std::string& synonym : compound->synonyms) {
      index.longInteger(compound->number);
      index.text(synonym, kSynonymLength, '\0');
    }
  }
  DatabaseFiles files{index.take(), data.take(), {}};
  const std::uint64_t build = checksum(files);
  for (auto* file : {&files.index, &files.data}) std::memcpy(file->data() + kBuildOffset, &build, sizeof build);
  files.provenance = encodeProvenance(annotations, build);
  return files;
}

}  // namespace qs::database
