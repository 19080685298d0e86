// Property objects: the values that a compound owns, of one kind each. An object is no component: its owner deletes it.
#pragma once

#include <memory>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "com/not_set.h"
#include "interfaces/interfaces.h"
#include "props/key_table.h"
#include "props/value_source.h"

namespace qs {

struct Equation;

// The name of a property, null until it is set; a fixed key needs no string of its own.
class PropertyName {
 public:
  PropertyName() = default;
  PropertyName(Key key) : key_(key) {}
  PropertyName(WideView name) : key_(findKey(name)), other_(key_ ? Bstr() : Bstr(name)) {}

  bool isNull() const { return !key_ && !other_; }
  WideView view() const { return key_ ? nameOf(*key_) : other_.view(); }

 private:
  std::optional<Key> key_;
  Bstr other_;
};

// The operations of every kind, in the fixed order of their slots; a kind overrides those that it supports. Results
// are S_OK, or S_FALSE for what a kind does not support or does not have; out-parameters then hold the values given in
// property.cpp. The caller owns strings that are written. The operations throw CQSCOMError or std::bad_alloc
// when memory runs out, and what an external component throws; nothing else.
class CQSAbstractProp {
 public:
  // `equation` is what an equation consists of, which the derived class owns.
  explicit CQSAbstractProp(const Equation* equation = nullptr) : equation_(equation) {}
  CQSAbstractProp(const CQSAbstractProp&) = delete;
  CQSAbstractProp& operator=(const CQSAbstractProp&) = delete;

  virtual ~CQSAbstractProp() = default;

  // Takes over name, content and source of an object of the same kind; S_FALSE and no change for any other.
  virtual HRESULT Copy(const CQSAbstractProp* src) = 0;

  // The value at temperature T and pressure P, in the units of its data. Writes 0 to *pDependencies when the
  // value is constant, 1 when it depends on temperature.
  virtual HRESULT GetValue(double T, double P, tagExtrapolationEnum e, LONG* pDependencies, double* pVal) const = 0;

  // Content as one line of Key(value) items, and back. Recall ignores what it does not know.
  virtual HRESULT Store(BSTR* data) const = 0;
  virtual HRESULT Recall(BSTR data) = 0;

  virtual HRESULT SetValue(double v);

  // Equations: class name, formula and coefficients, validity ranges, transformations of X and Y. Counts and indices
  // are of coefficients, from 0. SetParameters returns E_FAIL when n values are too few.
  virtual HRESULT GetClassName(BSTR* name) const;
  virtual HRESULT GetForm(BSTR* form) const;
  virtual HRESULT GetShape(LONG* shape) const;
  virtual HRESULT GetNumbOfParameters(LONG* n) const;
  virtual HRESULT GetParameter(LONG i, double* v) const;
  virtual HRESULT GetTRange(double* tmin, double* tmax) const;
  virtual HRESULT GetPRange(double* pmin, double* pmax) const;
  virtual HRESULT GetXYShape(LONG* xshape, LONG* yshape) const;
  virtual HRESULT GetXYNorm(double* xnorm, double* ynorm) const;
  virtual HRESULT GetXYPow(double* xpow, double* ypow) const;
  virtual HRESULT GetAB(double* a, double* b) const;
  virtual HRESULT SetParameters(const double* values, LONG n);
  virtual HRESULT SetParameter(LONG i, double v);
  virtual HRESULT SetTRange(double tmin, double tmax);
  virtual HRESULT SetPRange(double pmin, double pmax);
  virtual HRESULT SetXYShape(LONG xshape, LONG yshape);
  virtual HRESULT SetXYNorm(double xnorm, double ynorm);
  virtual HRESULT SetXYPow(double xpow, double ypow);
  virtual HRESULT SetAB(double a, double b);

  // External components: the name of their class and the object, with a reference of the receiver's own.
  virtual HRESULT GetCOMClassName(BSTR* name) const;
  virtual HRESULT GetCOMObject(IPCProperty** obj) const;
  virtual HRESULT SetCOMClassName(BSTR name);
  virtual HRESULT SetCOMObject(IPCProperty* obj);

  // What an equation consists of; null for the other kinds.
  const Equation* equation() const { return equation_; }

  // The kind, a tagPropTypeEnum. Whoever creates an object sets it; a new object says VoidProp.
  HRESULT GetType(LONG* type) const {
    *type = type_;
    return S_OK;
  }
  HRESULT SetType(LONG type) {
    type_ = type;
    return S_OK;
  }

  // The key or other name under which the owner keeps the object; null until the owner sets it.
  PropertyName Name;

  // The name of the loader that the content came from; null for none. The owner sets and copies it.
  Bstr loader() const { return origin_ ? origin_->loader : Bstr(); }
  void setLoader(Bstr name);

  // Where the content comes from, which the owner states. Of a database's content only that it is the database's.
  ValueSource source() const { return origin_ ? origin_->source : ValueSource(); }
  void setSource(ValueSource source);
  bool isOfDatabase() const { return isOfDatabase_; }
  void setOfDatabase() { isOfDatabase_ = true; }

 protected:
  // Whether a copy's source, which may be null, is of a kind.
  static bool isOfType(const CQSAbstractProp* src, tagPropTypeEnum type) { return src && src->type_ == type; }

  void copyNameAndSource(const CQSAbstractProp& src);

 private:
  // Few properties have one.
  struct Origin {
    Bstr loader;
    ValueSource source;
  };
  Origin& origin();

  std::unique_ptr<Origin> origin_;
  const Equation* const equation_;
  LONG type_ = VoidProp;
  bool isOfDatabase_ = false;
};

// One number, the same at every state; empty until set.
class CQSPointProp final : public CQSAbstractProp {
 public:
  HRESULT Copy(const CQSAbstractProp* src) override;
  HRESULT GetValue(double T, double P, tagExtrapolationEnum e, LONG* pDependencies, double* pVal) const override;
  HRESULT Store(BSTR* data) const override;
  HRESULT Recall(BSTR data) override;
  HRESULT SetValue(double v) override;

 private:
  double value_ = kEmptyValue;
};

// A property that is known to be absent.
class CQSVoidProp final : public CQSAbstractProp {
 public:
  HRESULT Copy(const CQSAbstractProp* src) override;
  HRESULT GetValue(double T, double P, tagExtrapolationEnum e, LONG* pDependencies, double* pVal) const override;
  HRESULT Store(BSTR* data) const override;
  HRESULT Recall(BSTR data) override;
};

// A property that an external component computes.
class CQSCOMProp final : public CQSAbstractProp {
 public:
  // Drops class name, object and kept content, and copies the name alone: the owner sets the others.
  HRESULT Copy(const CQSAbstractProp* src) override;

  // S_OK whatever the component returns; without a component the empty value, and *pDependencies stays as it was.
  HRESULT GetValue(double T, double P, tagExtrapolationEnum e, LONG* pDependencies, double* pVal) const override;

  HRESULT Store(BSTR* data) const override;

  // Reads the class name alone: the owner creates the component and hands it its content.
  HRESULT Recall(BSTR data) override;

  HRESULT GetCOMClassName(BSTR* name) const override;
  HRESULT GetCOMObject(IPCProperty** obj) const override;
  HRESULT SetCOMClassName(BSTR name) override;

  // Adds a reference to the new object; that to a previous one is not released but passes to the caller.
  HRESULT SetCOMObject(IPCProperty* obj) override;

  // What Store writes in the place of a component that is not there; null for none.
  const Bstr& keptContent() const { return content_; }
  void keepContent(Bstr content) { content_ = std::move(content); }

  // The class name and the content to store, for which the component is asked: it may put another property in the place
  // of this one. Throws CQSCOMError with what the component fails with.
  struct Stored {
    Bstr className;
    Bstr content;
  };
  Stored stored() const;

 private:
  ComPtr<IPCProperty> object_;
  Bstr className_;
  Bstr content_;
};

}  // namespace qs
