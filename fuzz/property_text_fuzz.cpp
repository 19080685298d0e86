// Recall of every kind of property object from foreign text. The first byte picks the kind; what was recalled must
// evaluate, store itself, and read the same from its own text.
#include "fuzz/fuzz_target.h"
#include "props/forms.h"
#include "props/new_property.h"

namespace qs {
namespace {

PropertyPtr create(std::size_t kind) {
  constexpr LONG kOthers[] = {PointProp, COMProp, VoidProp};
  if (kind >= kEquationForms.size()) return newProperty(kOthers[kind - kEquationForms.size()]);
  return newProperty(EquationProp, kEquationForms[kind].shape);
}

Bstr storedText(const CQSAbstractProp& property) {
  Bstr text;
  require(property.Store(text.out()) == S_OK);
  return text;
}

void recallAndStore(std::size_t kind, BSTR text) {
  const PropertyPtr property = create(kind);
  require(property->Recall(text) == S_OK);

  LONG dependencies = 0;
  double value = 0.0;
  property->GetValue(300.0, 101.325, eNoExtrapolation, &dependencies, &value);

  const Bstr once = storedText(*property);
  const PropertyPtr again = create(kind);
  require(again->Recall(once.get()) == S_OK);
  require(storedText(*again).view() == once.view());
}

}  // namespace

std::vector<std::string> fuzzSeeds() {
  const std::string range = "Tmin(250.5) Tmax(500) Pmin(-2) Pmax(1e+06) ";
  const std::string shapes = "Xshape(26) Yshape(7) Xnorm(2) Ynorm(3) Xpow(0.5) Ypow(4) A(5) B(6.25)";
  return {
      '\0' + range + "nParams(5) Values(1.5,-2e-07,1e+20,0x1p3,nan) " + shapes,
      '\4' + range + "nParams(2147483647) Values(1,2,3,4,5,6,7,8) " + shapes,
      '\12' + range + "nParams(-1) Values(,,1e309,1e-400) " + shapes,
      static_cast<char>(kEquationForms.size()) + std::string("Value(0.344)"),
      static_cast<char>(kEquationForms.size() + 1) + std::string("ClassName(Vendor.Cp) ComContent(k=1)"),
      static_cast<char>(kEquationForms.size() + 2) + std::string("Void"),
  };
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t kinds = qs::kEquationForms.size() + 3;
  qs::recallAndStore(data[0] % kinds, qs::Bstr(qs::widen(bytes.substr(1))).get());
  return 0;
}
