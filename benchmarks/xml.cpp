#include <benchmark/benchmark.h>
#include <expat.h>

#include <charconv>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "com/bstr.h"
#include "hostkit/module_loader.h"

namespace qs::bench {
namespace {

constexpr INT kNumber = 19;      // water, among the bundled compounds
constexpr INT kStored = 10'000;  // compounds

ComPtr<IBasicCompound> bundledCompound(const std::filesystem::path& database) {
  auto compound = newCompound();
  const Bstr directory(widen(database.string()));
  if (ComPtr<ICompoundInitFromVelDB>::from(compound.get())->Init(directory.get(), kNumber) != S_OK)
    throw std::runtime_error("the bundled compound cannot be read");
  return compound;
}

Bstr textOf(IUnknown* object) {
  Bstr text;
  if (ComPtr<IXMLStore>::from(object)->StoreAsXML(text.out()) != S_OK)
    throw std::runtime_error("the XML text cannot be written");
  return text;
}

// A text as the fragments between its numbers and the numbers themselves.
class Pieces {
 public:
  explicit Pieces(WideView text) {
    // Numbers follow a bracket, a comma or a quotation mark.
    const std::string bytes = narrow(text);
    std::size_t start = 0;
    for (std::size_t i = 1; i < bytes.size(); ++i) {
      if (std::string_view("(,\"").find(bytes[i - 1]) == std::string_view::npos) continue;
      double value = 0.0;
      const auto [end, error] = std::from_chars(bytes.data() + i, bytes.data() + bytes.size(), value);
      if (error != std::errc()) continue;
      pieces_.push_back({WideString(text.substr(start, i - start)), value});
      start = static_cast<std::size_t>(end - bytes.data());
      i = start;
    }
    rest_ = text.substr(start);
  }

  std::size_t numbers() const { return pieces_.size(); }

  WideString put(std::size_t expectedLength) const {
    WideString text;
    text.reserve(expectedLength);
    for (const auto& [fragment, number] : pieces_) {
      text += fragment;
      char digits[32];
      const char* end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 6).ptr;
      text.append(static_cast<const char*>(digits), end);
    }
    return text += rest_;
  }

 private:
  struct Piece {
    WideString fragment;
    double number;
  };
  std::vector<Piece> pieces_;
  WideString rest_;
};

// `count` compounds with as much text as the one given.
ComPtr<ICompoundCollection> collectionOf(IBasicCompound* compound, INT count) {
  auto collection = newCollection();
  for (INT i = 0; i < count; ++i) {
    const auto copy = newCompound();
    ComPtr<ICompoundCopy>::from(copy.get())->CopyToThis(i, compound);
    collection->AddCompound(copy.get());
  }
  return collection;
}

// Nanoseconds of a call, over some calls.
template <class Call>
double timeOf(Call&& call) {
  constexpr int kCalls = 10;
  const double start = processorTime();
  for (int i = 0; i < kCalls; ++i) call();
  return (processorTime() - start) / kCalls * 1e9;
}

// Time per compound when a collection is stored as often as makes kStored compounds. All texts are kept, so that the
// memory which the system must bring for them is the same, however many they are.
double timeOfStoring(IUnknown* collection, INT count) {
  std::vector<Bstr> texts;
  const double start = processorTime();
  for (INT stored = 0; stored < kStored; stored += count) texts.push_back(textOf(collection));
  return (processorTime() - start) / kStored * 1e9;
}

// The parser with handlers that do nothing.
void parse(std::string_view text) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"), XML_ParserFree);
  XML_SetElementHandler(
      parser.get(), [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
  XML_SetCharacterDataHandler(parser.get(), [](void*, const XML_Char*, int) {});
  if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) != XML_STATUS_OK)
    throw std::runtime_error("the text is not well-formed");
}

}  // namespace

std::vector<Comparison> compareXml(const std::filesystem::path& database,
                                   const std::function<bool(const std::string&)>& wanted) {
  constexpr int kRounds = 501;
  const auto compound = bundledCompound(database);
  const Bstr text = textOf(compound.get());
  std::vector<Comparison> made;
  const auto add = [&](const char* name, const char* title, double bound, const std::function<Pair()>& pair) {
    if (wanted(name)) made.push_back({title, pair(), bound, "ns"});
  };

  add("store", "XML of a compound / putting its text together", 1.2, [&] {
    const Pieces pieces(text.view());
    if (pieces.put(0) != text.view()) throw std::runtime_error("the pieces are not those of the text");
    return inTurns(
        kRounds, [&] { return timeOf([&] { benchmark::DoNotOptimize(textOf(compound.get())); }); },
        [&] { return timeOf([&] { benchmark::DoNotOptimize(pieces.put(text.view().size())); }); });
  });
  add("store 10000", "XML of one of 10,000 compounds / of one of 100", 1.2, [&] {
    const auto large = collectionOf(compound.get(), kStored);
    const auto small = collectionOf(compound.get(), 100);
    const auto store = [&] { return timeOfStoring(large.get(), kStored); };
    store();  // a machine may have to find the memory then
    return inTurns(9, store, [&] { return timeOfStoring(small.get(), 100); });
  });
  add("read", "compound from XML / the parser alone", 1.8, [&] {
    const auto parser = host::createInstance<IXMLParser>(__uuidof(::XMLParser));
    if (!parser) throw std::runtime_error("the class XMLParser cannot be created");
    const auto read = [&] {
      if (parser->ParseText(text.get(), newCompound().get()) != S_OK) throw std::runtime_error("the text is not read");
    };
    const std::string bytes = narrow(text.view());
    return inTurns(
        kRounds, [&] { return timeOf(read); }, [&] { return timeOf([&] { parse(bytes); }); });
  });
  return made;
}

}  // namespace qs::bench
