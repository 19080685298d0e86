// COQSCompoundCollection, the ordered compounds of a calculation: a list of its own, or a view, which is a list of
// positions in a parent collection. The methods of each group of interfaces are defined in a file of their own.
//
// A position outside, a name that is not there and an empty slot return S_FALSE and write null; a null out-parameter
// returns E_POINTER, and nothing has changed. A method that fails has changed nothing, unless it says otherwise.
// External objects may call back at any time. An object belongs to its apartment; calls are not synchronised.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "automation/coclass.h"
#include "collection/component_registry.h"
#include "collection/compound_slots.h"
#include "persist/shared_catalogues.h"
#include "props/evaluation.h"
#include "xml/reading.h"

namespace qs {

class COQSCompoundCollection final
    : public Coclass<COQSCompoundCollection, ICompoundCollection, ICompoundCollectionSetup, ICompoundManipulation,
                     ICompCollnIPInfo, ILoadCompoundProp, ISubCompList, ISubCompList1, IQueryLoader,
                     IPureEstimatorHandler, XMLParserClient, IXMLStore, IXMLStoreEx, ICompoundCollectionEvaluation,
                     IItems, ICompoundCollectionEvaluationArrays> {
 public:
  ~COQSCompoundCollection();

  // list.cpp
  STDMETHODIMP get_Compound(INT index, IDispatch** compound) noexcept override;
  // A null compound empties the slot, and so does one whose query fails.
  STDMETHODIMP put_Compound(INT index, IDispatch* compound) noexcept override;
  STDMETHODIMP get_NumberOfCompounds(INT* count) noexcept override;
  // A view can be shortened only: E_FAIL for a larger number. E_OUTOFMEMORY for more than kMostElements.
  STDMETHODIMP put_NumberOfCompounds(INT count) noexcept override;
  // A view finds the compound in its parent by name, or else adds it there.
  STDMETHODIMP AddCompound(IDispatch* compound) noexcept override;
  // Makes the collection as new; a view is no longer one.
  STDMETHODIMP Reset() noexcept override;
  STDMETHODIMP GetBasicCompound(INT index, IBasicCompound** compound) noexcept override;
  STDMETHODIMP GetOffsetH(IRealArrayDisp** offsets) noexcept override;
  STDMETHODIMP PutOffsetH(IRealArrayDisp* offsets) noexcept override;
  STDMETHODIMP GetOffsetS(IRealArrayDisp** offsets) noexcept override;
  STDMETHODIMP PutOffsetS(IRealArrayDisp* offsets) noexcept override;
  STDMETHODIMP MoveCompound(INT compound, INT before) noexcept override;
  STDMETHODIMP RemoveLastCompound() noexcept override;

  // items.cpp
  // A text is a name, a CAS number or a synonym, in this order, regardless of the case of ASCII letters; the first
  // compound counts. A number that is no position returns S_FALSE; DISP_E_TYPEMISMATCH for what is neither.
  STDMETHODIMP get_Item(VARIANT index, IDispatch** compound) noexcept override;
  STDMETHODIMP get_Count(LONG* count) noexcept override;
  STDMETHODIMP get__NewEnum(IUnknown** enumerator) noexcept override;

  // models.cpp
  STDMETHODIMP get_InteractionParameters(BSTR model, IDispatch** parameters) noexcept override;
  STDMETHODIMP put_InteractionParameters(BSTR model, IDispatch* parameters) noexcept override;
  STDMETHODIMP SetPane(BSTR model, BSTR pane) noexcept override;
  STDMETHODIMP CompCollnIPInfo(INT model, INT* count, BSTR* name, BSTR* pane) noexcept override;
  // Models that cannot load are skipped. A failure takes the compound out again, wherever a model has moved it, and
  // out of a view's parents too.
  STDMETHODIMP AddLastCompoundLoadIPs(IDispatch* compound, BSTR directory) noexcept override;

  // loaders.cpp. A view uses the loaders of its parent.
  // The position at which the list takes the compound becomes its index (CompIdx).
  STDMETHODIMP AddCompoundFromLoader(BSTR searchKey, BSTR id, BSTR loader, BYTE useLoader) noexcept override;
  // Each compound that is there now, as by LoadOneCompound without an id; ends at the first failure. S_FALSE when one
  // was not found.
  STDMETHODIMP LoadAllCompounds(BSTR loader, BSTR searchKey, BYTE useLoader) noexcept override;
  // `useLoader` is 0 for the default loader. A null id means what the compound has in the identity field
  // `searchKey`. What the loader lacks keeps its value, as the index (CompIdx) always does; S_FALSE when it has nothing
  // of the compound. E_NOINTERFACE for a compound of another implementation, which cannot be copied back and forth.
  STDMETHODIMP LoadOneCompound(INT index, BSTR loader, BSTR searchKey, BSTR id, BYTE useLoader) noexcept override;
  STDMETHODIMP LoadOneProperty(INT index, BSTR property, BSTR loader, BSTR searchKey, BSTR id,
                               BYTE useLoader) noexcept override;
  STDMETHODIMP SetDefaultLoader(BSTR name, BSTR className, BSTR path, IDispatch* loader) noexcept override;
  STDMETHODIMP AddLoader(BSTR name, BSTR className, BSTR path, IDispatch* loader) noexcept override;
  STDMETHODIMP RemoveLoader(BSTR name) noexcept override;
  STDMETHODIMP GetLoader(BSTR name, IDispatch** loader) noexcept override;
  STDMETHODIMP GetDefaultLoader(BSTR* name, IDispatch** loader) noexcept override;
  // A view's own, which are none.
  STDMETHODIMP GetNumOfLoaders(INT* count) noexcept override;
  STDMETHODIMP GetLoaderI(INT index, BSTR* name, IDispatch** loader) noexcept override;
  STDMETHODIMP SetAsDefaultLoader(BSTR name) noexcept override;

  // views.cpp. A view keeps its parent alive, not the other way round. All views fetched under one name share their
  // positions. E_FAIL for a position outside and for a view with more than 255 others between it and the list,
  // E_INVALIDARG for a null array, E_OUTOFMEMORY for one of more than kMostElements.
  STDMETHODIMP CreateSubCompList(IIntegerArrayDisp* positions, ICompoundCollection** view) noexcept override;
  STDMETHODIMP GetParent(ICompoundCollection** parent) noexcept override;
  STDMETHODIMP GetPositions(IIntegerArrayDisp** positions) noexcept override;
  STDMETHODIMP AddSubCompList(BSTR name, IIntegerArrayDisp* positions) noexcept override;
  STDMETHODIMP GetNumOfSubCompLists(INT* count) noexcept override;
  STDMETHODIMP GetSubCompList(BSTR name, ICompoundCollection** view) noexcept override;
  STDMETHODIMP GetSubCompListI(INT index, BSTR* name, ICompoundCollection** view) noexcept override;
  STDMETHODIMP RemoveSubCompList(BSTR name) noexcept override;

  // query.cpp. The compounds of a database, in the order of its index, whose field has the text. Fields of names match
  // regardless of case and through synonyms too; the field "Synonym" is the synonyms alone.
  STDMETHODIMP GetVelIDs(BSTR directory, BSTR field, BSTR text, IIntegerArrayDisp** numbers) noexcept override;

  // evaluation.cpp. A view's compounds are those of its parent. An empty slot and a position outside have no such
  // property; a compound of another maker is asked for values, and has no derivatives. Results as COQSCompound's.
  STDMETHODIMP EvaluateCompounds(BSTR name, tagQuantityEnum quantity, VARIANT temperatures, double pressure,
                                 tagLimitPolicyEnum policy, VARIANT positions, VARIANT* statuses,
                                 VARIANT* values) noexcept override;
  STDMETHODIMP EvaluateCompoundArray(LPCOLESTR name, LONG rows, const LONG* positions, LONG count,
                                     const double* temperatures, double pressure, tagLimitPolicyEnum policy,
                                     double* values, double* firstDerivatives, double* secondDerivatives,
                                     LONG* statuses) noexcept override;

  // estimators.cpp. A view uses the estimators of its parent. What cannot be estimated is S_FALSE.
  STDMETHODIMP EstimateProperty(INT index, BSTR property, BSTR estimator, BYTE useEstimator) noexcept override;
  STDMETHODIMP SetDefaultEstimator(BSTR name, BSTR className, BSTR path, IDispatch* estimator) noexcept override;
  STDMETHODIMP AddEstimator(BSTR name, BSTR className, BSTR path, IDispatch* estimator) noexcept override;
  STDMETHODIMP RemoveEstimator(BSTR name) noexcept override;
  STDMETHODIMP GetEstimator(BSTR name, IDispatch** estimator) noexcept override;
  STDMETHODIMP GetDefaultEstimator(BSTR* name, IDispatch** estimator) noexcept override;
  STDMETHODIMP GetNumOfEstimators(INT* count) noexcept override;
  STDMETHODIMP GetEstimatorI(INT index, BSTR* name, IDispatch** estimator) noexcept override;
  STDMETHODIMP SetAsDefaultEstimator(BSTR name) noexcept override;

  // xml.cpp; xml_reader.h describes the results of a parser's events. Elements outside a CompoundCollection or
  // SubCompList element return S_FALSE. The end of that element gives the collection, a view too, the content of the
  // text, and returns S_FALSE when a default is not among the loaders or estimators. After an event that fails, and
  // after Error, the rest of the element is skipped, and the collection is as before the element, or as before the
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
  using Positions = std::vector<LONG>;
  class CollectionXmlReader;
  class CollectionXmlWriter;

  struct Model {
    ComPtr<IInteractionParameters> parameters;
    Bstr pane;
  };

  // Everything that Reset resets.
  struct State {
    CompoundSlots slots;
    ComPtr<ICompoundCollection> parent;    // null in an own list; a collection of this module
    INT depth = 0;                         // how many views this one stood on when it was made, with itself
    std::shared_ptr<Positions> positions;  // of a view in its parent
    ComPtr<IRealArrayDisp> offsetH, offsetS;
    std::map<WideString, Model, std::less<>> models;
    ComponentRegistry loaders, estimators;
    std::map<WideString, std::shared_ptr<Positions>, std::less<>> subLists;

    bool holdsObjects() const {
      return slots.occupied() > 0 || parent || offsetH || offsetS || !models.empty() || loaders.count() > 0 ||
             estimators.count() > 0;
    }
  };

  bool isView() const { return static_cast<bool>(state_.parent); }
  INT count() const { return isView() ? static_cast<INT>(state_.positions->size()) : state_.slots.size(); }
  // The parent's position of a position of a view, -1 when it is outside.
  INT inParent(INT index) const {
    const Positions& positions = *state_.positions;
    return index >= 0 && static_cast<std::size_t>(index) < positions.size() ? positions[static_cast<std::size_t>(index)]
                                                                            : -1;
  }

  // Calls a method of the parent, which stays alive meanwhile.
  template <class I, class... Parameters, class... Arguments>
  HRESULT forward(HRESULT (STDMETHODCALLTYPE I::*method)(Parameters...), Arguments... arguments) const {
    ComPtr<I> parent;
    const HRESULT queried = parent.query(state_.parent.get());
    return FAILED(queried) ? queried : (parent.get()->*method)(arguments...);
  }

  HRESULT addToParent(IDispatch* compound);
  static COQSCompoundCollection& implementation(const ComPtr<ICompoundCollection>& parent) {
    return static_cast<COQSCompoundCollection&>(*parent.get());
  }
  // Takes out the last entry that is this compound, in a view the last one with this position in the parent; false when
  // there is none.
  bool takeOut(IBasicCompound* compound, LONG position);

  // Without a reference of its own; null for an empty slot and for a position outside.
  IBasicCompound* compoundAt(LONG position) const;
  // Whether all numbers of the compound at a position are there.
  bool evaluate(LONG position, const std::optional<Key>& key, WideView name, std::span<const double> temperatures,
                double pressure, tagLimitPolicyEnum policy, const EvaluationResults& results) const;

  Positions checkedPositions(IIntegerArrayDisp* array);
  ComPtr<ICompoundCollection> newView(std::shared_ptr<Positions> positions);

  // Runs `fill` with a filler on a copy of a compound; the compound becomes like the copy when that returns S_OK.
  template <class Fill>
  HRESULT load(INT index, BSTR loader, BSTR searchKey, BSTR id, BYTE useLoader, Fill fill);

  template <class Event>
  HRESULT handOn(Event&& event, const char* member = __builtin_FUNCTION()) noexcept;

  [[no_unique_address]] database::CatalogueUse catalogueUse_;
  State state_;
  XmlReading<CollectionXmlReader, std::optional<State>> reading_;
};

}  // namespace qs
