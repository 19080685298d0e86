// A host in C++: fills a collection by number and by CAS number from the database and through a loader of JSON
// compounds, estimates a property, makes a view of three compounds and reads through it.
//   collection DATABASE-DIRECTORY JSON-DIRECTORY
// Its classes are those of the modules beside the program.
#include <qscontainers.hpp>

#include <array>
#include <charconv>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using Text = qs::InterfaceText;

// Calls of members that qscontainers.hpp has no function for.
void need(HRESULT result, const std::string& what) {
  if (result != S_OK) throw std::runtime_error(what + (result == S_FALSE ? ": not there" : ": failed"));
}

Text text(REFCLSID clsid) {
  std::array<OLECHAR, 39> form;
  StringFromGUID2(clsid, form.data(), static_cast<int>(form.size()));
  return Text(std::string(form.begin(), form.end() - 1));
}

// Six significant digits, the same on every target.
std::string text(double value) {
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, 6);
  return {digits.data(), end.ptr};
}

class Example {
 public:
  Example(std::string database, std::string folder) : database_(std::move(database)), folder_(std::move(folder)) {}

  void run() {
    addByNumber(19);
    addByNumber(29);
    addByNumber(collection_.find(database_, "CASN", "64-17-5").value().front());
    addFromLoader("67-64-1");
    print("The collection", collection_);
    estimateCriticalVolume(3);
    print("A view of positions 3, 1 and 0", collection_.view(std::array<LONG, 3>{3, 1, 0}).value());
  }

 private:
  void addByNumber(int number) { collection_.add(qs::Compound::read(database_, number).value()).value(); }

  void addFromLoader(const std::string& cas) {
    need(collection_.as<ILoadCompoundProp>()->SetDefaultLoader(Text("json").get(), text(__uuidof(JsonLoader)).get(),
                                                               Text(folder_).get(), nullptr),
         "SetDefaultLoader");
    need(collection_.get()->AddCompoundFromLoader(Text("CASN").get(), Text(cas).get(), nullptr, 0),
         "AddCompoundFromLoader");
  }

  void estimateCriticalVolume(int position) {
    const auto estimators = collection_.as<IPureEstimatorHandler>();
    need(estimators->SetDefaultEstimator(Text("Joback").get(), text(__uuidof(JobackEstimator)).get(), nullptr, nullptr),
         "SetDefaultEstimator");
    const auto volume = collection_.at(position).value()["VC"];
    const double measured = volume.at().value();
    need(estimators->EstimateProperty(position, Text("VC").get(), nullptr, 0), "EstimateProperty");
    std::cout << "\nCritical volume of " << position << " from the loader " << text(measured) << ", estimated "
              << text(volume.at().value()) << " m3/kmol\n";
  }

  static void print(const std::string& title, const qs::Collection& collection) {
    std::cout << "\n" << title << "\n";
    int position = 0;
    for (const qs::Compound& compound : collection)
      std::cout << "  " << position++ << "  " << compound.name().value() << "  TC " << text(compound["TC"].at().value())
                << " K  VP at 298.15 K " << text(compound["VP"].at().value()) << " kPa\n";
  }

  const std::string database_, folder_;
  const qs::Collection collection_ = qs::Collection::create().value();
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: collection DATABASE-DIRECTORY JSON-DIRECTORY\n";
    return 2;
  }
  try {
    const auto session = qs::Session::open(qs::Classes::modules).value();
    Example(argv[1], argv[2]).run();
  } catch (const std::exception& error) {
    std::cerr << "collection: " << error.what() << "\n";
    return 1;
  }
}
