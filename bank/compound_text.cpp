#include "bank/compound_text.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string_view>

#include "bank/names.h"
#include "bank/table.h"
#include "platform/number_text.h"
#include "props/forms.h"

namespace qs::bank {
namespace {

using database::CompoundData;
using database::Correlation;

struct TransformationText {
  LONG shape;
  std::string_view ofX, ofY;
};
constexpr TransformationText kTransformationTexts[] = {
#define QS_TRANSFORMATION(shape, of_x, of_y) {shape, #of_x, #of_y},
#include "props/transformations.def"
};

bool isInName(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

// Replaces a variable of one letter, which other names may contain.
std::string withVariable(std::string_view formula, char variable, std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < formula.size(); ++i) {
    const bool isAlone =
        (i == 0 || !isInName(formula[i - 1])) && (i + 1 == formula.size() || !isInName(formula[i + 1]));
    if (formula[i] == variable && isAlone)
      result += text;
    else
      result += formula[i];
  }
  return result;
}

std::string transformed(LONG shape, std::string_view TransformationText::*formula, char variable,
                        std::string_view text) {
  for (const TransformationText& transformation : kTransformationTexts)
    if (transformation.shape == shape)
      return withVariable(withVariable(transformation.*formula, 'n', "1"), variable, text);
  return "nothing: the transformation " + std::to_string(shape) + " does not exist";
}

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
  std::string all;
  for (const std::string& text : texts) {
    if (text.empty()) continue;
    if (!all.empty()) all += separator;
    all += text;
  }
  return all;
}

// The values at the limits of an equation.
std::string valuesText(const Compound& compound, Key key, const Correlation& correlation) {
  const Compound* const one = &compound;
  const Table table = makeTable({&one, 1}, {&key, 1}, {correlation.tmin, correlation.tmax});
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < table.temperatures.size(); ++i) {
    const double found = table.columns[0].values[i];
    std::string value;
    appendDouble(value, found);
    texts.push_back((std::isnan(found) ? "none" : value) + " at " + exactText(table.temperatures[i]) + " K");
  }
  return joined(texts, ", ");
}

const KeyEntry& entryOf(Key key) { return kKeys[static_cast<std::size_t>(key)]; }

}  // namespace

const Provenance& provenanceOf(const Compound& compound, Key key) {
  static const Provenance kNone;
  const auto found = compound.provenance.find(key);
  return found == compound.provenance.end() ? kNone : found->second;
}

std::vector<std::pair<std::string, std::string>> identityText(const CompoundData& compound) {
  const auto textOf = [](const auto& number) { return number ? std::to_string(*number) : std::string(); };
  std::vector<std::string> groups;
  for (const auto& group : compound.unifac)
    groups.push_back(std::to_string(group.count) + " of no. " + std::to_string(group.subgroup));
  std::vector<std::pair<std::string, std::string>> rows{
      {"IUPAC name", compound.iupacName},
      {"Formula", compound.formula},
      {"CAS number", compound.cas},
      {"Synonyms", joined(compound.synonyms, ", ")},
      {"Family", compound.family ? std::string(nameOf(kFamilies, *compound.family)) : ""},
      {"Non-condensable", !compound.nonCondensable   ? ""
                          : *compound.nonCondensable ? "yes"
                                                     : "no"},
      {"DIPPR number", textOf(compound.dipprId)},
      {"DDB number", textOf(compound.ddbId)},
      {"PPDS number", textOf(compound.ppdsId)},
      {"CMA number", textOf(compound.cmaId)},
      {"PP attribute", textOf(compound.ppAttribute)},
      {"UNIFAC sub-groups", joined(groups, ", ")},
  };
  std::erase_if(rows, [](const auto& row) { return row.second.empty(); });
  return rows;
}

std::string qualityText(const Provenance& provenance) {
  return joined({std::string(nameOf(kQualities, provenance.quality)), std::string(nameOf(kKinds, provenance.kind)),
                 provenance.uncertainty},
                ", ");
}

std::string formulaText(const Correlation& correlation) {
  const EquationForm* form = findForm(LONG{correlation.form});
  if (!form || form->shape == PropCurveVoid) return "no equation";
  std::string text = narrow(form->formula);
  if (correlation.xShape != COMx || correlation.xPower != 1.0) {
    const std::string x = transformed(correlation.xShape, &TransformationText::ofX, 'x', "T");
    text += "; X = " + (correlation.xPower == 1.0 ? x : '(' + x + ")^" + exactText(correlation.xPower));
  }
  if (correlation.yShape != COMx || correlation.yPower != 1.0) {
    const std::string y = correlation.yPower == 1.0 ? "Y" : "Y^(1/" + exactText(correlation.yPower) + ')';
    text += "; value = " + transformed(correlation.yShape, &TransformationText::ofY, 'y', y);
  }
  return text;
}

std::string coefficientText(const Correlation& correlation) {
  std::vector<std::string> texts;
  for (const double coefficient : correlation.coefficients) {
    const std::string letter(1, static_cast<char>('A' + texts.size() % 26));
    texts.push_back(letter + " = " + exactText(coefficient));
  }
  return joined(texts, ", ");
}

std::string rangeText(const Correlation& correlation) {
  const auto range = [](double from, double to) { return exactText(from) + " to " + exactText(to); };
  std::string text = range(correlation.tmin, correlation.tmax) + " K";
  const Correlation whole;
  if (correlation.pmin != whole.pmin || correlation.pmax != whole.pmax)
    text += ", " + range(correlation.pmin, correlation.pmax) + " kPa";
  return text;
}

std::string columnText(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    std::size_t end = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line.append(end - line.size(), ' ') += row[i];
      end += widths[i] + 2;
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
  }
  return text;
}

std::string listText(const std::vector<const Compound*>& compounds) {
  std::vector<std::vector<std::string>> rows;
  for (const Compound* compound : compounds) {
    const CompoundData& data = compound->data;
    rows.push_back({std::to_string(data.number), data.name, data.formula, data.cas, joined(data.synonyms, ", ")});
  }
  return columnText(rows);
}

std::string compoundText(const Compound& compound) {
  const CompoundData& data = compound.data;
  std::string text = std::to_string(data.number) + ' ' + data.name + '\n';
  std::vector<std::vector<std::string>> identity, constants, correlations;
  for (const auto& [name, value] : identityText(data)) identity.push_back({"", name, value});
  const auto origin = [&](Key key) {
    const Provenance& provenance = provenanceOf(compound, key);
    return joined({provenance.origin, qualityText(provenance)}, ", ");
  };
  for (const auto& [key, value] : data.constants)
    constants.push_back(
        {"", narrow(nameOf(key)), narrow(entryOf(key).help), exactText(value), unitOf(key), origin(key)});
  for (const auto& [key, correlation] : data.correlations)
    correlations.push_back({"", narrow(nameOf(key)), narrow(entryOf(key).help), unitOf(key),
                            std::string(nameOf(kForms, correlation.form)), rangeText(correlation), origin(key)});
  for (const auto* rows : {&identity, &constants, &correlations})
    if (!rows->empty()) text += (rows == &identity ? "" : "\n") + columnText(*rows);
  return text;
}

std::string valueText(const Source& source, const Compound& compound, Key key) {
  const CompoundData& data = compound.data;
  const std::string what =
      std::to_string(data.number) + ' ' + data.name + ", " + narrow(nameOf(key)) + ' ' + narrow(entryOf(key).help);
  const auto constant = data.constants.find(key);
  const auto correlation = database::correlationOf(data, key);
  std::vector<std::vector<std::string>> rows;
  const auto add = [&](const char* name, const std::string& text) {
    if (!text.empty()) rows.push_back({"", name, text});
  };
  if (constant != data.constants.end()) {
    add("Value", exactText(constant->second));
  } else if (correlation) {
    add("Form", std::string(nameOf(kForms, correlation->form)));
    add("Formula", formulaText(*correlation));
    add("Coefficients", coefficientText(*correlation));
    add("Range", rangeText(*correlation));
    add("Values", valuesText(compound, key, *correlation));
  } else {
    throw std::runtime_error(what + ": not known");
  }
  const bool isDerived = constant == data.constants.end() && !data.correlations.contains(key);
  const Provenance& provenance = provenanceOf(compound, isDerived ? Key::IGH : key);
  if (isDerived) add("Follows from", narrow(nameOf(Key::IGH)));
  add("Source", provenance.origin);
  if (const auto origin = source.origins.find(provenance.origin); origin != source.origins.end()) {
    add("Title", origin->second.title);
    add("Authors", origin->second.authors);
    add("Year", origin->second.year ? std::to_string(*origin->second.year) : "");
    add("Licence", origin->second.licence);
  }
  add("Quality", qualityText(provenance));
  add("Note", provenance.note);
  return what + " [" + unitOf(key) + "]\n" + columnText(rows);
}

}  // namespace qs::bank
