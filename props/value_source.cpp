#include "props/value_source.h"

namespace qs {

HRESULT ValueSource::give(tagValueKindEnum* kindOut, tagValueQualityEnum* qualityOut, BSTR* titleOut, BSTR* authorsOut,
                          INT* yearOut, BSTR* licenceOut, BSTR* changesOut, BSTR* uncertaintyOut, BSTR* noteOut) && {
  if (!kindOut || !qualityOut || !titleOut || !authorsOut || !yearOut || !licenceOut || !changesOut ||
      !uncertaintyOut || !noteOut)
    return E_POINTER;
  const HRESULT result = isKnown() ? S_OK : S_FALSE;
  *kindOut = kind;
  *qualityOut = quality;
  *titleOut = title.release();
  *authorsOut = authors.release();
  *yearOut = year;
  *licenceOut = licence.release();
  *changesOut = changes.release();
  *uncertaintyOut = uncertainty.release();
  *noteOut = note.release();
  return result;
}

}  // namespace qs
