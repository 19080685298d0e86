#include "bank/json_source.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include "bank/names.h"
#include "bank/text_file.h"
#include "bank/units.h"
#include "platform/text.h"

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
  int line = 0;
};

// Where a value is, and what is wrong with it.
struct Place {
  int line = 0;
  std::string compound = {}, field = {};
  std::string inside = {};  // the way from the field on, as "form: "

  // A member's place: the outermost is the field.
  Place at(std::string_view member, int memberLine) const {
    Place place{memberLine, compound, field, inside};
    if (field.empty())
      place.field = member;
    else
      place.inside.append(member).append(": ");
    return place;
  }
};

struct Fault {
  std::string_view rule;
  std::string message;
};
constexpr std::string_view kSyntax = "syntax", kShape = "shape", kName = "name", kUnit = "unit";

class Faults {
 public:
  Faults(const std::string& file, std::vector<Finding>& findings) : file_(file), findings_(findings) {}

  void add(const Place& place, const Fault& fault) {
    findings_.push_back({.rule = std::string(fault.rule),
                         .file = file_,
                         .line = place.line,
                         .compound = place.compound,
                         .field = place.field,
                         .message = place.inside + fault.message});
  }

 private:
  const std::string& file_;
  std::vector<Finding>& findings_;
};

Fault unknown(std::string_view what, const std::string& name, const std::string& suggested) {
  return {kName, std::string("no ").append(what).append(" \"") + name + '"' + suggested};
}

Fault unknownKey(const std::string& name) { return {kName, unknownKeyText(name)}; }

std::optional<Key> keyOf(const std::string& name) { return findKey(widen(name)); }

// The value as another type, or nothing and the fault.
template <class T>
std::optional<T> convert(const Value& value, Fault& fault) {
  if constexpr (std::is_same_v<T, std::int32_t>) {
    const auto* whole = value.as<std::int64_t>();
    const auto* large = value.as<std::uint64_t>();
    fault = {kShape, !whole && !large ? "not an integer" : "out of the range of 32-bit integers"};
    if (whole && std::in_range<T>(*whole)) return static_cast<T>(*whole);
    if (large && std::in_range<T>(*large)) return static_cast<T>(*large);
    return std::nullopt;
  } else {
    if (const auto* found = value.as<T>()) return *found;
    if constexpr (std::is_same_v<T, double>) {
      if (const auto* whole = value.as<std::int64_t>()) return static_cast<double>(*whole);
      if (const auto* large = value.as<std::uint64_t>()) return static_cast<double>(*large);
      fault = {kShape, "not a number"};
    } else if constexpr (std::is_same_v<T, bool>) {
      fault = {kShape, "neither true nor false"};
    } else {
      static_assert(std::is_same_v<T, std::string>);
      fault = {kShape, "not a text"};
    }
    return std::nullopt;
  }
}

// An object whose members are taken one by one; what is left in the end was not expected.
class Members {
 public:
  Members(Faults& faults, const Value& value, Place place)
      : faults_(faults), place_(std::move(place)), object_(value.as<Value::Object>()) {
    if (!object_) fault({kShape, "not an object"});
  }

  const Place& place() const { return place_; }

  void fault(const Fault& fault) { this->fault(place_.line, fault); }
  void fault(int line, const Fault& fault) {
    Place place = place_;
    place.line = line;
    faults_.add(place, fault);
    sound_ = false;
  }
  void fault(const char* name, const Value& value, const Fault& fault) {
    faults_.add(place_.at(name, value.line), fault);
    sound_ = false;
  }

  // A fault where there is something to say.
  void check(std::string_view rule, std::string message) {
    if (!message.empty()) fault({rule, std::move(message)});
  }

  bool sound() const { return sound_; }
  // For a fault that is reported elsewhere.
  void drop() { sound_ = false; }

  const Value* find(const char* name) {
    known_.push_back(name);
    if (!object_) return nullptr;
    const auto found = object_->find(name);
    return found == object_->end() ? nullptr : &found->second;
  }

  const Value* need(const char* name) {
    const Value* value = find(name);
    if (!value && object_) fault({kShape, std::string("no member \"") + name + '"'});
    return value;
  }

  // Leaves the target as it is, and returns false, when there is no such member.
  template <class T>
  bool read(const char* name, T& target) {
    const Value* value = find(name);
    return value && put(name, *value, target);
  }
  // The same for a member that must be there.
  template <class T>
  bool get(const char* name, T& target) {
    const Value* value = need(name);
    return value && put(name, *value, target);
  }

  // One of a table of names (bank/names.h).
  template <class Table, class T>
  void readName(const char* name, std::string_view what, const Table& table, T& target) {
    std::string text;
    const Value* value = find(name);
    if (!value || !put(name, *value, text)) return;
    if (const auto* known = valueOf(table, text))
      target = *known;
    else
      fault(name, *value, unknown(what, text, suggestionFrom(table, text)));
  }

  template <class T>
  void getList(const char* name, std::vector<T>& target) {
    if (need(name)) readList(name, target);
  }
  template <class T>
  void readList(const char* name, std::vector<T>& target) {
    for (const Value& element : list(name)) put(name, element, target.emplace_back());
  }

  // The elements of a member that is a list; none where it is not there.
  const Value::List& list(const char* name) {
    static const Value::List none;
    const Value* value = find(name);
    const auto* elements = value ? value->as<Value::List>() : nullptr;
    if (value && !elements) fault(name, *value, {kShape, "not a list"});
    return elements ? *elements : none;
  }
  const Value::Object& object(const char* name) {
    static const Value::Object none;
    const Value* value = find(name);
    const auto* members = value ? value->as<Value::Object>() : nullptr;
    if (value && !members) fault(name, *value, {kShape, "not an object"});
    return members ? *members : none;
  }

  // Whether all was as expected.
  bool finish() {
    if (!object_) return false;
    for (const auto& [name, value] : *object_) {
      if (std::ranges::find(known_, name) == known_.end())
        fault(value.line, {kShape, "unknown member \"" + name + '"' + suggestion(name, known_)});
    }
    return sound_;
  }

 private:
  template <class T>
  struct Plain {
    using Type = T;
  };
  template <class T>
  struct Plain<std::optional<T>> {
    using Type = T;
  };

  template <class T>
  bool put(const char* name, const Value& value, T& target) {
    Fault found;
    if (auto converted = convert<typename Plain<T>::Type>(value, found)) {
      target = *std::move(converted);
      return true;
    }
    fault(name, value, found);
    return false;
  }

  Faults& faults_;
  Place place_;
  const Value::Object* object_;
  std::vector<std::string_view> known_;
  bool sound_ = true;
};

class SourceReader {
 public:
  SourceReader(const Value& root, Faults& faults) : faults_(faults), root_(faults, root, {.line = root.line}) {}

  Source read() {
    root_.get("description", source_.description);
    readOrigins();
    readIdentityOrigins();
    readUnits();
    readWaivers();
    root_.need("compounds");
    const auto& compounds = root_.list("compounds");
    for (std::size_t i = 0; i < compounds.size(); ++i) readCompound(compounds[i], i + 1);
    root_.finish();
    return std::move(source_);
  }

 private:
  void readOrigins() {
    root_.need("sources");
    for (const auto& [name, value] : root_.object("sources")) {
      Members members(faults_, value, Place{value.line, "", "sources", name + ": "});
      Origin& origin = source_.origins[name];
      members.get("title", origin.title);
      members.get("authors", origin.authors);
      members.get("licence", origin.licence);
      members.read("changes", origin.changes);
      members.read("year", origin.year);
      members.finish();
    }
  }

  void readIdentityOrigins() {
    root_.need("identity_sources");
    for (const auto& [name, value] : root_.object("identity_sources")) {
      const Place place{value.line, "", "identity_sources", name + ": "};
      Fault fault;
      const auto origin = convert<std::string>(value, fault);
      if (std::ranges::find(kIdentityMembers, name) == kIdentityMembers.end())
        faults_.add({value.line, "", "identity_sources"},
                    unknown("member", name, suggestion(name, {kIdentityMembers.begin(), kIdentityMembers.end()})));
      else if (!origin)
        faults_.add(place, fault);
      else if (!source_.origins.contains(*origin))
        faults_.add(place, unknownOrigin(*origin));
      else
        source_.identityOrigins[name] = *origin;
    }
  }

  void readUnits() {
    root_.need("units");
    for (const auto& [name, value] : root_.object("units")) {
      const auto key = keyOf(name);
      if (!key) {
        faults_.add({value.line, "", "units"}, unknownKey(name));
        continue;
      }
      Fault fault;
      auto unit = convert<std::string>(value, fault);
      double ignored = 0.0;
      if (unit) fault = {kUnit, convertNumber(unitOf(*key), *unit, ignored)};
      if (!fault.message.empty()) {
        faults_.add({value.line, "", "units", name + ": "}, fault);
        unit.reset();
      }
      units_[*key] = std::move(unit);
    }
  }

  void readWaivers() {
    for (const Value& value : root_.list("waivers")) {
      Members members(faults_, value, Place{value.line, "", "waivers"});
      Waiver waiver;
      waiver.line = value.line;
      members.get("rule", waiver.rule);
      std::int32_t compound = 0;
      members.read("compound", compound);
      waiver.compound = compound;
      members.read("field", waiver.field);
      members.get("reason", waiver.reason);
      if (members.finish()) source_.waivers.push_back(std::move(waiver));
    }
  }

  // As messages name the compound; nothing where it has no number or no name.
  static std::optional<std::string> titleOf(const Value& value) {
    const auto* object = value.as<Value::Object>();
    const auto member = [object](const char* name) {
      static const Value null{};
      const auto found = object ? object->find(name) : Value::Object::const_iterator();
      return object && found != object->end() ? found->second : null;
    };
    Fault ignored;
    const auto number = convert<std::int32_t>(member("number"), ignored);
    const auto name = convert<std::string>(member("name"), ignored);
    if (!number || !name) return std::nullopt;
    CompoundData compound;
    compound.number = *number;
    compound.name = *name;
    return database::describe(compound);
  }

  void readCompound(const Value& value, std::size_t position) {
    const auto title = titleOf(value);
    Members members(faults_, value,
                    Place{value.line, title.value_or("compound at position " + std::to_string(position)), ""});
    Compound compound;
    compound.line = value.line;
    CompoundData& data = compound.data;
    members.get("number", data.number);
    members.need("name");
#define BANK_TEXT(key, field, record_name, size, member) members.read(member, data.field);
#define BANK_LONG(key, field, record_name, member) members.read(member, data.field);
#define BANK_SHORT(key, field, type, record_name, member) readShort(members, member, data.field);
#include "props/identity.def"
    members.readList("synonyms", data.synonyms);
    for (const Value& element : members.list("unifac")) {
      Members group(faults_, element, members.place().at("unifac", element.line));
      auto& [subgroup, count] = data.unifac.emplace_back();
      group.get("subgroup", subgroup);
      group.get("count", count);
      group.finish();
    }
    forEachValue(members, "constants", compound, [&](Key key, Members& item, const std::string& unit) {
      double& number = data.constants[key];
      if (item.get("value", number) && item.sound()) item.check(kUnit, convertNumber(unitOf(key), unit, number));
      return item.finish() || data.constants.erase(key) == 0;
    });
    forEachValue(members, "correlations", compound, [&](Key key, Members& item, const std::string& unit) {
      readCorrelation(item, key, unit, data.correlations[key]);
      return item.finish() || data.correlations.erase(key) == 0;
    });
    members.finish();
    if (title) source_.compounds.push_back(std::move(compound));
  }

  static void readShort(Members& members, const char* name, std::optional<tagCompoundFamilyEnum>& family) {
    members.readName(name, "family", kFamilies, family);
  }
  static void readShort(Members& members, const char* name, std::optional<bool>& flag) { members.read(name, flag); }

  // Hands out the items of an object whose members are keys, with their units, once provenance is read. `read` returns
  // whether the item is kept.
  template <class Read>
  void forEachValue(Members& members, const char* group, Compound& compound, Read read) {
    for (const auto& [name, value] : members.object(group)) {
      const auto key = keyOf(name);
      if (!key) {
        members.fault(group, value, unknownKey(name));
        continue;
      }
      Members item(faults_, value, members.place().at(name, value.line));
      const auto declared = units_.find(*key);
      std::string unit;
      const bool hasUnit = item.read("unit", unit);
      if (declared == units_.end())
        item.fault({kUnit, "the key is not in units"});
      else if (!declared->second)
        item.drop();
      else if (hasUnit && unit != declared->second)
        item.fault({kUnit, "the unit is \"" + unit + "\", not \"" + *declared->second + "\" as in units"});
      else
        unit = *declared->second;
      Provenance provenance;
      provenance.line = value.line;
      item.read("source", provenance.origin);
      if (!provenance.origin.empty() && !source_.origins.contains(provenance.origin))
        item.fault(unknownOrigin(provenance.origin));
      item.readName("kind", "kind", kKinds, provenance.kind);
      item.readName("quality", "quality", kQualities, provenance.quality);
      item.read("uncertainty", provenance.uncertainty);
      item.read("note", provenance.note);
      if (read(*key, item, unit)) compound.provenance[*key] = std::move(provenance);
    }
  }

  static void readCorrelation(Members& item, Key key, const std::string& unit, Correlation& correlation) {
    item.need("form");
    item.readName("form", "form", kForms, correlation.form);
    item.getList("coefficients", correlation.coefficients);
    std::string temperatureUnit(kTemperatureUnit), pressureUnit(kPressureUnit);
    item.read("tunit", temperatureUnit);
    item.read("punit", pressureUnit);
    const auto convertLimit = [&](bool isThere, std::string_view target, const std::string& from, double& limit) {
      if (isThere && item.sound()) item.check(kUnit, convertNumber(target, from, limit));
    };
    convertLimit(item.get("tmin", correlation.tmin), kTemperatureUnit, temperatureUnit, correlation.tmin);
    convertLimit(item.get("tmax", correlation.tmax), kTemperatureUnit, temperatureUnit, correlation.tmax);
    convertLimit(item.read("pmin", correlation.pmin), kPressureUnit, pressureUnit, correlation.pmin);
    convertLimit(item.read("pmax", correlation.pmax), kPressureUnit, pressureUnit, correlation.pmax);
    item.readName("xshape", "transformation", kTransformations, correlation.xShape);
    item.readName("yshape", "transformation", kTransformations, correlation.yShape);
    item.read("xpow", correlation.xPower);
    item.read("ypow", correlation.yPower);
    if (item.sound()) item.check(kUnit, convertCorrelation(key, unit, correlation));
  }

  Fault unknownOrigin(const std::string& name) const {
    std::vector<std::string_view> names;
    for (const auto& [known, origin] : source_.origins) names.push_back(known);
    return unknown("source", name, suggestion(name, names));
  }

  Faults& faults_;
  Members root_;
  Source source_;
  std::map<Key, std::optional<std::string>> units_;  // nothing for one that is no unit
};

// Walks through a text and keeps the number of the line that it has reached.
struct LineCounter {
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  const char* at;
  const char* begin;
  int* line;

  reference operator*() const { return *at; }
  LineCounter& operator++() {
    if (at != begin && at[-1] == '\n') ++*line;  // the line break belongs to the line that it ends
    ++at;
    return *this;
  }
  bool operator==(const LineCounter& other) const { return at == other.at; }
};

// Builds the value of a text from the parser's events; nothing when it is none. Refuses depths that no source has: a
// value is destroyed level by level. A value's line is that of its name in an object, otherwise that of its begin.
class Builder {
 public:
  Builder(Faults& faults, const int& line) : faults_(faults), line_(line) {}

  std::optional<Value> take() { return std::move(root_); }

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
      faults_.add({.line = line_}, {kShape, "member \"" + name + "\" stands twice"});
    key_ = std::move(name);
    keyLine_ = line_;
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception& error) {
    const std::string message = error.what();
    const auto prefix = message.find("] ");
    return giveUp(prefix == std::string::npos ? message : message.substr(prefix + 2));
  }

 private:
  static constexpr std::size_t kDeepest = 16;

  bool giveUp(std::string why) {
    faults_.add({.line = line_}, {kSyntax, std::move(why)});
    root_.reset();
    return false;
  }

  template <class T>
  Value& put(T content) {
    if (open_.empty()) return root_.emplace(Value{std::move(content), line_});
    if (auto* list = std::get_if<Value::List>(&open_.back()->content))
      return list->emplace_back(Value{std::move(content), line_});
    return std::get<Value::Object>(open_.back()->content)[key_] = Value{std::move(content), keyLine_};
  }
  template <class T>
  bool add(T value) {
    put(std::move(value));
    return true;
  }
  template <class T>
  bool open(T empty) {
    if (open_.size() == kDeepest) return giveUp("nested too deeply");
    open_.push_back(&put(std::move(empty)));
    return true;
  }
  bool close() {
    open_.pop_back();
    return true;
  }

  Faults& faults_;
  const int& line_;
  std::optional<Value> root_;
  std::vector<Value*> open_;
  std::string key_;  // of the member that comes next
  int keyLine_ = 0;
};

std::optional<Value> parse(const std::string& text, Faults& faults) {
  int line = 1;
  Builder builder(faults, line);
  const char* const begin = text.data();
  nlohmann::json::sax_parse(LineCounter{begin, begin, &line}, LineCounter{begin + text.size(), begin, &line}, &builder);
  return builder.take();
}

}  // namespace

Source readSource(const std::filesystem::path& path, std::vector<Finding>& findings) {
  const std::string file = utf8(path);
  std::vector<Finding> found;
  Faults faults(file, found);
  Source source;
  if (const auto root = parse(readText(path), faults)) source = SourceReader(*root, faults).read();
  source.file = path;
  std::ranges::stable_sort(found, {}, &Finding::line);
  std::ranges::move(found, std::back_inserter(findings));
  return source;
}

Source readSource(const std::filesystem::path& path) {
  std::vector<Finding> findings;
  Source source = readSource(path, findings);
  if (!findings.empty()) throw std::runtime_error(textOf(findings.front()));
  return source;
}

}  // namespace qs::bank
