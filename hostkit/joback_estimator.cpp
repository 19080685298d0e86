#include "hostkit/joback_estimator.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/host_arrays.h"
#include "props/value_source.h"

namespace qs::hostkit {
namespace {

struct Contribution {
  int atoms;
  double t, p, v, b;
};

// Contributions to Tc, Pc, Vc and Tb. Ring groups are those of benzene rings.
constexpr Contribution kCH3{4, 0.0141, -0.0012, 65.0, 23.58};
constexpr Contribution kCH2{3, 0.0189, 0.0000, 56.0, 22.88};
constexpr Contribution kCH{2, 0.0164, 0.0020, 41.0, 21.74};
constexpr Contribution kC{1, 0.0067, 0.0043, 27.0, 18.25};
constexpr Contribution kDoubleCH2{3, 0.0113, -0.0028, 56.0, 18.18};
constexpr Contribution kDoubleCH{2, 0.0129, -0.0006, 46.0, 24.96};
constexpr Contribution kDoubleC{1, 0.0117, 0.0011, 38.0, 24.14};
constexpr Contribution kRingCH{2, 0.0082, 0.0011, 41.0, 26.73};
constexpr Contribution kRingC{1, 0.0143, 0.0008, 32.0, 31.01};
constexpr Contribution kOH{2, 0.0741, 0.0112, 28.0, 92.88};
constexpr Contribution kPhenolOH{2, 0.0240, 0.0184, -25.0, 76.34};
constexpr Contribution kEther{1, 0.0168, 0.0015, 18.0, 22.42};
constexpr Contribution kKetone{2, 0.0380, 0.0031, 62.0, 76.75};
constexpr Contribution kAldehyde{3, 0.0379, 0.0030, 82.0, 72.24};
constexpr Contribution kAcid{4, 0.0791, 0.0077, 89.0, 169.09};
constexpr Contribution kEster{3, 0.0481, 0.0005, 82.0, 81.10};
constexpr Contribution kNH2{3, 0.0243, 0.0109, 38.0, 73.23};
constexpr Contribution kNH{2, 0.0295, 0.0077, 35.0, 50.17};

// A UNIFAC sub-group: its bonds to other groups, its carbon atoms in a benzene ring, and its Joback groups. Ring
// carbons also bind to their ring.
struct SubGroup {
  LONG number;
  int bonds;
  int ringCarbons;
  const Contribution* parts[2];
};
constexpr SubGroup kSubGroups[] = {
    {1, 1, 0, {&kCH3}},                    // CH3
    {2, 2, 0, {&kCH2}},                    // CH2
    {3, 3, 0, {&kCH}},                     // CH
    {4, 4, 0, {&kC}},                      // C
    {5, 1, 0, {&kDoubleCH2, &kDoubleCH}},  // CH2=CH
    {6, 2, 0, {&kDoubleCH, &kDoubleCH}},   // CH=CH
    {7, 2, 0, {&kDoubleCH2, &kDoubleC}},   // CH2=C
    {8, 3, 0, {&kDoubleCH, &kDoubleC}},    // CH=C
    {9, 4, 0, {&kDoubleC, &kDoubleC}},     // C=C
    {10, 0, 1, {&kRingCH}},                // ACH
    {11, 1, 1, {&kRingC}},                 // AC
    {12, 0, 1, {&kRingC, &kCH3}},          // ACCH3
    {13, 1, 1, {&kRingC, &kCH2}},          // ACCH2
    {14, 2, 1, {&kRingC, &kCH}},           // ACCH
    {15, 1, 0, {&kOH}},                    // OH
    {16, 0, 0, {&kCH3, &kOH}},             // CH3OH
    {18, 0, 1, {&kRingC, &kPhenolOH}},     // ACOH
    {19, 1, 0, {&kCH3, &kKetone}},         // CH3CO
    {20, 2, 0, {&kCH2, &kKetone}},         // CH2CO
    {21, 1, 0, {&kAldehyde}},              // CHO
    {22, 1, 0, {&kCH3, &kEster}},          // CH3COO
    {23, 2, 0, {&kCH2, &kEster}},          // CH2COO
    {25, 1, 0, {&kCH3, &kEther}},          // CH3O
    {26, 2, 0, {&kCH2, &kEther}},          // CH2O
    {27, 3, 0, {&kCH, &kEther}},           // CHO in an ether
    {30, 1, 0, {&kCH2, &kNH2}},            // CH2NH2
    {31, 2, 0, {&kCH, &kNH2}},             // CHNH2
    {32, 1, 0, {&kCH3, &kNH}},             // CH3NH
    {33, 2, 0, {&kCH2, &kNH}},             // CH2NH
    {34, 3, 0, {&kCH, &kNH}},              // CHNH
    {43, 1, 0, {&kAcid}},                  // COOH
};

// More groups, and more of one kind, than any molecule has.
constexpr LONG kMost = 1000;

// The elements of a compound's array, up to one more than the most.
std::vector<LONG> groupsOf(IDispatch* array) {
  const auto integers = ComPtr<IIntegerArrayDisp>::from(array);
  if (!integers) fail(E_NOINTERFACE, {"the compound's groups are no array of integers"});
  return firstElementsOf<LONG>(integers.get(), kMost + 1);
}

// The sums over a compound's groups; nothing when it has none or the method does not apply.
std::optional<Contribution> sumOf(IDispatch* compound) {
  const auto groups = ComPtr<ICompoundUNIFAC1>::from(compound);
  if (!groups) fail(E_NOINTERFACE, {"the compound has no UNIFAC groups to ask for"});
  ComPtr<IDispatch> typeArray, countArray;
  const HRESULT result = groups->get_UNIFAC1Groups(typeArray.out(), countArray.out());
  check(compound, result, {"the compound's groups"});
  if (result != S_OK) return std::nullopt;
  const std::vector<LONG> types = groupsOf(typeArray.get()), counts = groupsOf(countArray.get());
  if (types.size() != counts.size() || types.size() > static_cast<std::size_t>(kMost)) return std::nullopt;

  Contribution sum{};
  int bondEnds = 0, ringCarbons = 0, pieces = 0;
  for (std::size_t i = 0; i < types.size(); ++i) {
    const LONG count = counts[i];
    if (count == 0) continue;
    const auto* group = std::ranges::find(kSubGroups, types[i], &SubGroup::number);
    if (group == std::end(kSubGroups) || count < 0 || count > kMost) return std::nullopt;
    bondEnds += count * group->bonds;
    ringCarbons += count * group->ringCarbons;
    if (group->ringCarbons == 0) pieces += count;
    for (const Contribution* part : group->parts) {
      if (!part) continue;
      sum.atoms += count * part->atoms;
      sum.t += count * part->t;
      sum.p += count * part->p;
      sum.v += count * part->v;
      sum.b += count * part->b;
    }
  }
  // A molecule without rings, benzene rings counting as one piece each, has one bond less than it has pieces.
  constexpr int kRingSize = 6;
  if (ringCarbons % kRingSize != 0) return std::nullopt;
  pieces += ringCarbons / kRingSize;
  if (pieces == 0 || bondEnds != 2 * (pieces - 1)) return std::nullopt;
  return sum;
}

double boilingPoint(IDispatch* compound, const Contribution& sum) {
  const auto basic = ComPtr<IBasicCompound>::from(compound);
  LONG dependencies = 0;
  double known = 0.0;
  if (basic && basic->get_NBP(298.15, 101.325, eNoExtrapolation, &dependencies, &known) == S_OK) return known;
  return 198.2 + sum.b;
}

double criticalTemperature(IDispatch* compound, const Contribution& sum) {
  return boilingPoint(compound, sum) / (0.584 + 0.965 * sum.t - sum.t * sum.t);
}

double criticalPressure(IDispatch*, const Contribution& sum) {
  constexpr double kilopascalPerBar = 100.0;
  const double root = 0.113 + 0.0032 * sum.atoms - sum.p;
  return kilopascalPerBar / (root * root);
}

double criticalVolume(IDispatch*, const Contribution& sum) { return (17.5 + sum.v) / 1000.0; }

struct Property {
  WideView name;
  double (*estimate)(IDispatch* compound, const Contribution& sum);
};
constexpr Property kProperties[] = {
    {OLESTR("PC"), criticalPressure}, {OLESTR("TC"), criticalTemperature}, {OLESTR("VC"), criticalVolume}};

}  // namespace

HRESULT JobackEstimator::Get_SupportedPropList(INT index, BSTR* name) noexcept {
  if (!name) return report(E_POINTER);
  *name = nullptr;
  if (index < 0 || static_cast<std::size_t>(index) >= std::size(kProperties))
    return report(S_FALSE, {"there are ", std::size(kProperties), " properties"});
  return guarded([&] {
    *name = Bstr(kProperties[index].name).release();
    return S_OK;
  });
}

HRESULT JobackEstimator::Set_Path(BSTR) noexcept { return S_OK; }

HRESULT JobackEstimator::Estimate(IDispatch* compound, BSTR property, double* value) noexcept {
  if (!value) return report(E_POINTER);
  if (!compound) return report(E_INVALIDARG, {"the compound is null"});
  return guardedLookUp([&] {
    const auto* known = std::ranges::find(kProperties, viewOf(property), &Property::name);
    if (known == std::end(kProperties)) return because(S_FALSE, {"the method does not estimate ", property});
    const auto sum = sumOf(compound);
    if (!sum) return because(S_FALSE, {"the method does not cover the compound's UNIFAC groups, or there are none"});
    *value = known->estimate(compound, *sum);
    return S_OK;
  });
}

HRESULT JobackEstimator::Get_ValueSource(BSTR, BSTR, BSTR name, tagValueKindEnum* kind, tagValueQualityEnum* quality,
                                         BSTR* title, BSTR* authors, INT* year, BSTR* licence, BSTR* changes,
                                         BSTR* uncertainty, BSTR* note) noexcept {
  return guardedLookUp([&] {
    ValueSource source;
    if (std::ranges::find(kProperties, viewOf(name), &Property::name) != std::end(kProperties)) {
      source.kind = eKindEstimated;
      source.title =
          Bstr(OLESTR("Estimation of pure-component properties from group-contributions, "
                      "Chem. Eng. Commun. 57 (1987) 233-243"));
      source.authors = Bstr(OLESTR("K. G. Joback, R. C. Reid"));
      source.year = 1987;
      source.note = Bstr(OLESTR("from the compound's UNIFAC groups"));
    }
    return std::move(source).give(kind, quality, title, authors, year, licence, changes, uncertainty, note);
  });
}

}  // namespace qs::hostkit
