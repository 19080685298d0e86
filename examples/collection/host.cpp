// A host in C++: fills a collection by number and by CAS number from the database and through a loader of JSON
// compounds, estimates a property, makes a view of three compounds and reads through it.
//   collection DATABASE-DIRECTORY JSON-DIRECTORY
// Its classes are those of the modules beside the program.
#include <array>
#include <charconv>
#include <iostream>
#include <stdexcept>
#include <string>

#include "com/bstr.h"
#include "com/com_ptr.h"
#include "hostkit/module_loader.h"
#include "interfaces/interfaces.h"

namespace {

using qs::Bstr;
using qs::ComPtr;

void need(HRESULT result, const std::string& what) {
  if (result != S_OK) throw std::runtime_error(what + (result == S_FALSE ? ": not there" : ": failed"));
}

template <class I>
ComPtr<I> create(REFCLSID clsid) {
  auto instance = qs::host::createInstance<I>(clsid);
  if (!instance) throw std::runtime_error("a class cannot be created");
  return instance;
}

template <class I, class J>
ComPtr<I> query(const ComPtr<J>& object) {
  auto found = ComPtr<I>::from(object.get());
  if (!found) throw std::runtime_error("an object lacks an interface");
  return found;
}

// Loads the modules and makes their classes creatable.
class Modules {
 public:
  Modules() : containers_("qscontainers"), hostKit_("qshostkit") {
    for (const CLSID* clsid : {&__uuidof(COQSCompound), &__uuidof(COQSCompoundCollection)})
      need(containers_.registerClass(*clsid), "qscontainers");
    for (const CLSID* clsid :
         {&__uuidof(HostIntegerArray), &__uuidof(HostRealArray), &__uuidof(JsonLoader), &__uuidof(JobackEstimator)})
      need(hostKit_.registerClass(*clsid), "qshostkit");
  }

 private:
  qs::host::LoadedModule containers_, hostKit_;
};

Bstr text(REFCLSID clsid) {
  std::array<OLECHAR, 39> form;
  StringFromGUID2(clsid, form.data(), static_cast<int>(form.size()));
  return Bstr(qs::WideView(form.data()));
}

// Six significant digits, the same on every target.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

class Example {
 public:
  Example(const std::string& database, const std::string& folder)
      : database_(qs::widen(database)), folder_(qs::widen(folder)) {}

  void run() {
    addByNumber(19);
    addByNumber(29);
    addByCasNumber(OLESTR("64-17-5"));
    addFromLoader(OLESTR("67-64-1"));
    print("The collection", collection_);
    estimateCriticalVolume(3);
    print("A view of positions 3, 1 and 0", viewOf({3, 1, 0}));
  }

 private:
  void addByNumber(INT number) {
    const auto compound = create<IBasicCompound>(__uuidof(COQSCompound));
    need(query<ICompoundInitFromVelDB>(compound)->Init(database_.get(), number), "compound " + std::to_string(number));
    need(collection_->AddCompound(compound.get()), "AddCompound");
  }

  void addByCasNumber(qs::WideView cas) {
    ComPtr<IIntegerArrayDisp> numbers;
    need(query<IQueryLoader>(collection_)
             ->GetVelIDs(database_.get(), Bstr(OLESTR("CASN")).get(), Bstr(cas).get(), numbers.out()),
         "GetVelIDs");
    LONG number = 0;
    need(numbers->get_IthValue(0, &number), "the first number");
    addByNumber(number);
  }

  void addFromLoader(qs::WideView cas) {
    need(query<ILoadCompoundProp>(collection_)
             ->SetDefaultLoader(Bstr(OLESTR("json")).get(), text(__uuidof(JsonLoader)).get(), folder_.get(), nullptr),
         "SetDefaultLoader");
    need(collection_->AddCompoundFromLoader(Bstr(OLESTR("CASN")).get(), Bstr(cas).get(), nullptr, 0),
         "AddCompoundFromLoader");
  }

  void estimateCriticalVolume(INT index) {
    const auto estimators = query<IPureEstimatorHandler>(collection_);
    need(estimators->SetDefaultEstimator(Bstr(OLESTR("Joback")).get(), text(__uuidof(JobackEstimator)).get(), nullptr,
                                         nullptr),
         "SetDefaultEstimator");
    const double measured = criticalVolume(index);
    need(estimators->EstimateProperty(index, Bstr(OLESTR("VC")).get(), nullptr, 0), "EstimateProperty");
    std::cout << "\nCritical volume of " << index << " from the loader " << text(measured) << ", estimated "
              << text(criticalVolume(index)) << " m3/kmol\n";
  }

  double criticalVolume(INT index) const {
    ComPtr<IBasicCompound> compound;
    need(collection_->GetBasicCompound(index, compound.out()), "GetBasicCompound");
    LONG dependencies = 0;
    double value = 0;
    need(compound->get_VC(298.15, 101.325, eNoExtrapolation, &dependencies, &value), "VC");
    return value;
  }

  ComPtr<ICompoundCollection> viewOf(std::initializer_list<LONG> positions) const {
    const auto array = create<IIntegerArrayDisp>(__uuidof(HostIntegerArray));
    need(array->put_Size(static_cast<LONG>(positions.size())), "put_Size");
    LONG i = 0;
    for (const LONG position : positions) need(array->put_IthValue(i++, position), "put_IthValue");
    ComPtr<ICompoundCollection> view;
    need(query<ISubCompList>(collection_)->CreateSubCompList(array.get(), view.out()), "CreateSubCompList");
    return view;
  }

  static void print(const std::string& title, const ComPtr<ICompoundCollection>& collection) {
    std::cout << "\n" << title << "\n";
    INT number = 0;
    need(collection->get_NumberOfCompounds(&number), "NumberOfCompounds");
    for (INT i = 0; i < number; ++i) {
      ComPtr<IBasicCompound> compound;
      need(collection->GetBasicCompound(i, compound.out()), "GetBasicCompound");
      Bstr name;
      need(query<ICompoundID>(compound)->get_Name(name.out()), "Name");
      LONG dependencies = 0;
      double tc = 0, vp = 0;
      need(compound->get_TC(298.15, 101.325, eNoExtrapolation, &dependencies, &tc), "TC");
      need(compound->get_VP(298.15, 101.325, eNoExtrapolation, &dependencies, &vp), "VP");
      std::cout << "  " << i << "  " << qs::narrow(name.view()) << "  TC " << text(tc) << " K  VP at 298.15 K "
                << text(vp) << " kPa\n";
    }
  }

  const Bstr database_, folder_;
  const ComPtr<ICompoundCollection> collection_ = create<ICompoundCollection>(__uuidof(COQSCompoundCollection));
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: collection DATABASE-DIRECTORY JSON-DIRECTORY\n";
    return 2;
  }
  CoInitialize(nullptr);
  int result = 0;
  try {
    const Modules modules;
    Example(argv[1], argv[2]).run();
  } catch (const std::exception& error) {
    std::cerr << "collection: " << error.what() << "\n";
    result = 1;
  }
  CoUninitialize();
  return result;
}
