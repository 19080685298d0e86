// The XML form of a compound.
#include "compound/compound.h"

namespace qs {

HRESULT COQSCompound::CharacterData(BSTR) noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::StartElement(BSTR, TaggedAttributes*) noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::EndElement(BSTR) noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::Comment() noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::ProcessElement(BSTR, TaggedAttributes*) noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::Error() noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::StartDocument() noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::EndDocument() noexcept { return E_NOTIMPL; }
HRESULT COQSCompound::StoreAsXML(BSTR*) noexcept { return E_NOTIMPL; }

}  // namespace qs
