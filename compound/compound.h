// COQSCompound, the pure-compound record: identity, fixed properties and every interface that reads or writes them. The
// methods of each group of interfaces are defined in a file of their own.
//
// A null out-parameter returns E_POINTER, and nothing has changed; only the getters of single properties and of their
// ranges do not check. An object belongs to its apartment; calls are not synchronised.
#pragma once

#include <atomic>
#include <cstring>
#include <memory>

#include "automation/coclass.h"
#include "compound/content.h"
#include "compound/peer.h"
#include "compound/xml_reader.h"
#include "persist/shared_catalogues.h"
#include "props/evaluation.h"
#include "xml/reading.h"

namespace qs {

// IBasicCompound returns S_OK for two identity fields even when they are not known. ICompoundID and ICompoundFamily
// return S_FALSE for the same fields under the same names. Each of the three has its own version.
class BasicCompoundImpl : public Dual<IBasicCompound> {
 public:
  STDMETHODIMP get_VelcorinID(INT* value) noexcept final { return basicVelcorinId(value); }
  STDMETHODIMP get_Family(tagCompoundFamilyEnum* value) noexcept final { return basicFamily(value); }

 protected:
  virtual HRESULT basicVelcorinId(INT* value) noexcept = 0;
  virtual HRESULT basicFamily(tagCompoundFamilyEnum* value) noexcept = 0;
};

class CompoundIDImpl : public Dual<ICompoundID> {
 public:
  STDMETHODIMP get_VelcorinID(INT* value) noexcept final { return knownVelcorinId(value); }

 protected:
  virtual HRESULT knownVelcorinId(INT* value) noexcept = 0;
};

class CompoundFamilyImpl : public Dual<ICompoundFamily> {
 public:
  STDMETHODIMP get_Family(tagCompoundFamilyEnum* value) noexcept final { return knownFamily(value); }

 protected:
  virtual HRESULT knownFamily(tagCompoundFamilyEnum* value) noexcept = 0;
};

class COQSCompound final
    : public Coclass<COQSCompound, BasicCompoundImpl, ICompoundReferenceStateProperties, ICompoundPR, ICompoundCOSTALD,
                     ICompoundCavett, ICompoundViscosity, ICompoundChaoSeader, ICompoundChienNull, ICompoundVirial,
                     ICompoundPRSV, ICompoundSRK, ICompoundWilson, CompoundIDImpl, CompoundFamilyImpl, ICompoundUNIFAC1,
                     ICompoundUNIQUAC1, ICompoundSolidProperties, ICompoundIDPut, ICompoundFamilyPut,
                     ICompoundUNIFAC1Put, ICompoundInitFromVelDB, ICompoundProp, ICompoundPropPut, ICompoundCopy,
                     XMLParserClient, IXMLStore, IUserProperty, ICompEqnXYShape, IXMLStoreEx, ICompoundEvaluation,
                     IPropertySource, ICompoundEvaluationArrays, ICompoundPeer> {
 public:
  COQSCompound() { virtualTable_.store(virtualTableOf(this), std::memory_order_relaxed); }
  ~COQSCompound();

  // Values and ranges of the fixed keys. Two interfaces that read the same key return the same.
#define FIXED_KEY(key, help, unit, policy, interface_name, dispid)                                             \
  STDMETHODIMP get_##key(double temperature, double pressure, tagExtrapolationEnum method, LONG* dependencies, \
                         double* value) noexcept override {                                                    \
    return valueOf(content_.properties[Key::key], temperature, pressure, method, dependencies, value);         \
  }                                                                                                            \
  STDMETHODIMP get_##key##TPRange(double* tMin, double* tMax, double* pMin, double* pMax) noexcept override {  \
    return rangeOf(content_.properties[Key::key], tMin, tMax, pMin, pMax);                                     \
  }
#include "props/keys.def"

  // values.cpp
  STDMETHODIMP get_ViscosityThetas(double* thetaA, double* thetaB) noexcept override;
  STDMETHODIMP get_UNIQUAC1Parameters(double* r, double* q) noexcept override;

  // Identity fields without rules of their own.
#define IDENTITY_TEXT(key, field, interface_name, attribute)                                                 \
  STDMETHODIMP get_##key(BSTR* value) noexcept override { return giveCopy(content_.identity.field, value); } \
  STDMETHODIMP put_##key(BSTR value) noexcept override { return takeCopy(content_.identity.field, value); }
#define IDENTITY_INTEGER(key, field, interface_name, attribute)                                                \
  STDMETHODIMP get_##key(INT* value) noexcept override { return giveInteger(content_.identity.field, value); } \
  STDMETHODIMP put_##key(INT value) noexcept override { return takeInteger(content_.identity.field, value); }
#include "props/identity.def"

  // identity.cpp
  STDMETHODIMP get_NumberOfSynonymNames(INT* value) noexcept override;
  STDMETHODIMP get_SynonymName(INT index, BSTR* value) noexcept override;
  STDMETHODIMP put_NumberOfSynonymNames(INT value) noexcept override;
  STDMETHODIMP put_SynonymName(INT index, BSTR value) noexcept override;
  STDMETHODIMP put_VelcorinID(INT value) noexcept override;
  STDMETHODIMP IsWater() noexcept override;
  STDMETHODIMP IsDEG() noexcept override;
  STDMETHODIMP IsTEG() noexcept override;
  STDMETHODIMP IsEG() noexcept override;
  STDMETHODIMP IsMethanol() noexcept override;

  // family.cpp
  STDMETHODIMP get_NonCondensable(VARIANT_BOOL* value) noexcept override;
  STDMETHODIMP GetNonCondensable(BYTE* value) noexcept override;
  STDMETHODIMP put_Family(tagCompoundFamilyEnum value) noexcept override;
  STDMETHODIMP put_NonCondensable(VARIANT_BOOL value) noexcept override;

  // unifac.cpp
  STDMETHODIMP get_UNIFAC1NumberOfGroups(INT* value) noexcept override;
  STDMETHODIMP get_UNIFAC1Groups(IDispatch** types, IDispatch** counts) noexcept override;
  STDMETHODIMP put_UNIFAC1NumberOfGroups(INT value) noexcept override;
  STDMETHODIMP put_UNIFAC1Groups(INT groupCount, IDispatch* types, IDispatch* counts) noexcept override;
  STDMETHODIMP put_VELUNIFACNoGr(INT groupCount, IIntegerArrayDisp* counts) noexcept override;
  STDMETHODIMP put_VELUNIFACSubGr(INT groupCount, IIntegerArrayDisp* types) noexcept override;

  // database.cpp
  STDMETHODIMP Init(BSTR directory, INT number) noexcept override;

  // properties.cpp
  STDMETHODIMP GetNumbOfProperty(BYTE fixed, INT* count) noexcept override;
  STDMETHODIMP GetPropertyName(BYTE fixed, INT index, BSTR* name, tagPropTypeEnum* type) noexcept override;
  STDMETHODIMP GetPropertyValue(BSTR name, double temperature, double pressure, tagExtrapolationEnum method,
                                LONG* dependencies, double* value) noexcept override;
  STDMETHODIMP GetPropertyType(BSTR name, tagPropTypeEnum* type) noexcept override;
  STDMETHODIMP GetEquationProperty(BSTR name, tagEquationShapeEnum* shape, BSTR* form, double* tMin, double* tMax,
                                   double* pMin, double* pMax, INT* parameterCount,
                                   IRealArrayDisp** parameters) noexcept override;
  STDMETHODIMP GetCOMProperty(BSTR name, BSTR* className, IPCProperty** component) noexcept override;
  STDMETHODIMP GetNumbOfCommonProperty(INT* count) noexcept override;
  STDMETHODIMP GetCommonPropertyName(INT index, BSTR* name, tagPropTypeEnum* type) noexcept override;
  STDMETHODIMP SetPointProperty(BSTR name, BYTE fixed, double value) noexcept override;
  STDMETHODIMP SetEquationProperty(BSTR name, BYTE fixed, tagEquationShapeEnum shape, double tMin, double tMax,
                                   double pMin, double pMax, IRealArrayDisp* parameters) noexcept override;
  STDMETHODIMP SetCOMProperty(BSTR name, BYTE fixed, BSTR className, IPCProperty* component) noexcept override;
  STDMETHODIMP ErasePropFromMap(BSTR name, BYTE fixed) noexcept override;
  STDMETHODIMP FindProperty(BSTR name, BYTE* found, BYTE* fixed) noexcept override;
  STDMETHODIMP GetEquationInfo(tagEquationShapeEnum shape, BSTR* form, INT* parameterCount) noexcept override;
  STDMETHODIMP SetVoidProperty(BSTR name, BYTE fixed) noexcept override;
  STDMETHODIMP GetPropertyLoader(BSTR name, BSTR* loader) noexcept override;
  STDMETHODIMP SetPropertyLoader(BSTR name, BSTR loader) noexcept override;
  STDMETHODIMP GetEquationPropertyXYShape(BSTR name, tagXYShapeEnum* xShape, tagXYShapeEnum* yShape, double* xNorm,
                                          double* yNorm, double* xPow, double* yPow, double* a,
                                          double* b) noexcept override;
  STDMETHODIMP SetEquationPropertyXYShape(BSTR name, tagXYShapeEnum xShape, tagXYShapeEnum yShape, double xNorm,
                                          double yNorm, double xPow, double yPow, double a, double b) noexcept override;

  // evaluation.cpp. S_OK when every number is there, S_FALSE when a status says that one is not. E_INVALIDARG for a
  // number that is not of its enumeration, a negative count, and results that overlap what is read otherwise than as
  // one buffer; E_POINTER where no result is wanted. DISP_E_TYPEMISMATCH for a variant without numbers.
  STDMETHODIMP Evaluate(BSTR name, tagQuantityEnum quantity, VARIANT temperatures, double pressure,
                        tagLimitPolicyEnum policy, VARIANT* statuses, VARIANT* values) noexcept override;
  STDMETHODIMP Integrate(BSTR name, tagIntegrandEnum integrand, double from, VARIANT to, double pressure,
                         tagLimitPolicyEnum policy, VARIANT* statuses, VARIANT* values) noexcept override;
  STDMETHODIMP FindTemperature(BSTR name, VARIANT values, double pressure, VARIANT* statuses,
                               VARIANT* temperatures) noexcept override;
  // Constants have the range of an equation for which none was set.
  STDMETHODIMP GetRange(BSTR name, double* tMin, double* tMax, double* pMin, double* pMax) noexcept override;
  // Unit, help text and recommended policy are those of a key, set or not. The transformations are the shapes, norms
  // and powers of X and Y in turn, then A and B.
  STDMETHODIMP Describe(BSTR name, tagPropTypeEnum* type, tagEquationShapeEnum* shape, BSTR* form,
                        VARIANT* coefficients, double* tMin, double* tMax, double* pMin, double* pMax,
                        VARIANT* transformations, BSTR* unit, BSTR* help, tagLimitPolicyEnum* policy) noexcept override;
  STDMETHODIMP EvaluateArray(LPCOLESTR name, LONG count, const double* temperatures, double pressure,
                             tagLimitPolicyEnum policy, double* values, double* firstDerivatives,
                             double* secondDerivatives, LONG* statuses) noexcept override;
  STDMETHODIMP IntegrateArray(LPCOLESTR name, tagIntegrandEnum integrand, LONG count, const double* from,
                              const double* to, double pressure, tagLimitPolicyEnum policy, double* integrals,
                              LONG* statuses) noexcept override;
  STDMETHODIMP FindTemperatures(LPCOLESTR name, LONG count, const double* values, double pressure, double* temperatures,
                                LONG* statuses) noexcept override;
  // As EvaluateArray, of a name and the key that it is, if it is one. Returns whether all numbers are there.
  bool evaluate(const std::optional<Key>& key, WideView name, std::span<const double> temperatures, double pressure,
                tagLimitPolicyEnum policy, const EvaluationResults& results) const;
  // Null where there is none.
  const CQSAbstractProp* property(Key key) const { return content_.properties[key]; }

  // sources.cpp. S_FALSE when nothing is known of the source, or there is no such property. The file that a database
  // has of its sources is read at each call.
  STDMETHODIMP GetPropertySource(BSTR name, tagValueKindEnum* kind, tagValueQualityEnum* quality, BSTR* title,
                                 BSTR* authors, INT* year, BSTR* licence, BSTR* changes, BSTR* uncertainty,
                                 BSTR* note) noexcept override;
  // E_INVALIDARG for a number that is not of its enumeration.
  STDMETHODIMP SetPropertySource(BSTR name, tagValueKindEnum kind, tagValueQualityEnum quality, BSTR title,
                                 BSTR authors, INT year, BSTR licence, BSTR changes, BSTR uncertainty,
                                 BSTR note) noexcept override;

  // user_properties.cpp
  STDMETHODIMP SetUserProperty(BSTR name, BSTR classId, IDispatch* component) noexcept override;
  STDMETHODIMP GetUserProperty(BSTR name, IDispatch** component) noexcept override;
  STDMETHODIMP GetUserPropertyClassID(BSTR name, BSTR* classId) noexcept override;
  STDMETHODIMP DeleteUserProperty(BSTR name) noexcept override;
  STDMETHODIMP GetNumbOfUserProperty(INT* count) noexcept override;
  STDMETHODIMP GetUserPropertyI(INT index, BSTR* name, BSTR* classId, IDispatch** component) noexcept override;

  // copy.cpp. The new index is CompIdx alone: VelcorinID is the original's, so that a copy of water is water.
  STDMETHODIMP CopyToThis(INT newIndex, IDispatch* original) noexcept override;
  COQSCompound* STDMETHODCALLTYPE compound(const void* module) noexcept override;
  // The compound of an interface, without a reference of its own; null when it is not of this module.
  static const COQSCompound* ofThisModule(IUnknown* object);
  // The same without a call; null for an aggregated compound too.
  static const COQSCompound* ofThisClass(IBasicCompound* object) {
    if (!object || virtualTableOf(object) != virtualTable_.load(std::memory_order_relaxed)) return nullptr;
    const auto* own = static_cast<COQSCompound*>(object);
    return own->isAggregated() ? nullptr : own;
  }
  INT compoundIndex() const { return content_.identity.compoundIndex; }

  // xml.cpp; xml_reader.h describes the results of a parser's events. Elements outside a Compound element return
  // S_FALSE. After an event that fails, and after Error, the compound is as before the element, or as before the
  // document when StartDocument was called.
  STDMETHODIMP CharacterData(BSTR text) noexcept override;
  STDMETHODIMP StartElement(BSTR name, TaggedAttributes* attributes) noexcept override;
  STDMETHODIMP EndElement(BSTR name) noexcept override;
  STDMETHODIMP Comment() noexcept override;
  STDMETHODIMP ProcessElement(BSTR name, TaggedAttributes* attributes) noexcept override;
  STDMETHODIMP Error() noexcept override;
  STDMETHODIMP StartDocument() noexcept override;
  STDMETHODIMP EndDocument() noexcept override;
  STDMETHODIMP StoreAsXML(BSTR* text) noexcept override;
  STDMETHODIMP StoreAsXMLEx(INT form, BSTR* text) noexcept override;

 private:
  friend class RecordReceiver;

  // A property and the status where there is none.
  struct Found {
    const CQSAbstractProp* property;
    LONG missing;
  };
  Found find(const std::optional<Key>& key, WideView name) const;
  EvaluationRequest requestFor(const std::optional<Key>& key, double pressure, tagLimitPolicyEnum policy) const;
  [[gnu::noinline]] HRESULT evaluateArray(LPCOLESTR name, LONG count, const double* temperatures, double pressure,
                                          tagLimitPolicyEnum policy, const EvaluationResults& results) const noexcept;

  static HRESULT valueOf(const CQSAbstractProp* property, double temperature, double pressure,
                         tagExtrapolationEnum method, LONG* dependencies, double* value,
                         const char* member = __builtin_FUNCTION()) noexcept {
    if (!property) return S_FALSE;
    const auto give = [=] {
      property->GetValue(temperature, pressure, method, dependencies, value);
      return isEmpty(*value) ? S_FALSE : S_OK;
    };
    return guarded(give, member);
  }
  static HRESULT rangeOf(const CQSAbstractProp* property, double* tMin, double* tMax, double* pMin,
                         double* pMax) noexcept;
  // At 298.15 K and 101.325 kPa; the empty value when the property writes none.
  static double standardValue(const CQSAbstractProp& property);
  HRESULT standardValues(Key first, Key second, double* firstValue, double* secondValue,
                         const char* member = __builtin_FUNCTION()) const noexcept;

  HRESULT basicVelcorinId(INT* value) noexcept override;
  HRESULT knownVelcorinId(INT* value) noexcept override;
  HRESULT basicFamily(tagCompoundFamilyEnum* value) noexcept override;
  HRESULT knownFamily(tagCompoundFamilyEnum* value) noexcept override;

  static const void* virtualTableOf(const IBasicCompound* object) {
    const void* table;
    std::memcpy(&table, static_cast<const void*>(object), sizeof table);
    return table;
  }
  static inline std::atomic<const void*> virtualTable_ = nullptr;

  [[no_unique_address]] database::CatalogueUse catalogueUse_;
  CompoundContent content_;
  XmlReading<CompoundXmlReader, std::unique_ptr<CompoundContent>> reading_;
};

}  // namespace qs
