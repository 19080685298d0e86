// Events of a parser in any order, to a compound and to a collection. Each line is an event: '+' and the name of an
// element that starts, then tags and values in turn, all divided by tabs; any other first character and the name of one
// that ends. Whatever was built must be written in both forms, and the exact form must come back the same; so must that
// of a compound that the same bytes fill through its interfaces.
#include <algorithm>
#include <cstring>
#include <string_view>

#include "fuzz/exact_form.h"
#include "fuzz/fuzz_target.h"
#include "tests/support/random_compound.h"

namespace qs {
namespace {

// Takes off what stands before the first divider, and the divider.
std::string_view cut(std::string_view& text, char divider) {
  const std::size_t length = std::min(text.find(divider), text.size());
  const std::string_view part = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return part;
}

Bstr bstr(std::string_view text) { return Bstr(widen(text)); }

void send(XMLParserClient& client, std::string_view line) {
  const bool starts = line.starts_with('+');
  line.remove_prefix(std::min<std::size_t>(line.size(), 1));
  const Bstr name = bstr(cut(line, '\t'));
  if (!starts) return require(SUCCEEDED(client.EndElement(name.get())));
  const auto attributes = host::createInstance<TaggedAttributes>(__uuidof(::AttributeSet));
  while (!line.empty()) {
    const Bstr tag = bstr(cut(line, '\t'));
    attributes->Add(tag.get(), bstr(cut(line, '\t')).get());
  }
  require(SUCCEEDED(client.StartElement(name.get(), attributes.get())));
}

void sendAll(REFCLSID clsid, std::string_view events) {
  const auto client = host::createInstance<XMLParserClient>(clsid);
  while (!events.empty()) send(*client.get(), cut(events, '\n'));
  Bstr text;
  require(ComPtr<IXMLStore>::from(client.get())->StoreAsXML(text.out()) == S_OK);
  requireExactForm(client.get(), clsid);
}

// Fills a compound as the bytes choose, eight for each choice; zeros follow them.
void fill(std::string_view bytes) {
  test::RandomCompound random([&bytes] {
    std::uint64_t bits = 0;
    const std::size_t size = std::min(sizeof bits, bytes.size());
    std::memcpy(&bits, bytes.data(), size);
    bytes.remove_prefix(size);
    return bits;
  });
  const auto compound = host::createInstance<IBasicCompound>(__uuidof(::COQSCompound));
  random.fill(compound.get());
  require(!!exactText(compound.get()));
  requireExactForm(compound.get(), __uuidof(::COQSCompound));
}

}  // namespace

std::vector<std::string> fuzzSeeds() {
  const std::string v2 = "+Compound\tVERSION\t2\tName\tn & m\tCompIdx\t7\n";
  const std::string v1 = "+Compound\tVERSION\t1\n";
  const std::string collection = "+CompoundCollection\tVERSION\t2\tNUMBCOMPOUND\t3\n";
  return {
      collection + v2 + "-Compound\n+EmptySlot\n-EmptySlot\n" + v1 + "-Compound\n-CompoundCollection",
      collection +
          "+AddedLoaders\tNUMB\t2\n+Loader\tNAME\ta\tCLASSNAME\tx\tPATH\tp\n-Loader\n+Loader\tNAME\tb\n"
          "-AddedLoaders\n+DefaultLoader\tNAME\tb\n+Estimator\tNAME\tc\tDESCRIPTION\td\n"
          "+DefaultEstimator\tNAME\tc\n-CompoundCollection",
      "+SubCompList\n+Model\tNAME\tm\tPANE\tp\n+IPModel\tCLASSNAME\tx\n-IPModel\n-Model\n+OffsetH\tVALUES\t1,nan,2\n"
      "-OffsetH\n+OffsetS\tVALUES\t\n+NamedView\tNAME\tv\tPOSITIONS\t0,2,-1\n+" +
          v1 + "-SubCompList",
      v2 + "+Synonyms\tNUMB\t2\n+Synonym\tNAME\ta\n-Synonym\n+Synonym\n-Synonyms\n"
           "+GroupProperty\tNAME\tUNIFAC1\tNUMB\t3\n+Group\tID\t1\tNUMB\t2\n-Group\n-GroupProperty\n-Compound",
      v2 + "+FixedProperty\tNAME\tTC\tTYPE\tPointProp\tLOADER\tx\n+PropertyContent\tCONTENT\tValue(1.5)\n"
           "-FixedProperty\n+AdditionProperty\tNAME\tTC\tTYPE\tVoidProp\n+PropertyContent\tCONTENT\tVoid\n-"
           "AdditionProperty",
      v2 + "+FixedProperty\tNAME\tVP\tTYPE\tEquationProp\tEQUATIONSHAPE\t0\n"
           "+PropertyContent\tCONTENT\tTmin(1) nParams(5) Values(1,nan:5,-inf,4,5) Xshape(2) A(1)\n-FixedProperty",
      v2 + "+FixedProperty\tNAME\tLDN\tTYPE\tCOMProp\tCLASSNAME\tx)\n"
           "+PropertyContent\tCONTENT\tClassName(x) ComContent(y)\n-FixedProperty\n"
           "+UserProperty\tNAME\tu\tCONTENT\tClassID(x) ComContent(y)",
      v1 + "+Property\tNAME\tMW\tVALUE\t18\n+EqnProperty\tNAME\tVP\tID\t1\tTMIN\t2\tNUMBCOEFF\t2\n"
           "+EquationCoeff\tVALUE\t1\n-EquationCoeff\n+EquationCoeff\tVALUE\t2\n-EqnProperty",
  };
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qs;
  test::registerClasses();
  const std::string_view events(reinterpret_cast<const char*>(data), size);
  sendAll(__uuidof(::COQSCompound), events);
  sendAll(__uuidof(::COQSCompoundCollection), events);
  fill(events);
  return 0;
}
