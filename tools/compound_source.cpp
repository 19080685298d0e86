#include "tools/compound_source.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/text.h"
#include "props/forms.h"

namespace qs::tools {
namespace {

using database::CompoundData;
using database::Correlation;
using nlohmann::json;

constexpr std::pair<std::string_view, tagCompoundFamilyEnum> kFamilies[] = {
    {"Hydrocarbon", eHydrocarbon},
    {"Solid", eSolid},
    {"Miscellaneous", eMiscellaneous},
    {"Amine", eAmine},
    {"Alcohol", eAlcohol},
    {"Ketone", eKetone},
    {"Aldehyde", eAldehyde},
    {"Ester", eEster},
    {"CarboxylicAcid", eCarboxylicAcid},
    {"Halogen", eHalogen},
    {"Nitrile", eNitrile},
    {"Phenol", ePhenol},
    {"Ether", eEther},
    {"Polymer", ePolymer},
};

// By number, from COMx = 1 on.
constexpr std::string_view kTransformations[] = {
    "COMx",    "COMxr",       "COM1mxr",    "COMlogx",         "COMlogxr",   "COMlog1mxr", "COMlnx",
    "COMlnxr", "COMln1mxr",   "COMexpx",    "COMexpxr",        "COMexp1mxr", "COMsinx",    "COMcosx",
    "COMtanx", "COMsinxr",    "COMcosxr",   "COMtanxr",        "COMsin1mxr", "COMcos1mxr", "COMtan1mxr",
    "COM1mx",  "COMxm1",      "COMxrm1",    "COMcuberoot1mxr", "COMxppdsm1", "COMlnxxo",   "COMxscale",
    "COMxxo",  "COMrootxodx", "COMscalexy", "COMydx",          "COMrootxdy", "COMxdp",     "COMxp",
    "COMlnxp",
};
static_assert(std::size(kTransformations) == COMlnxp);

[[noreturn]] void fail(const std::string& where, const std::string& why) {
  throw std::runtime_error(where.empty() ? why : where + ": " + why);
}

template <class T>
T convert(const json& value, const std::string& where) {
  if constexpr (std::is_same_v<T, std::string>) {
    if (!value.is_string()) fail(where, "not a text");
  } else if constexpr (std::is_same_v<T, bool>) {
    if (!value.is_boolean()) fail(where, "neither true nor false");
  } else if constexpr (std::is_same_v<T, double>) {
    if (!value.is_number()) fail(where, "not a number");
  } else {
    static_assert(std::is_same_v<T, std::int32_t>);
    using Limits = std::numeric_limits<T>;
    if (!value.is_number_integer()) fail(where, "not an integer");
    if (value.is_number_unsigned() ? value.get<std::uint64_t>() > Limits::max()
                                   : value.get<std::int64_t>() < Limits::min()) {
      fail(where, "out of the range of 32-bit integers");
    }
  }
  return value.get<T>();
}

template <class T>
std::vector<T> convertList(const json& value, const std::string& where) {
  if (!value.is_array()) fail(where, "not a list");
  std::vector<T> list;
  for (const json& element : value) list.push_back(convert<T>(element, where));
  return list;
}

// An object whose members are taken one by one; what is left in the end was not expected. `where` names it in messages;
// it is empty for the outermost object.
class Members {
 public:
  Members(const json& object, std::string where) : object_(object), where_(std::move(where)) {
    if (!object.is_object()) fail(where_, "not an object");
  }

  const std::string& where() const { return where_; }
  std::string where(std::string_view name) const {
    return std::string(where_).append(where_.empty() ? "" : ", ").append(name);
  }

  const json* find(const char* name) {
    const auto found = object_.find(name);
    if (found == object_.end()) return nullptr;
    taken_.insert(name);
    return &*found;
  }

  const json& need(const char* name) {
    const json* value = find(name);
    if (!value) fail(where_, std::string("no member \"") + name + '"');
    return *value;
  }

  template <class T>
  T get(const char* name) {
    return convert<T>(need(name), where(name));
  }

  // Leaves the target as it is when there is no such member.
  template <class T, class Target>
  void read(const char* name, Target& target) {
    if (const json* value = find(name)) target = convert<T>(*value, where(name));
  }

  void finish() const {
    for (const auto& [name, value] : object_.items()) {
      if (!taken_.contains(name)) fail(where_, "unknown member \"" + name + '"');
    }
  }

 private:
  const json& object_;
  const std::string where_;
  std::set<std::string> taken_;
};

class SourceReader {
 public:
  explicit SourceReader(const json& root) : root_(root, "") {}

  std::vector<CompoundData> read() {
    root_.get<std::string>("description");
    readSources();
    readIdentitySources();
    readUnits();
    std::vector<CompoundData> compounds;
    const json& list = root_.need("compounds");
    if (!list.is_array()) fail(root_.where("compounds"), "not a list");
    for (const json& compound : list) compounds.push_back(readCompound(compound, compounds.size() + 1));
    root_.finish();
    return compounds;
  }

 private:
  void readSources() {
    for (const auto& [name, value] : root_.need("sources").items()) {
      Members source(value, root_.where("sources, " + name));
      for (const char* member : {"title", "authors", "licence"}) source.get<std::string>(member);
      std::string changes;
      source.read<std::string>("changes", changes);
      source.finish();
      sources_.insert(name);
    }
  }

  void readIdentitySources() {
    const std::string where = root_.where("identity_sources");
    for (const auto& [name, value] : root_.need("identity_sources").items()) {
      checkSource(convert<std::string>(value, where), where + ", " + name);
      identityFields_.insert(name);
    }
  }

  void readUnits() {
    const std::string where = root_.where("units");
    for (const auto& [name, value] : root_.need("units").items()) {
      units_[keyOf(name, where)] = convert<std::string>(value, where + ", " + name);
    }
  }

  CompoundData readCompound(const json& value, std::size_t position) {
    CompoundData compound;
    const std::string place = root_.where("compound at position " + std::to_string(position));
    {
      Members naming(value, place);
      compound.number = naming.get<std::int32_t>("number");
      compound.name = naming.get<std::string>("name");
    }
    Members members(value, root_.where(database::describe(compound)));
    for (const auto& [name, ignored] : value.items()) {
      if (name != "constants" && name != "correlations" && !identityFields_.contains(name)) {
        fail(members.where(name), "not in identity_sources");
      }
    }
    members.find("number");
    members.find("name");
    members.read<std::string>("iupac_name", compound.iupacName);
    members.read<std::string>("formula", compound.formula);
    members.read<std::string>("cas", compound.cas);
    readFamily(members, compound);
    members.read<bool>("non_condensable", compound.nonCondensable);
    members.read<std::int32_t>("dippr_id", compound.dipprId);
    members.read<std::int32_t>("ddb_id", compound.ddbId);
    members.read<std::int32_t>("ppds_id", compound.ppdsId);
    members.read<std::int32_t>("cma_id", compound.cmaId);
    members.read<std::int32_t>("pp_attribute", compound.ppAttribute);
    if (const json* synonyms = members.find("synonyms")) {
      compound.synonyms = convertList<std::string>(*synonyms, members.where("synonyms"));
    }
    readGroups(members, compound);
    forEachKey(members, "constants",
               [&](Key key, Members& item) { compound.constants[key] = item.get<double>("value"); });
    forEachKey(members, "correlations",
               [&](Key key, Members& item) { compound.correlations[key] = readCorrelation(item); });
    members.finish();
    return compound;
  }

  static void readFamily(Members& members, CompoundData& compound) {
    const json* value = members.find("family");
    if (!value) return;
    const std::string where = members.where("family");
    const auto name = convert<std::string>(*value, where);
    const auto* known = std::ranges::find(kFamilies, name, &std::pair<std::string_view, tagCompoundFamilyEnum>::first);
    if (known == std::end(kFamilies)) fail(where, "no family \"" + name + '"');
    compound.family = known->second;
  }

  static void readGroups(Members& members, CompoundData& compound) {
    const json* groups = members.find("unifac");
    if (!groups) return;
    if (!groups->is_array()) fail(members.where("unifac"), "not a list");
    for (const json& value : *groups) {
      Members group(value, members.where("unifac"));
      compound.unifac.push_back({group.get<std::int32_t>("subgroup"), group.get<std::int32_t>("count")});
      group.finish();
    }
  }

  // Hands out the items of an object whose members are keys, once unit, source and note are checked.
  template <class Read>
  void forEachKey(Members& members, const char* name, Read read) {
    const json* object = members.find(name);
    if (!object) return;
    if (!object->is_object()) fail(members.where(name), "not an object");
    for (const auto& [keyText, value] : object->items()) {
      const Key key = keyOf(keyText, members.where());
      Members item(value, members.where(keyText));
      checkUnit(key, item.get<std::string>("unit"), item.where());
      checkSource(item.get<std::string>("source"), item.where());
      std::string note;
      item.read<std::string>("note", note);
      read(key, item);
      item.finish();
    }
  }

  static Correlation readCorrelation(Members& item) {
    Correlation correlation;
    const auto name = item.get<std::string>("form");
    const EquationForm* form = findForm(widen("PropCurve" + name));
    if (!form) fail(item.where("form"), "no form \"" + name + '"');
    correlation.form = static_cast<tagEquationShapeEnum>(form->shape);
    correlation.coefficients = convertList<double>(item.need("coefficients"), item.where("coefficients"));
    correlation.tmin = item.get<double>("tmin");
    correlation.tmax = item.get<double>("tmax");
    item.read<double>("pmin", correlation.pmin);
    item.read<double>("pmax", correlation.pmax);
    readTransformation(item, "xshape", correlation.xShape);
    readTransformation(item, "yshape", correlation.yShape);
    item.read<double>("xpow", correlation.xPower);
    item.read<double>("ypow", correlation.yPower);
    return correlation;
  }

  static void readTransformation(Members& item, const char* member, tagXYShapeEnum& shape) {
    const json* value = item.find(member);
    if (!value) return;
    const auto name = convert<std::string>(*value, item.where(member));
    const auto* known = std::ranges::find(kTransformations, name);
    if (known == std::end(kTransformations)) fail(item.where(member), "no transformation \"" + name + '"');
    shape = static_cast<tagXYShapeEnum>(known - std::begin(kTransformations) + COMx);
  }

  static Key keyOf(const std::string& name, const std::string& where) {
    const auto key = findKey(widen(name));
    if (!key) fail(where, "no property key \"" + name + '"');
    return *key;
  }

  void checkSource(const std::string& name, const std::string& where) const {
    if (!sources_.contains(name)) fail(where, "no source \"" + name + '"');
  }

  void checkUnit(Key key, const std::string& unit, const std::string& where) const {
    const auto expected = units_.find(key);
    if (expected == units_.end()) fail(where, "the key is not in units");
    if (unit != expected->second) fail(where, "the unit is \"" + unit + "\", not \"" + expected->second + '"');
  }

  Members root_;
  std::set<std::string> sources_, identityFields_;
  std::map<Key, std::string> units_;
};

// Walks through a text and keeps the number of the line that it has reached.
struct LineCounter {
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  const char* at;
  int* line;

  reference operator*() const { return *at; }
  LineCounter& operator++() {
    if (*at++ == '\n') ++*line;
    return *this;
  }
  bool operator==(const LineCounter& other) const { return at == other.at; }
};

// Parses and refuses members that stand twice, of which the parser would keep the last.
json parse(const std::string& text, const std::string& file) {
  int line = 1;
  std::vector<std::set<std::string>> open;
  const auto place = [&] { return file + ':' + std::to_string(line); };
  const auto refuseRepeated = [&](int, json::parse_event_t event, json& parsed) {
    if (event == json::parse_event_t::object_start) open.emplace_back();
    if (event == json::parse_event_t::object_end) open.pop_back();
    if (event == json::parse_event_t::key && !open.back().insert(parsed.get<std::string>()).second) {
      fail(place(), "member \"" + parsed.get<std::string>() + "\" stands twice");
    }
    return true;
  };
  try {
    return json::parse(LineCounter{text.data(), &line}, LineCounter{text.data() + text.size(), &line}, refuseRepeated);
  } catch (const json::exception& error) {
    const std::string message = error.what();
    const auto prefix = message.find("] ");
    fail(place(), prefix == std::string::npos ? message : message.substr(prefix + 2));
  }
}

std::string readText(const std::filesystem::path& path, const std::string& file) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) fail(file, "cannot be opened");
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) fail(file, "cannot be read");
  return text;
}

}  // namespace

std::vector<CompoundData> readCompoundSource(const std::filesystem::path& path) {
  const std::u8string name = path.u8string();
  const std::string file(name.begin(), name.end());
  const json root = parse(readText(path, file), file);
  try {
    return SourceReader(root).read();
  } catch (const std::runtime_error& error) {
    fail(file, error.what());
  }
}

}  // namespace qs::tools
