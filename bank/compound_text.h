// Compounds and their values as people read them.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "bank/source.h"

namespace qs::bank {

// Of a value; empty where nothing is known.
const Provenance& provenanceOf(const Compound& compound, Key key);

// What identifies a compound besides number and name, without what is not known.
std::vector<std::pair<std::string, std::string>> identityText(const database::CompoundData& compound);

// Quality, kind and uncertainty.
std::string qualityText(const Provenance& provenance);

// The formula of the form, and, where there are transformations, what X is of T and the value of Y.
std::string formulaText(const database::Correlation& correlation);

// "A = 1, B = 2.5": the coefficients by their letters.
std::string coefficientText(const database::Correlation& correlation);

// "273.16 to 647.1 K", and the range of pressure where there is one.
std::string rangeText(const database::Correlation& correlation);

// Lines of columns, each as wide as its widest cell.
std::string columnText(const std::vector<std::vector<std::string>>& rows);

// A line for each compound: number, name, formula, CAS number, synonyms.
std::string listText(const std::vector<const Compound*>& compounds);

// A compound's identity and a line for each value.
std::string compoundText(const Compound& compound);

// All that is known of a value of a compound. Throws std::runtime_error when it has none.
std::string valueText(const Source& source, const Compound& compound, Key key);

}  // namespace qs::bank
