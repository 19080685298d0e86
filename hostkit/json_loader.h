// A loader component whose data are a folder of compounds as JSON text, in the form that docs/database.md describes.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "automation/coclass.h"
#include "bank/json_source.h"

namespace qs::hostkit {

// Compounds are those of all files *.json of the folder, file by file in the order of their names. They are known by
// the text of one of the identity fields Name, IUPACName, CASN, ChemicalFormula, VelcorinID, PPDSID, DDBID, DIPPRID and
// CMAID, the first match counting. Properties are the identity fields, UNIFAC groups (VELUNIFACSubGr, VELUNIFACNoGr),
// constants and correlations that the source knows, and ideal-gas heat capacity and entropy as they follow from the
// enthalpy. What is not there answers S_FALSE and writes nothing but nulls; E_POINTER for a null out-parameter.
class JsonLoader final : public Coclass<JsonLoader, ILoad, IValueSource> {
 public:
  STDMETHODIMP Get_SupportedPropList(INT index, BSTR* name, tagPropTypeEnum* type) noexcept override;
  // Reads the folder unless it is the one already read. E_FAIL, and the compounds stay, when it cannot be read.
  STDMETHODIMP Set_Path(BSTR path) noexcept override;
  STDMETHODIMP Get_DBIdentification(BSTR* text) noexcept override;
  STDMETHODIMP Get_AllCompounds(BSTR searchKey, INT index, BSTR* id) noexcept override;
  STDMETHODIMP Get_Prop(BSTR searchKey, BSTR id, INT index, BSTR* name, tagPropTypeEnum* type) noexcept override;
  STDMETHODIMP Get_PropType(BSTR searchKey, BSTR id, BSTR name, tagPropTypeEnum* type) noexcept override;
  STDMETHODIMP Get_PropSingleVal(BSTR searchKey, BSTR id, BSTR name, double* number, BSTR* text) noexcept override;
  STDMETHODIMP Get_PropEquation(BSTR searchKey, BSTR id, BSTR name, tagEquationShapeEnum* shape, double* tMin,
                                double* tMax, double* pMin, double* pMax, IRealArrayDisp** coefficients,
                                tagXYShapeEnum* xShape, tagXYShapeEnum* yShape, double* xNorm, double* yNorm,
                                double* xPow, double* yPow, double* a, double* b) noexcept override;
  // The source has no components.
  STDMETHODIMP Get_PropCOM(BSTR searchKey, BSTR id, BSTR name, BSTR* className,
                           IPCProperty** component) noexcept override;
  STDMETHODIMP Get_PropMultiVal(BSTR searchKey, BSTR id, BSTR name, IDispatch** values) noexcept override;
  STDMETHODIMP Get_AllSynonyms(BSTR searchKey, BSTR id, INT index, BSTR* synonym) noexcept override;
  // Of constants and correlations, as the file states it.
  STDMETHODIMP Get_ValueSource(BSTR searchKey, BSTR id, BSTR name, tagValueKindEnum* kind, tagValueQualityEnum* quality,
                               BSTR* title, BSTR* authors, INT* year, BSTR* licence, BSTR* changes, BSTR* uncertainty,
                               BSTR* note) noexcept override;

  struct Entry {
    bank::Compound compound;
    std::shared_ptr<const std::map<std::string, bank::Origin>> origins;  // of its file
  };

 private:
  static HRESULT nothing(BSTR searchKey, BSTR id, BSTR name);
  const Entry* findEntry(BSTR searchKey, BSTR id) const;
  const database::CompoundData* find(BSTR searchKey, BSTR id) const;

  WideString path_;
  std::vector<Entry> entries_;
};

}  // namespace qs::hostkit
