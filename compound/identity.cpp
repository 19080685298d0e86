// Names, numbers and the tests for species that thermodynamic packages treat specially.
#include "compound/identity.h"

#include "compound/compound.h"

namespace qs {
namespace {

// Numbers of these species in the system's own data bank.
enum KnownNumber : INT {
  kWater = 19,
  kMethanol = 29,
  kEthyleneGlycol = 30,
  kTriethyleneGlycol = 54,
  kDiethyleneGlycol = 511
};

HRESULT sameNumber(INT field, KnownNumber number) { return field == number ? S_OK : S_FALSE; }

}  // namespace

HRESULT Identity::putSynonym(INT index, BSTR value) {
  if (index < 0 || index > synonymCount || static_cast<std::size_t>(index) >= kMostSynonyms) return S_FALSE;
  Bstr text = Bstr::copyOf(value);
  const auto position = static_cast<std::size_t>(index);
  if (position >= synonyms.size()) synonyms.resize(position + 1);
  synonyms[position] = std::move(text);
  if (index == synonymCount) ++synonymCount;
  return S_OK;
}

HRESULT COQSCompound::put_VelcorinID(INT value) noexcept { return takeInteger(content_.identity.velcorinId, value); }
HRESULT COQSCompound::knownVelcorinId(INT* value) noexcept {
  return giveInteger(content_.identity.velcorinId, value, "get_VelcorinID");
}
HRESULT COQSCompound::basicVelcorinId(INT* value) noexcept {
  const HRESULT given = knownVelcorinId(value);
  return SUCCEEDED(given) ? S_OK : given;
}

HRESULT COQSCompound::get_NumberOfSynonymNames(INT* value) noexcept {
  return giveInteger(content_.identity.synonymCount, value);
}
HRESULT COQSCompound::put_NumberOfSynonymNames(INT value) noexcept {
  return takeInteger(content_.identity.synonymCount, value);
}

HRESULT COQSCompound::get_SynonymName(INT index, BSTR* value) noexcept {
  if (!value) return report(E_POINTER);
  if (index < 0 || index >= content_.identity.synonymCount) return S_FALSE;
  const auto position = static_cast<std::size_t>(index);
  // A count that was put may promise more synonyms than were ever given.
  static const Bstr kNever;
  return giveCopy(position < content_.identity.synonyms.size() ? content_.identity.synonyms[position] : kNever, value);
}

HRESULT COQSCompound::put_SynonymName(INT index, BSTR value) noexcept {
  return guarded([&] { return content_.identity.putSynonym(index, value); });
}

HRESULT COQSCompound::IsWater() noexcept { return sameNumber(content_.identity.velcorinId, kWater); }
HRESULT COQSCompound::IsDEG() noexcept { return sameNumber(content_.identity.velcorinId, kDiethyleneGlycol); }
HRESULT COQSCompound::IsTEG() noexcept { return sameNumber(content_.identity.velcorinId, kTriethyleneGlycol); }
HRESULT COQSCompound::IsEG() noexcept { return sameNumber(content_.identity.velcorinId, kEthyleneGlycol); }
HRESULT COQSCompound::IsMethanol() noexcept { return sameNumber(content_.identity.velcorinId, kMethanol); }

}  // namespace qs
