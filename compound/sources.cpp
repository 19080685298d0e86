// Where a compound's values come from.
#include "compound/compound.h"

namespace qs {

std::optional<database::ProvenanceFile> DatabaseRecord::openProvenance() const {
  return build ? database::ProvenanceFile::open(build->directory, build->number) : std::nullopt;
}

ValueSource DatabaseRecord::sourceOf(WideView name, const CQSAbstractProp& property,
                                     const std::optional<database::ProvenanceFile>& provenance) const {
  if (!property.isOfDatabase()) return property.source();
  return provenance ? provenance->sourceOf(compound, name) : ValueSource();
}

HRESULT COQSCompound::GetPropertySource(BSTR name, tagValueKindEnum* kind, tagValueQualityEnum* quality, BSTR* title,
                                        BSTR* authors, INT* year, BSTR* licence, BSTR* changes, BSTR* uncertainty,
                                        BSTR* note) noexcept {
  return guardedLookUp([&] {
    ValueSource source;
    if (const CQSAbstractProp* property = content_.properties.named(viewOf(name))) {
      const DatabaseRecord& record = content_.record;
      source =
          record.sourceOf(viewOf(name), *property, property->isOfDatabase() ? record.openProvenance() : std::nullopt);
    }
    const HRESULT given =
        std::move(source).give(kind, quality, title, authors, year, licence, changes, uncertainty, note);
    if (given != S_FALSE) return given;
    return because(S_FALSE, {"it is not known where the property \"", name, "\" comes from"});
  });
}

HRESULT COQSCompound::SetPropertySource(BSTR name, tagValueKindEnum kind, tagValueQualityEnum quality, BSTR title,
                                        BSTR authors, INT year, BSTR licence, BSTR changes, BSTR uncertainty,
                                        BSTR note) noexcept {
  if (!isKind(kind) || !isQuality(quality))
    return report(E_INVALIDARG, {"there is no kind ", kind, " or no quality ", quality});
  return guardedLookUp([&] {
    CQSAbstractProp* property = content_.properties.named(viewOf(name));
    if (!property) return noProperty(name);
    property->setSource({kind, quality, Bstr::copyOf(title), Bstr::copyOf(authors), year, Bstr::copyOf(licence),
                         Bstr::copyOf(changes), Bstr::copyOf(uncertainty), Bstr::copyOf(note)});
    return S_OK;
  });
}

}  // namespace qs
