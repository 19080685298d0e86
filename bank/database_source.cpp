#include "bank/database_source.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "bank/json_source.h"
#include "bank/names.h"
#include "com/error.h"
#include "com/not_set.h"
#include "persist/database_record.h"
#include "persist/database_writer.h"
#include "persist/provenance_file.h"
#include "platform/text.h"
#include "props/forms.h"

namespace qs::bank {
namespace {

using database::CompoundData;

// The members of CompoundData that data records fill, in the order of IdentityField; null for those of another type.
template <class T>
using Places = std::array<T CompoundData::*, kIdentityNames.size()>;

template <class T>
T CompoundData::*placeOf(const Places<T>& places, const database::Field& field) {
  return field.identity ? places[static_cast<std::size_t>(*field.identity)] : nullptr;
}

constexpr Places<std::string> kTexts = [] {
  Places<std::string> places{};
#define BANK_TEXT(key, field, record_name, size, member) \
  places[static_cast<std::size_t>(IdentityField::key)] = &CompoundData::field;
#include "props/identity.def"
  return places;
}();

constexpr Places<std::optional<std::int32_t>> kIntegers = [] {
  Places<std::optional<std::int32_t>> places{};
#define BANK_LONG(key, field, record_name, member) \
  places[static_cast<std::size_t>(IdentityField::key)] = &CompoundData::field;
#include "props/identity.def"
  return places;
}();

// Text outside ASCII goes into a source as UTF-8, whatever the code page is.
std::string textFrom(WideView text) {
  return utf8(std::filesystem::path(text.begin(), text.end(), std::filesystem::path::generic_format));
}

// Collects the fields of a record, a later field of a name in place of an earlier one, as a compound does.
class Receiver final : public database::RecordSink {
 public:
  Receiver(Compound& compound, std::vector<Finding>& findings) : data_(compound.data), findings_(findings) {}

  // With the compound's name, once that is known.
  void finish(const database::Catalogue& catalogue, const std::string& file) {
    const bool hasVolume =
        std::ranges::any_of(catalogue.fields(), [](const database::Field& field) { return field.key == Key::PRPVOLT; });
    if (!hasVolume) {
      const auto volume = data_.constants.find(Key::SRKVC);
      if (volume == data_.constants.end())
        data_.constants.erase(Key::COSTALDACEN);
      else
        data_.constants[Key::COSTALDACEN] = volume->second;
    }
    for (const database::Synonym& synonym : catalogue.synonymsOf(data_.number)) {
      if (data_.synonyms.size() == kMostSynonyms) break;
      data_.synonyms.push_back(textFrom(catalogue.synonymText(synonym)));
    }
    for (Finding& finding : found_) {
      finding.file = file;
      finding.compound = database::describe(data_);
      findings_.push_back(std::move(finding));
    }
  }

  void shortInteger(const database::Field& field, std::int16_t value) override {
    if (value == kEmptyInteger) return;
    if (field.identity == IdentityField::Family) {
      const auto family = static_cast<tagCompoundFamilyEnum>(value);
      if (nameOf(kFamilies, family).empty()) return notKept(field, "a family of the number " + std::to_string(value));
      data_.family = family;
    } else if (field.identity == IdentityField::NonCondensable) {
      data_.nonCondensable = value != 0;
      if (value != 0 && value != 1) notKept(field, "neither 0 nor 1 but " + std::to_string(value));
    } else if (field.identity) {
      notKept(field, "a number of 16 bits");
    }
  }

  void longInteger(const database::Field& field, std::int32_t value) override {
    if (value == kEmptyInteger) return;
    if (const auto place = placeOf(kIntegers, field))
      data_.*place = value;
    else if (field.identity)
      notKept(field, "a number of 32 bits");
  }

  void text(const database::Field& field, WideView value) override {
    if (const auto place = placeOf(kTexts, field))
      data_.*place = textFrom(value);
    else if (field.identity && !value.empty())
      notKept(field, "a text");
  }

  void groups(const database::Field& field, std::span<const database::GroupCount> values) override {
    if (!field.groups) return;
    data_.unifac.clear();
    for (const auto& [type, count] : values) {
      if (type != 0 || count != 0) data_.unifac.push_back({type, count});
    }
  }

  void number(const database::Field& field, double value) override {
    if (!field.key) return;
    forget(*field.key);
    if (!std::isfinite(value)) return notKept(field, "a value that is not finite");
    if (value != kEmptyValue) data_.constants[*field.key] = value;
  }

  void equation(const database::Field& field, const database::EquationField& value) override {
    if (!field.key) return;
    const Key key = *field.key;
    forget(key);
    if (key == Key::IGH) {
      // What readers derive from it takes the place of earlier fields.
      forget(Key::IGCP);
      forget(Key::IGS);
    }
    if (value.shape == PropCurveVoid) {
      if ((key == Key::IGCP || key == Key::IGS) && data_.correlations.contains(Key::IGH))
        notKept(field, "not set, but follows from IGH in a source");
      return;
    }
    if (!isFinite(value)) return notKept(field, "a correlation with numbers that are not finite");
    const EquationForm* form = findForm(LONG{value.shape});
    if (!form) return notKept(field, "a form of the number " + std::to_string(value.shape));
    for (const auto shape : {value.xShape, value.yShape})
      if (shape < COMx || shape > COMlnxp)
        return notKept(field, "a transformation of the number " + std::to_string(shape));
    if (value.fromOldShapes && value.xShape == COMxr)
      return notKept(field, "a correlation in the temperature divided by the molecular weight");
    database::Correlation& correlation = data_.correlations[key];
    correlation.form = static_cast<tagEquationShapeEnum>(value.shape);
    correlation.coefficients.assign(value.coefficients.begin(), value.coefficients.end());
    correlation.coefficients.resize(database::coefficientCount(key, correlation.form));
    correlation.tmin = value.tMin;
    correlation.tmax = value.tMax;
    correlation.pmin = value.pMin;
    correlation.pmax = value.pMax;
    correlation.xShape = static_cast<tagXYShapeEnum>(value.xShape);
    correlation.yShape = static_cast<tagXYShapeEnum>(value.yShape);
    correlation.xPower = value.xPower;
    correlation.yPower = value.yPower;
  }

 private:
  static bool isFinite(const database::EquationField& value) {
    const auto finite = [](double number) { return std::isfinite(number); };
    return std::ranges::all_of(value.coefficients, finite) &&
           std::ranges::all_of(std::array{value.tMin, value.tMax, value.pMin, value.pMax, value.xPower, value.yPower},
                               finite);
  }

  void forget(Key key) {
    data_.constants.erase(key);
    data_.correlations.erase(key);
  }

  void notKept(const database::Field& field, std::string what) {
    found_.push_back({.rule = "not-kept",
                      .severity = Severity::Warning,
                      .field = textFrom(field.name),
                      .message = "a source cannot hold " + std::move(what)});
  }

  CompoundData& data_;
  std::vector<Finding>& findings_;
  std::vector<Finding> found_;
};

// A database of another writer may have what a build refuses.
void checkBuild(const Compound& compound, const std::string& file, std::vector<Finding>& findings) {
  try {
    encodeDatabase(std::span(&compound.data, 1));
  } catch (const std::invalid_argument& error) {
    findings.push_back({.rule = "not-kept",
                        .severity = Severity::Warning,
                        .file = file,
                        .message = std::string(error.what()) + "; a build refuses this"});
  }
}

// Puts what the third file holds into the source.
void addAnnotations(database::Annotations annotations, Source& source, std::vector<Finding>& findings) {
  source.description = std::move(annotations.description);
  source.origins = std::move(annotations.origins);
  source.identityOrigins = std::move(annotations.identityOrigins);
  for (database::Waiver& waiver : annotations.waivers) source.waivers.push_back({std::move(waiver)});
  std::unordered_map<LONG, Compound*> compounds;
  for (Compound& compound : source.compounds) compounds[compound.data.number] = &compound;
  for (auto& [number, field, provenance] : annotations.values) {
    const auto compound = compounds.find(number);
    const auto key = findKey(widen(field));
    if (compound != compounds.end() && key && hasValue(compound->second->data, *key))
      compound->second->provenance[*key] = {std::move(provenance)};
    else
      findings.push_back({.rule = "not-kept",
                          .severity = Severity::Warning,
                          .file = utf8(source.file),
                          .compound = compound != compounds.end() ? database::describe(compound->second->data) : "",
                          .field = field,
                          .message = "a source cannot hold the origin of a value that is not there"});
  }
}

}  // namespace

Source readDatabase(const std::filesystem::path& directory, std::vector<Finding>& findings) {
  const std::string place = utf8(directory);
  const auto fail = [&](const std::string& why) { throw std::runtime_error(place + ": " + why); };
  for (const std::string_view name : {database::kIndexFile, database::kDataFile}) {
    std::error_code error;
    if (!std::filesystem::exists(directory / name, error))
      fail(std::string(name) + ": " +
           (error ? error : std::make_error_code(std::errc::no_such_file_or_directory)).message());
  }
  Source source;
  source.file = directory;
  try {
    const auto folder = (directory / "").parent_path().string<OLECHAR>();
    const auto database = database::openDatabase(folder);
    for (const database::Field& field : database.catalogue->fields()) {
      const bool isValue = field.kind == database::FieldKind::Double || field.kind == database::FieldKind::Equation;
      if (isValue && !field.key)
        findings.push_back({.rule = "not-kept",
                            .severity = Severity::Warning,
                            .file = place,
                            .field = textFrom(field.name),
                            .message = "a source cannot hold values under this name, which is no property key"});
    }
    for (const auto& [number, record] : database.catalogue->compounds()) {
      Compound& compound = source.compounds.emplace_back();
      compound.data.number = number;
      Receiver receiver(compound, findings);
      if (database::readRecord(database, record, receiver) != S_OK)
        fail("the record of compound " + std::to_string(number) + " cannot be read");
      receiver.finish(*database.catalogue, place);
      if (!database.catalogue->build()) checkBuild(compound, place, findings);
    }
    if (const auto build = database.catalogue->build())
      if (auto file = database::ProvenanceFile::open(folder, *build)) addAnnotations(file->readAll(), source, findings);
  } catch (const CQSCOMError& error) {
    qs::report(error.result());
    const LastFailure* failure = lastFailure();
    fail("cannot be read: damaged, or its two files are not of the same build" +
         (failure ? ": " + textFrom(failure->text) : ""));
  }
  return source;
}

Source readSourceOrDatabase(const std::filesystem::path& place, std::vector<Finding>& findings) {
  std::error_code ignored;
  return std::filesystem::is_directory(place, ignored) ? readDatabase(place, findings) : readSource(place, findings);
}

}  // namespace qs::bank
