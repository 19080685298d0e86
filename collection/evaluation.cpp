// One property of many compounds with the status of every number.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "collection/collection.h"
#include "compound/compound.h"
#include "compound/evaluation_arguments.h"
#include "props/block_functions.h"

namespace qs {
namespace {

// A property of a compound of another maker, as its ICompoundProp returns it.
class ForeignProperty final : public CQSAbstractProp {
 public:
  ForeignProperty(ICompoundProp& compound, WideView name) : compound_(compound), name_(name) {
    SetType(COMProp);
    tagPropTypeEnum type = VoidProp;
    known_ = SUCCEEDED(compound.GetPropertyType(name_.get(), &type)) && type != VoidProp;
    if (!known_ || type != EquationProp) return;
    tagEquationShapeEnum shape{};
    INT count = 0;
    Bstr form;
    ComPtr<IRealArrayDisp> coefficients;
    hasRange_ = compound.GetEquationProperty(name_.get(), &shape, form.out(), &range_.tMin, &range_.tMax, &range_.pMin,
                                             &range_.pMax, &count, coefficients.out()) == S_OK;
  }

  bool isKnown() const { return known_; }

  HRESULT GetValue(double T, double P, tagExtrapolationEnum method, LONG* dependencies, double* value) const override {
    return compound_.GetPropertyValue(name_.get(), T, P, method, dependencies, value);
  }
  HRESULT GetTRange(double* tMin, double* tMax) const override { return give(range_.tMin, range_.tMax, tMin, tMax); }
  HRESULT GetPRange(double* pMin, double* pMax) const override { return give(range_.pMin, range_.pMax, pMin, pMax); }

  HRESULT Copy(const CQSAbstractProp*) override { return S_FALSE; }
  HRESULT Store(BSTR*) const override { return S_FALSE; }
  HRESULT Recall(BSTR) override { return S_FALSE; }

 private:
  HRESULT give(double least, double most, double* min, double* max) const {
    *min = least;
    *max = most;
    return hasRange_ ? S_OK : S_FALSE;
  }

  ICompoundProp& compound_;
  const Bstr name_;
  PropertyRange range_;
  bool known_ = false, hasRange_ = false;
};

// Has the processor fetch what an equation is evaluated from while the next property is looked for.
void fetchEquation(const CQSAbstractProp& property) {
  constexpr std::ptrdiff_t kCacheLine = 64, kLines = 4;
  const auto* const bytes = reinterpret_cast<const char*>(&property);
  for (std::ptrdiff_t line = 0; line < kLines; ++line) __builtin_prefetch(bytes + line * kCacheLine);
}

}  // namespace

IBasicCompound* COQSCompoundCollection::compoundAt(LONG position) const {
  const COQSCompoundCollection* list = this;
  for (; list->isView(); list = &implementation(list->state_.parent)) position = list->inParent(position);
  return list->state_.slots.at(position);
}

bool COQSCompoundCollection::evaluate(LONG position, const std::optional<Key>& key, WideView name,
                                      std::span<const double> temperatures, double P, tagLimitPolicyEnum policy,
                                      const EvaluationResults& results) const {
  // It stays alive while it is asked; what it calls may take it out of the list.
  const ComPtr<IBasicCompound> compound(compoundAt(position));
  if (const COQSCompound* own = COQSCompound::ofThisModule(compound.get()))
    return own->evaluate(key, name, temperatures, P, policy, results);
  const auto properties = ComPtr<ICompoundProp>::from(compound.get());
  std::optional<ForeignProperty> foreign;
  if (properties) foreign.emplace(*properties.get(), name);
  if (policy == eRecommended) policy = eNotSetOutside;
  const bool known = foreign && foreign->isKnown();
  return qs::evaluate(known ? &*foreign : nullptr, eStatusNoSuchProperty, temperatures, {P, policy}, results);
}

HRESULT COQSCompoundCollection::EvaluateCompoundArray(LPCOLESTR name, LONG rows, const LONG* positions, LONG count,
                                                      const double* temperatures, double P, tagLimitPolicyEnum policy,
                                                      double* values, double* firstDerivatives,
                                                      double* secondDerivatives, LONG* statuses) noexcept {
  const EvaluationResults results{values, firstDerivatives, secondDerivatives, statuses};
  if (const HRESULT hr = checkEvaluation(rows, count, temperatures, policy, results); FAILED(hr)) return report(hr);
  return guarded([&] {
    const WideView text = viewOf(name);
    const auto key = findKey(text);
    const auto positionOf = [&](LONG row) { return positions ? positions[row] : row; };
    const auto columns = static_cast<std::size_t>(count);
    bool all = true;
    if (key && count == 1 && !firstDerivatives && !secondDerivatives) {
      const double T = *temperatures;
      const Key known = *key;
      std::array<double, kBlockLength> ownValues;
      std::array<LONG, kBlockLength> ownStatuses;
      std::array<const CQSAbstractProp*, kBlockLength> properties;
      for (LONG begin = 0; begin < rows; begin += static_cast<LONG>(kBlockLength)) {
        const EvaluationResults block = results.from(static_cast<std::size_t>(begin));
        const std::size_t size = std::min(static_cast<std::size_t>(rows - begin), kBlockLength);
        // No call leaves the module between taking the properties and evaluating them.
        for (std::size_t i = 0; i < size; ++i) {
          const COQSCompound* own = COQSCompound::ofThisClass(compoundAt(positionOf(begin + static_cast<LONG>(i))));
          properties[i] = own ? own->property(known) : nullptr;
          if (properties[i]) fetchEquation(*properties[i]);
        }
        double* const found = block.values ? block.values : ownValues.data();
        LONG* const statusesFound = block.statuses ? block.statuses : ownStatuses.data();
        if (evaluateWithin(std::span(properties).first(size), T, P, found, statusesFound)) continue;
        for (std::size_t i = 0; i < size; ++i)
          if (statusesFound[i] == 0)
            all &= evaluate(positionOf(begin + static_cast<LONG>(i)), key, text, {&T, 1}, P, policy, block.from(i));
      }
      return all ? S_OK : S_FALSE;
    }
    // The first row may be the temperatures.
    for (LONG row = rows; row-- > 0;)
      all &= evaluate(positionOf(row), key, text, {temperatures, columns}, P, policy,
                      results.from(static_cast<std::size_t>(row) * columns));
    return all ? S_OK : S_FALSE;
  });
}

HRESULT COQSCompoundCollection::EvaluateCompounds(BSTR name, tagQuantityEnum quantity, VARIANT temperatures, double P,
                                                  tagLimitPolicyEnum policy, VARIANT positions, VARIANT* statuses,
                                                  VARIANT* values) noexcept {
  if (!statuses || !values) return report(E_POINTER);
  return guarded([&] {
    const OneOrMany given = numbersFrom(temperatures);
    std::vector<LONG> chosen;
    if (positions.vt == VT_EMPTY || positions.vt == VT_NULL) {
      chosen.resize(static_cast<std::size_t>(count()));
      std::iota(chosen.begin(), chosen.end(), 0);
    } else {
      // What is no whole number is the position of no compound.
      for (const double position : numbersFrom(positions).numbers)
        chosen.push_back(position >= 0 && position < kMostElements && position == std::floor(position)
                             ? static_cast<LONG>(position)
                             : -1);
    }
    const std::size_t rows = chosen.size(), columns = given.numbers.size();
    if (columns > 0 && rows > std::size_t{kMostElements} / columns)
      return because(E_OUTOFMEMORY, {"more than ", kMostElements, " values are asked for"});
    std::vector<double> numbers(rows * columns);
    std::vector<LONG> found(rows * columns);
    const EvaluationResults results = resultsOf(quantity, numbers.data(), found.data());
    const HRESULT hr = EvaluateCompoundArray(name, static_cast<LONG>(rows), chosen.data(), static_cast<LONG>(columns),
                                             given.numbers.data(), P, policy, results.values, results.firstDerivatives,
                                             results.secondDerivatives, results.statuses);
    check(FAILED(hr) ? passOn(hr) : hr);
    give(numbers, found, true, given.isArray ? rows : 0, values, statuses);
    return hr;
  });
}

}  // namespace qs
