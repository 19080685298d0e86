// The text of a string in UTF-16 as it is given, to the parser and on to a compound or, where the first byte is odd, to
// a collection. What a refused text leaves is what was there before; what an accepted one leaves comes back from its
// exact form.
#include <cstring>

#include "fuzz/exact_form.h"
#include "fuzz/fuzz_target.h"

namespace qs {
namespace {

void parse(const std::uint8_t* data, std::size_t size) {
  const CLSID& clsid = data[0] % 2 ? __uuidof(::COQSCompoundCollection) : __uuidof(::COQSCompound);
  WideString text((size - 1) / sizeof(OLECHAR), 0);
  if (!text.empty()) std::memcpy(text.data(), data + 1, text.size() * sizeof(OLECHAR));
  const auto parser = host::createInstance<IXMLParser>(__uuidof(::XMLParser));
  const auto client = host::createInstance<IDispatch>(clsid);
  const Bstr before = exactText(client.get());
  const HRESULT hr = parser->ParseText(Bstr(text).get(), client.get());
  if (hr == E_INVALIDARG || hr == E_OUTOFMEMORY) require(exactText(client.get()).view() == before.view());
  if (SUCCEEDED(hr)) requireExactForm(client.get(), clsid);
}

}  // namespace

std::vector<std::string> fuzzSeeds() {
  const std::string compound =
      "<Compound VERSION='2' Name='a &lt;&#x20AC;&#38;&quot;' CASN='64-17-5'><Synonyms NUMB='2'><Synonym NAME='eins'/>"
      "<Synonym NAME=''/><UnusedSynonym NAME='z'/></Synonyms><GroupProperty NAME='UNIFAC1' NUMB='1'><Group ID='1' NUMB="
      "'2'/></GroupProperty><FixedProperty NAME='TC' TYPE='PointProp'><PropertyContent CONTENT='Value(5e2)'/>"
      "</FixedProperty><AdditionProperty NAME='e' TYPE='EquationProp' EQUATIONSHAPE='19'><PropertyContent CONTENT='"
      "Tmin(1) nParams(3) Values(1,nan:5,3)'/></AdditionProperty><FixedProperty NAME='LDN' TYPE='COMProp' "
      "CLASSNAME='x'>"
      "<PropertyContent CONTENT='ClassName(x) ComContent(y)'/></FixedProperty><UserProperty NAME='u' CONTENT='"
      "ClassID(x) ComContent(y)'/></Compound>";
  std::vector<std::string> seeds;
  for (const std::string& text :
       {compound, "<?xml version='1.0' encoding='ISO-8859-1'?><!-- c -->" + compound,
        std::string("<!DOCTYPE x [<!ENTITY e 'eeee'>]><Compound Name='&e;'/>"),
        "<CompoundCollection VERSION='2'>" + compound +
            "<EmptySlot/><AddedLoaders NUMB='1'><Loader NAME='l' CLASSNAME='x' PATH='p'/></AddedLoaders><DefaultLoader "
            "NAME='l'/><Model NAME='m' PANE='p'><IPModel CLASSNAME='x'/></Model><OffsetH VALUES='1,nan'/><NamedView "
            "NAME='v' POSITIONS='0,1'/></CompoundCollection>"})
    for (const char kind : {'\0', '\1'}) {
      std::string seed(1, kind);
      for (const char c : text) (seed += c) += '\0';
      seeds.push_back(seed);
    }
  return seeds;
}

}  // namespace qs

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  qs::test::registerClasses();
  if (size > 0) qs::parse(data, size);
  return 0;
}
