#include "bank/json_source.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "platform/text.h"
#include "props/forms.h"

namespace qs::bank {
namespace {

using database::CompoundData;
using database::Correlation;

// A value of the text. The library's own values allocate while they are destroyed, where a lack of memory ends the
// process; so they are not made, and these take the parser's events.
struct Value {
  using List = std::vector<Value>;
  using Object = std::map<std::string, Value, std::less<>>;

  template <class T>
  const T* as() const {
    return std::get_if<T>(&content);
  }

  std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string, List, Object> content;
};

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
T convert(const Value& value, const std::string& where) {
  if constexpr (std::is_same_v<T, std::int32_t>) {
    const auto* whole = value.as<std::int64_t>();
    const auto* large = value.as<std::uint64_t>();
    if (!whole && !large) fail(where, "not an integer");
    if (large ? !std::in_range<T>(*large) : !std::in_range<T>(*whole))
      fail(where, "out of the range of 32-bit integers");
    return static_cast<T>(large ? static_cast<std::int64_t>(*large) : *whole);
  } else if constexpr (std::is_same_v<T, tagCompoundFamilyEnum>) {
    const auto name = convert<std::string>(value, where);
    const auto* known = std::ranges::find(kFamilies, name, &std::pair<std::string_view, T>::first);
    if (known == std::end(kFamilies)) fail(where, "no family \"" + name + '"');
    return known->second;
  } else {
    if (const auto* found = value.as<T>()) return *found;
    if constexpr (std::is_same_v<T, double>) {
      if (const auto* whole = value.as<std::int64_t>()) return static_cast<double>(*whole);
      if (const auto* large = value.as<std::uint64_t>()) return static_cast<double>(*large);
      fail(where, "not a number");
    } else if constexpr (std::is_same_v<T, bool>) {
      fail(where, "neither true nor false");
    } else {
      static_assert(std::is_same_v<T, std::string>);
      fail(where, "not a text");
    }
  }
}

const Value::List& listIn(const Value& value, const std::string& where) {
  const auto* list = value.as<Value::List>();
  if (!list) fail(where, "not a list");
  return *list;
}

const Value::Object& objectIn(const Value& value, const std::string& where) {
  const auto* object = value.as<Value::Object>();
  if (!object) fail(where, "not an object");
  return *object;
}

template <class T>
std::vector<T> convertList(const Value& value, const std::string& where) {
  std::vector<T> list;
  for (const Value& element : listIn(value, where)) list.push_back(convert<T>(element, where));
  return list;
}

// An object whose members are taken one by one; what is left in the end was not expected. `where` names it in messages;
// it is empty for the outermost object.
class Members {
 public:
  Members(const Value& value, std::string where) : object_(objectIn(value, where)), where_(std::move(where)) {}

  const std::string& where() const { return where_; }
  std::string where(std::string_view name) const {
    return std::string(where_).append(where_.empty() ? "" : ", ").append(name);
  }

  const Value* find(const char* name) {
    const auto found = object_.find(name);
    if (found == object_.end()) return nullptr;
    taken_.insert(name);
    return &found->second;
  }

  const Value& need(const char* name) {
    const Value* value = find(name);
    if (!value) fail(where_, std::string("no member \"") + name + '"');
    return *value;
  }

  template <class T>
  T get(const char* name) {
    return convert<T>(need(name), where(name));
  }

  // Leaves the target as it is when there is no such member.
  template <class T>
  void read(const char* name, T& target) {
    if (const Value* value = find(name)) target = convert<T>(*value, where(name));
  }
  template <class T>
  void read(const char* name, std::optional<T>& target) {
    if (const Value* value = find(name)) target = convert<T>(*value, where(name));
  }

  void finish() const {
    for (const auto& [name, value] : object_) {
      if (!taken_.contains(name)) fail(where_, "unknown member \"" + name + '"');
    }
  }

 private:
  const Value::Object& object_;
  const std::string where_;
  std::set<std::string> taken_;
};

class SourceReader {
 public:
  explicit SourceReader(const Value& root) : root_(root, "") {}

  std::vector<CompoundData> read() {
    root_.get<std::string>("description");
    readSources();
    readIdentitySources();
    readUnits();
    std::vector<CompoundData> compounds;
    for (const Value& compound : listIn(root_.need("compounds"), root_.where("compounds")))
      compounds.push_back(readCompound(compound, compounds.size() + 1));
    root_.finish();
    return compounds;
  }

 private:
  void readSources() {
    for (const auto& [name, value] : objectIn(root_.need("sources"), root_.where("sources"))) {
      Members source(value, root_.where("sources, " + name));
      for (const char* member : {"title", "authors", "licence"}) source.get<std::string>(member);
      std::string changes;
      source.read("changes", changes);
      source.finish();
      sources_.insert(name);
    }
  }

  void readIdentitySources() {
    const std::string where = root_.where("identity_sources");
    for (const auto& [name, value] : objectIn(root_.need("identity_sources"), where)) {
      checkSource(convert<std::string>(value, where), where + ", " + name);
      identityFields_.insert(name);
    }
  }

  void readUnits() {
    const std::string where = root_.where("units");
    for (const auto& [name, value] : objectIn(root_.need("units"), where)) {
      units_[keyOf(name, where)] = convert<std::string>(value, where + ", " + name);
    }
  }

  CompoundData readCompound(const Value& value, std::size_t position) {
    CompoundData compound;
    const std::string place = root_.where("compound at position " + std::to_string(position));
    {
      Members naming(value, place);
      compound.number = naming.get<std::int32_t>("number");
      compound.name = naming.get<std::string>("name");
    }
    Members members(value, root_.where(database::describe(compound)));
    for (const auto& [name, ignored] : objectIn(value, place)) {
      if (name != "constants" && name != "correlations" && !identityFields_.contains(name)) {
        fail(members.where(name), "not in identity_sources");
      }
    }
    members.find("number");
#define BANK_FIELD(key, field, record_name, member) members.read(member, compound.field);
#include "props/identity.def"
    if (const Value* synonyms = members.find("synonyms")) {
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

  static void readGroups(Members& members, CompoundData& compound) {
    const Value* groups = members.find("unifac");
    if (!groups) return;
    for (const Value& value : listIn(*groups, members.where("unifac"))) {
      Members group(value, members.where("unifac"));
      compound.unifac.push_back({group.get<std::int32_t>("subgroup"), group.get<std::int32_t>("count")});
      group.finish();
    }
  }

  // Hands out the items of an object whose members are keys, once unit, source and note are checked.
  template <class Read>
  void forEachKey(Members& members, const char* name, Read read) {
    const Value* object = members.find(name);
    if (!object) return;
    for (const auto& [keyText, value] : objectIn(*object, members.where(name))) {
      const Key key = keyOf(keyText, members.where());
      Members item(value, members.where(keyText));
      checkUnit(key, item.get<std::string>("unit"), item.where());
      checkSource(item.get<std::string>("source"), item.where());
      std::string note;
      item.read("note", note);
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
    item.read("pmin", correlation.pmin);
    item.read("pmax", correlation.pmax);
    readTransformation(item, "xshape", correlation.xShape);
    readTransformation(item, "yshape", correlation.yShape);
    item.read("xpow", correlation.xPower);
    item.read("ypow", correlation.yPower);
    return correlation;
  }

  static void readTransformation(Members& item, const char* member, tagXYShapeEnum& shape) {
    const Value* value = item.find(member);
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

// Builds the value of a text from the parser's events. Refuses members that occur twice, and depths that no source has:
// a value is destroyed level by level.
class Builder {
 public:
  Builder(const std::string& file, const int& line) : file_(file), line_(line) {}

  Value take() { return std::move(root_); }

  bool null() { return add(nullptr); }
  bool boolean(bool value) { return add(value); }
  bool number_integer(std::int64_t value) { return add(value); }
  bool number_unsigned(std::uint64_t value) { return add(value); }
  bool number_float(double value, const std::string&) { return add(value); }
  bool string(std::string& text) { return add(std::move(text)); }
  bool binary(std::vector<std::uint8_t>&) { return false; }
  bool start_object(std::size_t) { return open(Value::Object()); }
  bool end_object() { return close(); }
  bool start_array(std::size_t) { return open(Value::List()); }
  bool end_array() { return close(); }
  bool key(std::string& name) {
    if (std::get<Value::Object>(open_.back()->content).contains(name))
      fail(place(), "member \"" + name + "\" stands twice");
    key_ = std::move(name);
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) {
    const std::string message = error.what();
    const auto prefix = message.find("] ");
    fail(place(), prefix == std::string::npos ? message : message.substr(prefix + 2));
  }

 private:
  static constexpr std::size_t kDeepest = 16;

  std::string place() const { return file_ + ':' + std::to_string(line_); }

  Value& put(Value value) {
    if (open_.empty()) return root_ = std::move(value);
    if (auto* list = std::get_if<Value::List>(&open_.back()->content)) return list->emplace_back(std::move(value));
    return std::get<Value::Object>(open_.back()->content)[key_] = std::move(value);
  }
  template <class T>
  bool add(T value) {
    put(Value{std::move(value)});
    return true;
  }
  template <class T>
  bool open(T empty) {
    if (open_.size() == kDeepest) fail(place(), "nested too deeply");
    Value& container = put(Value{std::move(empty)});
    open_.push_back(&container);
    return true;
  }
  bool close() {
    open_.pop_back();
    return true;
  }

  const std::string& file_;
  const int& line_;
  Value root_;
  std::vector<Value*> open_;
  std::string key_;  // of the member that comes next
};

Value parse(const std::string& text, const std::string& file) {
  int line = 1;
  Builder builder(file, line);
  nlohmann::json::sax_parse(LineCounter{text.data(), &line}, LineCounter{text.data() + text.size(), &line}, &builder);
  return builder.take();
}

std::string readText(const std::filesystem::path& path, const std::string& file) {
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream && errno == ENOMEM) throw std::bad_alloc();
  if (!stream) fail(file, "cannot be opened");
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) fail(file, "cannot be read");
  return text;
}

}  // namespace

std::vector<CompoundData> readCompoundSource(const std::filesystem::path& path) {
  const std::u8string name = path.u8string();
  const std::string file(name.begin(), name.end());
  const Value root = parse(readText(path, file), file);
  try {
    return SourceReader(root).read();
  } catch (const std::runtime_error& error) {
    fail(file, error.what());
  }
}

}  // namespace qs::bank
