#include "hostkit/json_loader.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <string>
#include <type_traits>

#include "com/bstr.h"
#include "com/host_arrays.h"
#include "com/not_set.h"
#include "platform/folder.h"
#include "platform/input_file.h"
#include "platform/number_text.h"
#include "platform/system_reason.h"

namespace qs::hostkit {
namespace {

using database::CompoundData;

constexpr WideView kExtension = OLESTR(".json");

// An identity field: its text, or null when it is not known.
struct IdentityText {
  WideView name;
  tagPropTypeEnum type;
  Bstr (*text)(const CompoundData& compound);
};

Bstr shown(const std::string& text) { return text.empty() ? Bstr() : Bstr(widen(text)); }
Bstr shown(std::optional<std::int32_t> number) {
  if (!number) return Bstr();
  WideString digits;
  appendInteger(digits, *number);
  return Bstr(digits);
}

template <auto field>
constexpr IdentityText textOf(WideView name) {
  constexpr bool isText = std::is_same_v<decltype(field), std::string CompoundData::*>;
  return {name, isText ? PointPropBSTR : PointPropLong,
          [](const CompoundData& compound) { return shown(compound.*field); }};
}

namespace identity {
#define BANK_FIELD(key, field, record_name, member) \
  constexpr IdentityText key = textOf<&CompoundData::field>(OLESTR(#key));
#include "props/identity.def"
constexpr IdentityText VelcorinID = textOf<&CompoundData::number>(OLESTR("VelcorinID"));
}  // namespace identity

// In the order in which they are listed.
constexpr auto kIdentityFields = std::to_array<IdentityText>({
    identity::Name,
    identity::IUPACName,
    identity::CASN,
    identity::ChemicalFormula,
    identity::VelcorinID,
    identity::PPDSID,
    identity::DDBID,
    identity::DIPPRID,
    identity::CMAID,
    identity::PPAttribute,
    identity::Family,
    identity::NonCondensable,
});
constexpr bool isListed(const IdentityText& field) {
  return std::ranges::count(kIdentityFields, field.name, &IdentityText::name) == 1;
}
#define BANK_FIELD(key, field, record_name, member) static_assert(isListed(identity::key));
#include "props/identity.def"

// The UNIFAC groups as two lists.
struct GroupList {
  WideView name;
  int database::UnifacGroup::*member;
};
constexpr GroupList kGroupLists[] = {
    {OLESTR("VELUNIFACSubGr"), &database::UnifacGroup::subgroup},
    {OLESTR("VELUNIFACNoGr"), &database::UnifacGroup::count},
};

template <class Table>
auto findNamed(const Table& table, WideView name) -> decltype(std::begin(table)) {
  const auto entry = std::ranges::find(table, name, [](const auto& row) { return row.name; });
  return entry == std::end(table) ? nullptr : entry;
}

// What a compound has under a name; VoidProp for nothing.
tagPropTypeEnum kindOf(const CompoundData& compound, WideView name) {
  if (const auto* field = findNamed(kIdentityFields, name)) return field->text(compound) ? field->type : VoidProp;
  if (findNamed(kGroupLists, name)) return compound.unifac.empty() ? VoidProp : MultiPointPropLong;
  const auto key = findKey(name);
  if (!key) return VoidProp;
  if (compound.constants.contains(*key)) return PointProp;
  return correlationOf(compound, *key) ? EquationProp : VoidProp;
}

// The names of all that some compound may have, one by one; empty at the end.
WideView nameAt(std::size_t index) {
  if (index < std::size(kIdentityFields)) return kIdentityFields[index].name;
  index -= std::size(kIdentityFields);
  if (index < std::size(kGroupLists)) return kGroupLists[index].name;
  index -= std::size(kGroupLists);
  return index < kKeys.size() ? kKeys[index].name : WideView();
}

// The first, second ... name and kind of what `has` tells a kind other than VoidProp for.
template <class TypeOf>
HRESULT nth(INT index, TypeOf has, BSTR* name, tagPropTypeEnum* type) {
  if (index < 0) return because(S_FALSE, {"position ", index, " is outside"});
  for (std::size_t i = 0; !nameAt(i).empty(); ++i) {
    const tagPropTypeEnum found = has(nameAt(i));
    if (found == VoidProp || index-- > 0) continue;
    *name = Bstr(nameAt(i)).release();
    *type = found;
    return S_OK;
  }
  return because(S_FALSE, {"the list has ended"});
}

std::vector<JsonLoader::Entry> readFolder(const WideString& folder) {
  auto names = namesIn(folder);
  if (!names) fail(E_FAIL, {"folder ", folder, ": ", systemReason().text});
  std::ranges::sort(*names);
  std::vector<JsonLoader::Entry> entries;
  for (const WideString& name : *names) {
    if (name.size() <= kExtension.size() || !name.ends_with(kExtension)) continue;
    bank::Source source = bank::readSource(joinPath(folder, name));
    const auto origins = std::make_shared<const std::map<std::string, bank::Origin>>(std::move(source.origins));
    for (bank::Compound& compound : source.compounds) entries.push_back({std::move(compound), origins});
  }
  return entries;
}

ValueSource sourceOf(const JsonLoader::Entry& entry, Key key) {
  const auto& known = entry.compound.provenance;
  auto found = known.find(key);
  const auto original = bank::hasValue(entry.compound.data, key) ? std::nullopt : database::derivedFrom(key);
  if (original) found = known.find(*original);
  if (found == known.end()) return {};
  database::Provenance provenance = found->second;
  if (original) provenance.kind = eKindDerived;
  const auto origin = entry.origins->find(provenance.origin);
  return database::sourceOf(provenance, origin == entry.origins->end() ? bank::Origin() : origin->second);
}

}  // namespace

const JsonLoader::Entry* JsonLoader::findEntry(BSTR searchKey, BSTR id) const {
  const auto* field = findNamed(kIdentityFields, viewOf(searchKey));
  if (!field || !id) return nullptr;
  const auto matches = [&](const Entry& entry) {
    const Bstr text = field->text(entry.compound.data);
    return text && text.view() == viewOf(id);
  };
  const auto found = std::ranges::find_if(entries_, matches);
  return found == entries_.end() ? nullptr : &*found;
}

const CompoundData* JsonLoader::find(BSTR searchKey, BSTR id) const {
  const Entry* entry = findEntry(searchKey, id);
  return entry ? &entry->compound.data : nullptr;
}

HRESULT JsonLoader::nothing(BSTR searchKey, BSTR id, BSTR name) {
  return because(S_FALSE, {"there is no compound whose ", searchKey, " is \"", id, "\", or it has no ", name});
}

HRESULT JsonLoader::Set_Path(BSTR path) noexcept {
  return guardedLookUp([&] {
    if (path && path_ == viewOf(path)) return S_OK;
    WideString newPath(viewOf(path));
    entries_ = readFolder(newPath);
    path_ = std::move(newPath);
    return S_OK;
  });
}

HRESULT JsonLoader::Get_DBIdentification(BSTR* text) noexcept {
  if (!text) return report(E_POINTER);
  return guardedLookUp([&] {
    *text = Bstr(OLESTR("Folder of JSON compounds")).release();
    return S_OK;
  });
}

HRESULT JsonLoader::Get_SupportedPropList(INT index, BSTR* name, tagPropTypeEnum* type) noexcept {
  if (!name || !type) return report(E_POINTER);
  *name = nullptr;
  // Of a key it depends on the compound which of the two kinds it is.
  const auto usualKind = [this](WideView property) {
    if (const auto* field = findNamed(kIdentityFields, property)) return field->type;
    for (const Entry& entry : entries_)
      if (const tagPropTypeEnum found = kindOf(entry.compound.data, property); found != VoidProp) return found;
    return VoidProp;
  };
  return guardedLookUp([&] { return nth(index, usualKind, name, type); });
}

HRESULT JsonLoader::Get_AllCompounds(BSTR searchKey, INT index, BSTR* id) noexcept {
  if (!id) return report(E_POINTER);
  *id = nullptr;
  return guardedLookUp([&] {
    const auto* field = findNamed(kIdentityFields, viewOf(searchKey));
    if (!field || index < 0 || static_cast<std::size_t>(index) >= entries_.size())
      return because(S_FALSE, {"no compound has position ", index, ", or none has the field ", searchKey});
    // A compound without that field has a place all the same.
    Bstr text = field->text(entries_[static_cast<std::size_t>(index)].compound.data);
    *id = text ? text.release() : Bstr(WideView(OLESTR(""))).release();
    return S_OK;
  });
}

HRESULT JsonLoader::Get_Prop(BSTR searchKey, BSTR id, INT index, BSTR* name, tagPropTypeEnum* type) noexcept {
  if (!name || !type) return report(E_POINTER);
  *name = nullptr;
  return guardedLookUp([&] {
    const CompoundData* compound = find(searchKey, id);
    if (!compound) return because(S_FALSE, {"there is no compound whose ", searchKey, " is \"", id, "\""});
    return nth(
        index, [compound](WideView property) { return kindOf(*compound, property); }, name, type);
  });
}

HRESULT JsonLoader::Get_PropType(BSTR searchKey, BSTR id, BSTR name, tagPropTypeEnum* type) noexcept {
  if (!type) return report(E_POINTER);
  return guardedLookUp([&] {
    const CompoundData* compound = find(searchKey, id);
    const tagPropTypeEnum found = compound ? kindOf(*compound, viewOf(name)) : VoidProp;
    if (found == VoidProp) return nothing(searchKey, id, name);
    *type = found;
    return S_OK;
  });
}

HRESULT JsonLoader::Get_PropSingleVal(BSTR searchKey, BSTR id, BSTR name, double* number, BSTR* text) noexcept {
  if (!number || !text) return report(E_POINTER);
  *text = nullptr;
  return guardedLookUp([&] {
    const CompoundData* compound = find(searchKey, id);
    if (!compound) return nothing(searchKey, id, name);
    if (const auto* field = findNamed(kIdentityFields, viewOf(name))) {
      Bstr value = field->text(*compound);
      if (!value) return nothing(searchKey, id, name);
      if (field->type == PointPropLong)
        *number = readInteger(narrow(value.view()));
      else
        *text = value.release();
      return S_OK;
    }
    const auto key = findKey(viewOf(name));
    const auto constant = key ? compound->constants.find(*key) : compound->constants.end();
    if (constant == compound->constants.end()) return nothing(searchKey, id, name);
    *number = constant->second;
    return S_OK;
  });
}

HRESULT JsonLoader::Get_PropEquation(BSTR searchKey, BSTR id, BSTR name, tagEquationShapeEnum* shape, double* tMin,
                                     double* tMax, double* pMin, double* pMax, IRealArrayDisp** coefficients,
                                     tagXYShapeEnum* xShape, tagXYShapeEnum* yShape, double* xNorm, double* yNorm,
                                     double* xPow, double* yPow, double* a, double* b) noexcept {
  if (!shape || !tMin || !tMax || !pMin || !pMax || !coefficients || !xShape || !yShape || !xNorm || !yNorm || !xPow ||
      !yPow || !a || !b)
    return report(E_POINTER);
  *coefficients = nullptr;
  return guardedLookUp([&] {
    const CompoundData* compound = find(searchKey, id);
    const auto key = findKey(viewOf(name));
    const auto correlation = compound && key ? correlationOf(*compound, *key) : std::nullopt;
    if (!correlation) return nothing(searchKey, id, name);
    *coefficients = newRealArray(correlation->coefficients).release();
    *shape = correlation->form;
    *tMin = correlation->tmin;
    *tMax = correlation->tmax;
    *pMin = correlation->pmin;
    *pMax = correlation->pmax;
    *xShape = correlation->xShape;
    *yShape = correlation->yShape;
    *xPow = correlation->xPower;
    *yPow = correlation->yPower;
    *xNorm = *yNorm = 1.0;
    *a = *b = kEmptyValue;
    return S_OK;
  });
}

HRESULT JsonLoader::Get_PropCOM(BSTR searchKey, BSTR id, BSTR name, BSTR* className, IPCProperty** component) noexcept {
  if (!className || !component) return report(E_POINTER);
  *className = nullptr;
  *component = nullptr;
  return report(nothing(searchKey, id, name));
}

HRESULT JsonLoader::Get_PropMultiVal(BSTR searchKey, BSTR id, BSTR name, IDispatch** values) noexcept {
  if (!values) return report(E_POINTER);
  *values = nullptr;
  return guardedLookUp([&] {
    const CompoundData* compound = find(searchKey, id);
    const auto* list = findNamed(kGroupLists, viewOf(name));
    if (!compound || !list || compound->unifac.empty()) return nothing(searchKey, id, name);
    std::vector<LONG> numbers;
    for (const database::UnifacGroup& group : compound->unifac) numbers.push_back(group.*(list->member));
    *values = newIntegerArray(numbers).release();
    return S_OK;
  });
}

HRESULT JsonLoader::Get_AllSynonyms(BSTR searchKey, BSTR id, INT index, BSTR* synonym) noexcept {
  if (!synonym) return report(E_POINTER);
  *synonym = nullptr;
  return guardedLookUp([&] {
    const CompoundData* compound = find(searchKey, id);
    if (!compound || index < 0 || static_cast<std::size_t>(index) >= compound->synonyms.size())
      return because(S_FALSE, {"there is no compound whose ", searchKey, " is \"", id, "\", or no synonym ", index});
    *synonym = Bstr(widen(compound->synonyms[static_cast<std::size_t>(index)])).release();
    return S_OK;
  });
}

HRESULT JsonLoader::Get_ValueSource(BSTR searchKey, BSTR id, BSTR name, tagValueKindEnum* kind,
                                    tagValueQualityEnum* quality, BSTR* title, BSTR* authors, INT* year, BSTR* licence,
                                    BSTR* changes, BSTR* uncertainty, BSTR* note) noexcept {
  return guardedLookUp([&] {
    const Entry* entry = findEntry(searchKey, id);
    const auto key = entry ? findKey(viewOf(name)) : std::nullopt;
    return (key ? sourceOf(*entry, *key) : ValueSource())
        .give(kind, quality, title, authors, year, licence, changes, uncertainty, note);
  });
}

}  // namespace qs::hostkit
