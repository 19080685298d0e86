#include "tests/calls/any_object.h"

namespace qs::test {

#define INTERFACE_BEGIN(I)                         \
  template <>                                      \
  class AnyInterface<I> final : public BaseOf<I> { \
   public:                                         \
    using BaseOf<I>::BaseOf;
#define MEMBER(I, name, parameters, arguments) \
  STDMETHODIMP name parameters override { return this->react arguments; }
#define INTERFACE_END(I) \
  }                      \
  ;
#include "members.def"
#undef INTERFACE_END
#undef MEMBER
#undef INTERFACE_BEGIN

#define MEMBER(I, name, parameters, arguments)
#define INTERFACE_END(I)

ComPtr<IUnknown> AnyObject::create(Values& values) {
  class Object final : public AnyObject {
   public:
    explicit Object(Values& values) : AnyObject(values) {}
    HRESULT query(REFIID iid, void** out) override {
      IUnknown* face = nullptr;
      if (IsEqualGUID(iid, __uuidof(IUnknown)) || IsEqualGUID(iid, __uuidof(IDispatch))) face = &first_;
#define INTERFACE_BEGIN(I) \
  if (IsEqualGUID(iid, __uuidof(I))) face = &I##_;
#include "members.def"
#undef INTERFACE_BEGIN
      *out = face;
      if (!face) return E_NOINTERFACE;
      addReference();
      return S_OK;
    }

   private:
    AnyInterface<IBasicCompound> first_{*this};
#define INTERFACE_BEGIN(I) AnyInterface<I> I##_{*this};
#include "members.def"
#undef INTERFACE_BEGIN
  };
  ComPtr<IUnknown> made;
  (new Object(values))->query(__uuidof(IUnknown), made.outAny());
  made->Release();
  return made;
}

}  // namespace qs::test
