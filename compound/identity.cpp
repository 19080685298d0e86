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

// The value is written even when it is not known.
HRESULT getInteger(INT field, INT* value) {
  if (!value) return E_POINTER;
  *value = field;
  return field == kEmptyInteger ? S_FALSE : S_OK;
}

HRESULT putInteger(INT& field, INT value) {
  field = value;
  return S_OK;
}

HRESULT sameNumber(INT field, KnownNumber number) { return field == number ? S_OK : S_FALSE; }

std::vector<Bstr> copyOf(const std::vector<Bstr>& strings) {
  std::vector<Bstr> copies;
  copies.reserve(strings.size());
  for (const Bstr& string : strings) copies.push_back(Bstr::copyOf(string.get()));
  return copies;
}

}  // namespace

Identity Identity::copy() const {
  return {.name = Bstr::copyOf(name.get()),
          .casNumber = Bstr::copyOf(casNumber.get()),
          .iupacName = Bstr::copyOf(iupacName.get()),
          .chemicalFormula = Bstr::copyOf(chemicalFormula.get()),
          .subFamily = Bstr::copyOf(subFamily.get()),
          .synonymCount = synonymCount,
          .synonyms = copyOf(synonyms),
          .ppAttribute = ppAttribute,
          .velcorinId = velcorinId,
          .ppdsId = ppdsId,
          .ddbId = ddbId,
          .dipprId = dipprId,
          .cmaId = cmaId,
          .compoundIndex = compoundIndex,
          .family = family,
          .nonCondensable = nonCondensable,
          .groupCount = groupCount,
          .groupTypes = groupTypes,
          .groupCounts = groupCounts};
}

HRESULT Identity::putSynonym(INT index, BSTR value) {
  if (index < 0 || index > synonymCount || static_cast<std::size_t>(index) >= kMostSynonyms) return S_FALSE;
  Bstr text = Bstr::copyOf(value);
  const auto position = static_cast<std::size_t>(index);
  if (position >= synonyms.size()) synonyms.resize(position + 1);
  synonyms[position] = std::move(text);
  if (index == synonymCount) ++synonymCount;
  return S_OK;
}

HRESULT COQSCompound::get_Name(BSTR* value) noexcept { return giveCopy(content_.identity.name, value); }
HRESULT COQSCompound::get_CASN(BSTR* value) noexcept { return giveCopy(content_.identity.casNumber, value); }
HRESULT COQSCompound::get_IUPACName(BSTR* value) noexcept { return giveCopy(content_.identity.iupacName, value); }
HRESULT COQSCompound::get_ChemicalFormula(BSTR* value) noexcept {
  return giveCopy(content_.identity.chemicalFormula, value);
}
HRESULT COQSCompound::put_Name(BSTR value) noexcept { return takeCopy(content_.identity.name, value); }
HRESULT COQSCompound::put_CASN(BSTR value) noexcept { return takeCopy(content_.identity.casNumber, value); }
HRESULT COQSCompound::put_IUPACName(BSTR value) noexcept { return takeCopy(content_.identity.iupacName, value); }
HRESULT COQSCompound::put_ChemicalFormula(BSTR value) noexcept {
  return takeCopy(content_.identity.chemicalFormula, value);
}

HRESULT COQSCompound::get_PPAttribute(INT* value) noexcept { return getInteger(content_.identity.ppAttribute, value); }
HRESULT COQSCompound::get_PPDSID(INT* value) noexcept { return getInteger(content_.identity.ppdsId, value); }
HRESULT COQSCompound::get_DDBID(INT* value) noexcept { return getInteger(content_.identity.ddbId, value); }
HRESULT COQSCompound::get_DIPPRID(INT* value) noexcept { return getInteger(content_.identity.dipprId, value); }
HRESULT COQSCompound::get_CMAID(INT* value) noexcept { return getInteger(content_.identity.cmaId, value); }
HRESULT COQSCompound::put_PPAttribute(INT value) noexcept { return putInteger(content_.identity.ppAttribute, value); }
HRESULT COQSCompound::put_VelcorinID(INT value) noexcept { return putInteger(content_.identity.velcorinId, value); }
HRESULT COQSCompound::put_PPDSID(INT value) noexcept { return putInteger(content_.identity.ppdsId, value); }
HRESULT COQSCompound::put_DDBID(INT value) noexcept { return putInteger(content_.identity.ddbId, value); }
HRESULT COQSCompound::put_DIPPRID(INT value) noexcept { return putInteger(content_.identity.dipprId, value); }
HRESULT COQSCompound::put_CMAID(INT value) noexcept { return putInteger(content_.identity.cmaId, value); }

HRESULT COQSCompound::knownVelcorinId(INT* value) noexcept { return getInteger(content_.identity.velcorinId, value); }
HRESULT COQSCompound::basicVelcorinId(INT* value) noexcept {
  if (!value) return E_POINTER;
  *value = content_.identity.velcorinId;
  return S_OK;
}

HRESULT COQSCompound::get_NumberOfSynonymNames(INT* value) noexcept {
  return getInteger(content_.identity.synonymCount, value);
}
HRESULT COQSCompound::put_NumberOfSynonymNames(INT value) noexcept {
  return putInteger(content_.identity.synonymCount, value);
}

HRESULT COQSCompound::get_SynonymName(INT index, BSTR* value) noexcept {
  if (!value) return E_POINTER;
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
