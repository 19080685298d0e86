// C++ for hosts: compounds, collections and phases as objects that own, on the interfaces of qscontainers.h.
//
//   const auto session = qs::Session::open().value();
//   const auto water = qs::Compound::read("/path/to/database", 19).value();
//   const double pressure = water["VP"].at(373.15).value();  // kPa
//
// Results. Every call that may fail returns a Result: the value, or why there is none. The caller chooses: `if
// (result)` and `value_or` never throw, `value()` throws qs::Error. There is one set of functions for both, because a
// property that is not set is no error for a calculation that has a way out, and is one for a program that has none.
// What throws without being asked is std::bad_alloc alone, as of the strings and vectors that are returned.
//
// Result codes: S_OK for a value that is there, S_FALSE for what is not set or not found, and otherwise the code of the
// call that failed: E_INVALIDARG for arguments that cannot be, among them buffers of different lengths; E_NOINTERFACE
// for an empty object and for one of another maker that lacks the interface; E_FAIL for files that cannot be read.
//
// Units: temperatures in K, pressures in kPa, values in the unit of the property (Property::unit, docs/units.md). A
// number that is not there is -32767 in buffers.
//
// Ownership: an object holds one reference and gives it up when it goes; a copy refers to the same compound.
//
// Threads: an object is used by the thread that created it. Different objects may be used at the same time. All objects
// of a thread go before its Session.
//
// Texts are UTF-8. On Windows a text that is none is taken as of the system's code page, as `main` gets its arguments.
#pragma once

#ifndef _WIN32
#include <dlfcn.h>
#include <unistd.h>
#endif

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "com/com_ptr.h"
#include "com/not_set.h"
#include "interfaces/interfaces.h"

namespace qs {

// Why there is no value: a result code other than S_OK, what was asked for, and what the object that failed says of it
// (ILastError); that is empty for S_FALSE and for objects of other makers.
struct Failure {
  HRESULT code = E_FAIL;
  std::string what = {};
  std::string reason = {};

  // For a person: what was asked for, what happened, and the code.
  std::string message() const {
    if (code == S_FALSE) return what + ": not there";
    const char* meaning = !reason.empty()               ? reason.c_str()
                          : code == E_INVALIDARG        ? "an argument that cannot be"
                          : code == E_NOINTERFACE       ? "no object, or one that cannot do this"
                          : code == E_OUTOFMEMORY       ? "no memory"
                          : code == REGDB_E_CLASSNOTREG ? "a class is not registered"
                                                        : "failed";
    std::string text = what + ": " + meaning + " (0x";
    for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789ABCDEF"[(static_cast<ULONG>(code) >> shift) & 0xF];
    return text + ")";
  }
};

// What `value()` throws.
class Error : public std::runtime_error {
 public:
  explicit Error(const Failure& failure) : std::runtime_error(failure.message()), code_(failure.code) {}
  HRESULT code() const noexcept { return code_; }

 private:
  HRESULT code_;
};

// A value, or why there is none.
template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Failure failure) : state_(std::in_place_index<1>, std::move(failure)) {}

  explicit operator bool() const noexcept { return state_.index() == 0; }
  HRESULT code() const noexcept { return *this ? S_OK : failure().code; }

  // Throw Error when there is no value.
  const T& value() const& {
    if (!*this) throw Error(failure());
    return **this;
  }
  T value() && {
    if (!*this) throw Error(failure());
    return *std::move(*this);
  }

  template <class Other>
  T value_or(Other&& other) const& {
    return *this ? **this : static_cast<T>(std::forward<Other>(other));
  }
  template <class Other>
  T value_or(Other&& other) && {
    return *this ? *std::move(*this) : static_cast<T>(std::forward<Other>(other));
  }

  // For a result that has been tested: the value, or the failure.
  const T& operator*() const& noexcept { return *std::get_if<0>(&state_); }
  T operator*() && { return std::move(*std::get_if<0>(&state_)); }
  const T* operator->() const noexcept { return std::get_if<0>(&state_); }
  const Failure& failure() const noexcept { return *std::get_if<1>(&state_); }

 private:
  std::variant<T, Failure> state_;
};

// Of a call that returns nothing but its success.
struct Done {};

namespace detail {

using Wide = std::basic_string<OLECHAR>;

// The character that begins at `i`, which moves behind it; -1 for bytes that are no UTF-8.
inline long characterAt(std::string_view text, std::size_t& i) {
  const auto byteAt = [&](std::size_t at) -> unsigned {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
  };
  const unsigned first = byteAt(i++);
  if (first < 0x80) return static_cast<long>(first);
  if (first < 0xC2 || first > 0xF4) return -1;
  const int more = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
  unsigned long character = first & (0x3FU >> more);
  for (int k = 0; k < more; ++k, ++i) {
    const unsigned next = byteAt(i);
    if ((next & 0xC0) != 0x80) return -1;
    character = character << 6 | (next & 0x3F);
  }
  constexpr unsigned long kLeast[] = {0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character < 0xE000;
  return character < kLeast[more - 1] || character > 0x10FFFF || surrogate ? -1 : static_cast<long>(character);
}

inline Wide wideOf(std::string_view text) {
  Wide wide;
  for (std::size_t i = 0; i < text.size();) {
    long character = characterAt(text, i);
#ifdef _WIN32
    if (character < 0) {
      const int size = static_cast<int>(text.size());
      wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0)));
      MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
      return wide;
    }
#endif
    if (character < 0) character = 0xFFFD;
    if (character >= 0x10000) {
      wide += static_cast<OLECHAR>(0xD7C0 + (character >> 10));
      character = 0xDC00 + (character & 0x3FF);
    }
    wide += static_cast<OLECHAR>(character);
  }
  return wide;
}

// A surrogate alone becomes U+FFFD.
inline std::string utf8Of(std::basic_string_view<OLECHAR> wide) {
  std::string text;
  for (std::size_t i = 0; i < wide.size(); ++i) {
    unsigned long character = static_cast<char16_t>(wide[i]);
    if (character >= 0xD800 && character < 0xE000) {
      const unsigned long low = i + 1 < wide.size() ? static_cast<char16_t>(wide[i + 1]) : 0;
      const bool pair = character < 0xDC00 && low >= 0xDC00 && low < 0xE000;
      character = pair ? 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00) : 0xFFFD;
      if (pair) ++i;
    }
    const auto put = [&](unsigned long bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
    if (character < 0x80) {
      put(character);
      continue;
    }
    if (character < 0x800) {
      put(0xC0 | character >> 6);
    } else {
      if (character < 0x10000) {
        put(0xE0 | character >> 12);
      } else {
        put(0xF0 | character >> 18);
        put(0x80 | (character >> 12 & 0x3F));
      }
      put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
  }
  return text;
}

}  // namespace detail

// A text as the interfaces take and return it, for calls on them. A null text and an empty one differ.
class InterfaceText {
 public:
  InterfaceText() = default;
  explicit InterfaceText(std::string_view utf8) : InterfaceText(detail::wideOf(utf8)) {}
  InterfaceText(InterfaceText&& other) noexcept : text_(std::exchange(other.text_, nullptr)) {}
  InterfaceText(const InterfaceText& other) {
    if (other.text_) *this = InterfaceText(detail::Wide(other.view()));
  }
  InterfaceText& operator=(InterfaceText other) noexcept {
    std::swap(text_, other.text_);
    return *this;
  }
  ~InterfaceText() { SysFreeString(text_); }

  BSTR get() const noexcept { return text_; }
  // For an out-parameter, of an object that is null.
  BSTR* out() noexcept { return &text_; }
  std::string utf8() const { return detail::utf8Of(view()); }

 private:
  explicit InterfaceText(const detail::Wide& wide) {
    const auto length = static_cast<UINT>(wide.size());
    if (length == wide.size()) text_ = SysAllocStringLen(wide.data(), length);
    if (!text_) throw std::bad_alloc();
  }
  std::basic_string_view<OLECHAR> view() const {
    return text_ ? std::basic_string_view<OLECHAR>(text_, SysStringLen(text_)) : std::basic_string_view<OLECHAR>();
  }

  BSTR text_ = nullptr;
};

// A new object of a class that is installed or that the process has registered, as the session does.
template <class I>
Result<ComPtr<I>> create(REFCLSID clsid) {
  ComPtr<I> object;
  const HRESULT hr = object.create(clsid);
  if (hr == S_OK && object) return object;
  return Failure{hr == S_OK ? E_FAIL : hr, "a new object"};
}

namespace detail {

// Of a call on an object that has just failed.
inline Failure failureOf(IUnknown* object, HRESULT hr, std::string_view what) {
  Failure failure{hr, std::string(what)};
  LONG last = S_OK;
  InterfaceText member, text;
  const auto errors = FAILED(hr) ? ComPtr<ILastError>::from(object) : ComPtr<ILastError>();
  if (errors && errors->GetLastError(&last, member.out(), text.out()) == S_OK && last == hr)
    failure.reason = member.utf8() + ": " + text.utf8();
  return failure;
}

inline Result<Done> done(IUnknown* object, HRESULT hr, std::string_view what) {
  if (hr == S_OK) return Done();
  return failureOf(object, hr, what);
}

// What a getter writes as its last argument.
template <class T, class I, class Getter, class... Given>
Result<T> get(const ComPtr<I>& object, std::string_view what, Getter getter, Given... given) {
  T value{};
  const HRESULT hr = object ? (object.get()->*getter)(given..., &value) : E_NOINTERFACE;
  if (hr == S_OK) return value;
  return failureOf(object.get(), hr, what);
}
template <class I, class Getter, class... Given>
Result<std::string> getText(const ComPtr<I>& object, std::string_view what, Getter getter, Given... given) {
  InterfaceText text;
  const HRESULT hr = object ? (object.get()->*getter)(given..., text.out()) : E_NOINTERFACE;
  if (hr == S_OK) return text.utf8();
  return failureOf(object.get(), hr, what);
}
// The object that a call on another gives.
template <class T, class Call>
Result<ComPtr<T>> getObject(IUnknown* called, std::string_view what, Call&& call) {
  ComPtr<T> object;
  const HRESULT hr = call(object.out());
  if (hr == S_OK && object) return object;
  if (hr == S_OK) return Failure{E_FAIL, std::string(what)};
  return failureOf(called, hr, what);
}

// The interfaces take a null pointer for a buffer that is not wanted. By reference: of a span by value, GCC 12 for
// 64-bit Windows believes at -O1 that nobody writes through it.
template <class T>
T* data(const std::span<T>& buffer) {
  return buffer.empty() ? nullptr : buffer.data();
}

// Whether the interfaces can count this many.
inline bool countable(std::size_t size) { return size <= static_cast<std::size_t>(std::numeric_limits<LONG>::max()); }

template <class T, class Array>
Result<std::vector<T>> elementsOf(Array* array) {
  LONG size = 0;
  HRESULT hr = array ? array->get_Size(&size) : E_NOINTERFACE;
  std::vector<T> elements;
  for (LONG i = 0; hr == S_OK && i < size; ++i) {
    T element{};
    hr = array->get_IthValue(i, &element);
    elements.push_back(element);
  }
  if (hr == S_OK) return elements;
  return Failure{hr, "the elements of an array"};
}
template <class Array, class T>
Result<ComPtr<Array>> arrayOf(REFCLSID clsid, std::span<const T> elements) {
  const auto created = create<Array>(clsid);
  HRESULT hr = created.code();
  if (hr == S_OK)
    hr = countable(elements.size()) ? (*created)->put_Size(static_cast<LONG>(elements.size())) : E_INVALIDARG;
  for (std::size_t i = 0; hr == S_OK && i < elements.size(); ++i)
    hr = (*created)->put_IthValue(static_cast<LONG>(i), elements[i]);
  if (hr == S_OK) return created;
  return Failure{hr, "a new array"};
}

// XML, of whatever object that writes and reads itself.
inline Result<std::string> xmlOf(IUnknown* object, int form) {
  return getText(ComPtr<IXMLStoreEx>::from(object), "XML text", &IXMLStoreEx::StoreAsXMLEx, INT{form});
}
inline Result<Done> readXml(IDispatch* object, std::string_view text) {
  const auto parser = create<IXMLParser>(__uuidof(::XMLParser));
  if (!parser) return parser.failure();
  const HRESULT hr = object ? (*parser)->ParseText(InterfaceText(text).get(), object) : E_NOINTERFACE;
  return done(parser->get(), hr, "XML text");
}

}  // namespace detail

// Arrays of the host's own classes, for calls on the interfaces.
inline Result<ComPtr<IRealArrayDisp>> makeArray(std::span<const double> elements) {
  return detail::arrayOf<IRealArrayDisp>(__uuidof(::HostRealArray), elements);
}
inline Result<ComPtr<IIntegerArrayDisp>> makeArray(std::span<const LONG> elements) {
  return detail::arrayOf<IIntegerArrayDisp>(__uuidof(::HostIntegerArray), elements);
}
inline Result<std::vector<double>> readArray(IRealArrayDisp* array) { return detail::elementsOf<double>(array); }
inline Result<std::vector<LONG>> readArray(IIntegerArrayDisp* array) { return detail::elementsOf<LONG>(array); }

namespace detail {

// Positions 0, 1, ... of a range whose `at` gives its elements; what is not there is an empty element.
template <class Range, class Element>
class PositionIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using iterator_concept = std::forward_iterator_tag;
  using value_type = Element;
  using difference_type = int;
  using pointer = void;
  using reference = Element;

  PositionIterator() = default;
  PositionIterator(Range range, int position) : range_(std::move(range)), position_(position) {}
  Element operator*() const { return range_.at(position_).value_or(Element()); }
  PositionIterator& operator++() {
    ++position_;
    return *this;
  }
  PositionIterator operator++(int) {
    PositionIterator before = *this;
    ++position_;
    return before;
  }
  bool operator==(const PositionIterator& other) const { return position_ == other.position_; }

 private:
  Range range_;
  int position_ = 0;
};

constexpr const CLSID* kContainers[] = {&__uuidof(::COQSCompound), &__uuidof(::COQSCompoundCollection),
                                        &__uuidof(::COQSPhase), &__uuidof(::COQSPhaseCollection)};
constexpr const CLSID* kHostKit[] = {
    &__uuidof(::HostIntegerArray), &__uuidof(::HostRealArray),   &__uuidof(::HostRealMatrix),
    &__uuidof(::JsonLoader),       &__uuidof(::JobackEstimator), &__uuidof(::PropertyRegistry),
    &__uuidof(::PhaseActivator),   &__uuidof(::AttributeSet),    &__uuidof(::XMLParser)};

// The entry point of a module; null when there is none.
using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
#ifdef _WIN32
inline GetClassObject entryOf(HMODULE module) {
  void* entry = module ? reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")) : nullptr;
  return reinterpret_cast<GetClassObject>(entry);
}
// Of one that the process has loaded.
inline GetClassObject loadedModule(const char* name) { return entryOf(GetModuleHandleA(name)); }
// From a folder, for an empty one from where the program is.
inline GetClassObject loadModule(const char* name, std::string_view folder) {
  Wide place = wideOf(folder) + L'\\';
  if (folder.empty()) {
    place.resize(32768);
    place.resize(GetModuleFileNameW(nullptr, place.data(), static_cast<DWORD>(place.size())));
    place.resize(place.find_last_of(L'\\') + 1);
  }
  return entryOf(LoadLibraryW((place + wideOf(name) + L".dll").c_str()));
}
#else
inline GetClassObject entryOf(void* module) {
  return module ? reinterpret_cast<GetClassObject>(dlsym(module, "DllGetClassObject")) : nullptr;
}
inline std::string fileOf(const char* name) { return "lib" + std::string(name) + ".so.1"; }
// Of one that the process has loaded.
inline GetClassObject loadedModule(const char* name) {
  return entryOf(dlopen(fileOf(name).c_str(), RTLD_NOW | RTLD_NOLOAD));
}
// From a folder, for an empty one from where the program is, ../lib beside it, and where libraries are looked for.
inline GetClassObject loadModule(const char* name, std::string_view folder) {
  const std::string file = fileOf(name);
  if (!folder.empty()) return entryOf(dlopen((std::string(folder) + "/" + file).c_str(), RTLD_NOW));
  std::string program(4096, '\0');
  const auto length = readlink("/proc/self/exe", program.data(), program.size());
  program.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  program.resize(program.find_last_of('/') + 1);
  void* module = dlopen((program + file).c_str(), RTLD_NOW);
  if (!module) module = dlopen((program + "../lib/" + file).c_str(), RTLD_NOW);
  if (!module) module = dlopen(file.c_str(), RTLD_NOW);
  return entryOf(module);
}
#endif

}  // namespace detail

// Where a session takes the classes from.
enum class Classes {
  any,        // those that are installed or that the process has registered, the others from the modules
  installed,  // those alone
  modules     // from the modules
};

// A thread's use of the classes. It initialises the component model for the thread (on Windows as a single-threaded
// apartment, unless the thread has chosen before) and makes the classes creatable; both end with it. The modules,
// qscontainers and qshostkit, are loaded from `folder`; without one from where the program is, and on Linux also from
// ../lib beside it and from where it looks for libraries. They stay loaded. qshostkit may be missing: a host may
// register array classes of its own, before it opens the session.
class Session {
 public:
  // REGDB_E_CLASSNOTREG when a class is not found.
  static Result<Session> open(Classes from = Classes::any, std::string_view folder = {}) {
    Session session;
    const HRESULT initialised = CoInitialize(nullptr);
    session.initialised_ = SUCCEEDED(initialised);
    // A thread of the multithreaded apartment stays one.
    constexpr auto kOtherApartment = static_cast<HRESULT>(0x80010106);
    if (!session.initialised_ && initialised != kOtherApartment) return Failure{initialised, "the component model"};
    if (const HRESULT hr = session.find("qscontainers", detail::kContainers, from, folder); hr != S_OK)
      return Failure{hr, "the classes of qscontainers"};
    session.find("qshostkit", detail::kHostKit, from, folder);
    return session;
  }

  Session(Session&& other) noexcept
      : initialised_(std::exchange(other.initialised_, false)), cookies_(std::exchange(other.cookies_, {})) {}
  Session& operator=(Session&& other) noexcept {
    std::swap(initialised_, other.initialised_);
    std::swap(cookies_, other.cookies_);
    return *this;
  }
  ~Session() {
    for (const DWORD cookie : cookies_) CoRevokeClassObject(cookie);
    if (initialised_) CoUninitialize();
  }

 private:
  Session() = default;

  HRESULT find(const char* name, std::span<const CLSID* const> classes, Classes from, std::string_view folder) {
    detail::GetClassObject module = nullptr;
    for (const CLSID* clsid : classes) {
      ComPtr<IUnknown> found, own;
      if (from != Classes::modules) {
        CoGetClassObject(*clsid, CLSCTX_INPROC_SERVER, nullptr, __uuidof(IUnknown), found.outAny());
        // One that another session has registered must outlive that session.
        if (const auto loaded = found ? detail::loadedModule(name) : nullptr)
          loaded(*clsid, __uuidof(IUnknown), own.outAny());
        if (found && own.get() != found.get()) continue;
      }
      if (!own) {
        if (from != Classes::installed && !module) module = detail::loadModule(name, folder);
        if (!module) return REGDB_E_CLASSNOTREG;
        if (const HRESULT hr = module(*clsid, __uuidof(IUnknown), own.outAny()); hr != S_OK) return hr;
      }
      DWORD cookie = 0;
      const HRESULT hr = CoRegisterClassObject(*clsid, own.get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
      if (hr != S_OK) return hr;
      cookies_.push_back(cookie);
    }
    return S_OK;
  }

  bool initialised_ = false;
  std::vector<DWORD> cookies_;
};

// The caller's buffers for many numbers at once; an empty one is not wanted. Buffers may be those of the arguments.
struct Buffers {
  std::span<double> values = {};
  std::span<double> firstDerivatives = {};   // in T, per K
  std::span<double> secondDerivatives = {};  // in T, per K2
  std::span<LONG> statuses = {};             // sums of tagEvaluationStatusEnum

  // Whether those that are wanted have this many elements.
  bool fit(std::uint64_t size) const {
    for (const std::size_t wanted : {values.size(), firstDerivatives.size(), secondDerivatives.size(), statuses.size()})
      if (wanted && wanted != size) return false;
    return true;
  }
};

// One number with what is known of it: the sum of tagEvaluationStatusEnum, eStatusInside for a number inside the range
// of the data. Where there is none the number is -32767.
struct Point {
  double value = kEmptyValue;
  double firstDerivative = kEmptyValue;
  double secondDerivative = kEmptyValue;
  LONG status = eStatusNotSet;
};

// In K and kPa.
struct Range {
  double tMin = kEmptyValue, tMax = kEmptyValue, pMin = kEmptyValue, pMax = kEmptyValue;
};

// What there is to show of a property (docs/evaluation.md, "What a property is").
struct Description {
  tagPropTypeEnum type = VoidProp;
  tagEquationShapeEnum shape = PropCurveVoid;
  std::string form;  // the formula, with the letters of the coefficients
  std::vector<double> coefficients;
  Range range;
  std::vector<double> transformations;  // shapes, norms and powers of X and Y in turn, and the constants a and b
  std::string unit, help;
  tagLimitPolicyEnum policy = eNotSetOutside;  // that eRecommended stands for
};

// A correlation equation to be stored. docs/forms.md lists the shapes and their coefficients.
struct Correlation {
  tagEquationShapeEnum shape = PropCurveVoid;
  std::vector<double> coefficients = {};
  Range range = {};
};

// Where a value comes from. A text that is not known is empty.
struct PropertySource {
  tagValueKindEnum kind = eKindNotKnown;
  tagValueQualityEnum quality = eQualityNotKnown;
  std::string title = {}, authors = {};
  std::optional<int> year = {};
  std::string licence = {}, changes = {}, uncertainty = {}, note = {};
};

// A property of a compound by its key (docs/units.md lists them) or by a name of the host's own. It keeps the compound
// alive. The compound is asked anew by each call, so it may be made before the property is set.
class Property {
 public:
  Property(ComPtr<IBasicCompound> compound, std::string_view key)
      : arrays_(ComPtr<ICompoundEvaluationArrays>::from(compound.get())), compound_(std::move(compound)), name_(key) {}

  std::string key() const { return name_.utf8(); }

  // The value at a temperature and a pressure. A constant has its value at every temperature. Without a policy it is
  // the number of the typed getters, whatever the range of the data.
  Result<double> at(double temperature = 298.15, double pressure = 101.325,
                    tagLimitPolicyEnum policy = eAsFormGoesOn) const {
    double value = kEmptyValue;
    const HRESULT hr = arrays_ ? arrays_->EvaluateArray(name_.get(), 1, &temperature, pressure, policy, &value, nullptr,
                                                        nullptr, nullptr)
                               : E_NOINTERFACE;
    return number(hr, value);
  }

  // The value with both derivatives and the status; what is not there is -32767, and no failure.
  Result<Point> evaluate(double temperature, tagLimitPolicyEnum policy = eRecommended,
                         double pressure = 101.325) const {
    Point point;
    const auto all =
        evaluate({&temperature, 1},
                 {{&point.value, 1}, {&point.firstDerivative, 1}, {&point.secondDerivative, 1}, {&point.status, 1}},
                 policy, pressure);
    if (!all) return all.failure();
    return point;
  }

  // The same of many temperatures, into buffers of the same length. Nothing is allocated. Whether every number is
  // there.
  Result<bool> evaluate(std::span<const double> temperatures, const Buffers& buffers,
                        tagLimitPolicyEnum policy = eRecommended, double pressure = 101.325) const {
    HRESULT hr = arrays_ ? E_INVALIDARG : E_NOINTERFACE;
    if (arrays_ && detail::countable(temperatures.size()) && buffers.fit(temperatures.size()))
      hr = arrays_->EvaluateArray(name_.get(), static_cast<LONG>(temperatures.size()), temperatures.data(), pressure,
                                  policy, detail::data(buffers.values), detail::data(buffers.firstDerivatives),
                                  detail::data(buffers.secondDerivatives), detail::data(buffers.statuses));
    return allThere(hr);
  }

  // The integral over T from one temperature to another, in the unit times K; of eIntegralOfYOverT in the unit.
  Result<double> integral(double from, double to, tagIntegrandEnum integrand = eIntegralOfY,
                          tagLimitPolicyEnum policy = eRecommended, double pressure = 101.325) const {
    double value = kEmptyValue;
    const HRESULT hr =
        arrays_ ? arrays_->IntegrateArray(name_.get(), integrand, 1, &from, &to, pressure, policy, &value, nullptr)
                : E_NOINTERFACE;
    return number(hr, value);
  }

  // The lowest temperature of the range at which the property has a value.
  Result<double> temperatureOf(double value, double pressure = 101.325) const {
    double temperature = kEmptyValue;
    const HRESULT hr =
        arrays_ ? arrays_->FindTemperatures(name_.get(), 1, &value, pressure, &temperature, nullptr) : E_NOINTERFACE;
    return number(hr, temperature);
  }
  // The same of many values: temperatures and statuses into buffers of the same length. Whether all are found.
  Result<bool> temperaturesOf(std::span<const double> values, std::span<double> temperatures,
                              std::span<LONG> statuses = {}, double pressure = 101.325) const {
    HRESULT hr = arrays_ ? E_INVALIDARG : E_NOINTERFACE;
    const Buffers buffers{.values = temperatures, .statuses = statuses};
    if (arrays_ && detail::countable(values.size()) && buffers.fit(values.size()))
      hr = arrays_->FindTemperatures(name_.get(), static_cast<LONG>(values.size()), values.data(), pressure,
                                     detail::data(temperatures), detail::data(statuses));
    return allThere(hr);
  }

  // Of the data behind the property.
  Result<Range> range() const {
    Range found;
    const auto evaluation = ComPtr<ICompoundEvaluation>::from(compound_.get());
    const HRESULT hr = evaluation
                           ? evaluation->GetRange(name_.get(), &found.tMin, &found.tMax, &found.pMin, &found.pMax)
                           : E_NOINTERFACE;
    if (hr == S_OK) return found;
    return failed(hr, "the range of ");
  }

  // Of a key that is not set it has unit, help text and policy, and the type VoidProp.
  Result<Description> description() const {
    Description all;
    InterfaceText form, unit, help;
    VARIANT coefficients, transformations;
    VariantInit(&coefficients);
    VariantInit(&transformations);
    const auto evaluation = ComPtr<ICompoundEvaluation>::from(compound_.get());
    const HRESULT hr = evaluation
                           ? evaluation->Describe(name_.get(), &all.type, &all.shape, form.out(), &coefficients,
                                                  &all.range.tMin, &all.range.tMax, &all.range.pMin, &all.range.pMax,
                                                  &transformations, unit.out(), help.out(), &all.policy)
                           : E_NOINTERFACE;
    if (FAILED(hr)) return failed(hr, "the description of ");
    all.coefficients = taken(coefficients);
    all.transformations = taken(transformations);
    all.form = form.utf8();
    all.unit = unit.utf8();
    all.help = help.utf8();
    return all;
  }

  // The unit of a key, "-" for a number without one; empty for a name of the host's own.
  std::string unit() const {
    const auto all = description();
    return all ? all->unit : std::string();
  }

  Result<Done> set(double value) const {
    return change([&](ICompoundPropPut* put, BYTE fixed) { return put->SetPointProperty(name_.get(), fixed, value); });
  }
  Result<Done> set(const Correlation& correlation) const {
    const auto array = makeArray(correlation.coefficients);
    if (!array) return array.failure();
    const Range& limits = correlation.range;
    return change([&](ICompoundPropPut* put, BYTE fixed) {
      return put->SetEquationProperty(name_.get(), fixed, correlation.shape, limits.tMin, limits.tMax, limits.pMin,
                                      limits.pMax, array->get());
    });
  }
  Result<Done> erase() const {
    return change([&](ICompoundPropPut* put, BYTE fixed) { return put->ErasePropFromMap(name_.get(), fixed); });
  }

  // Where the value comes from, as the database, a loader, an estimator or the host has said.
  Result<PropertySource> source() const {
    PropertySource found;
    InterfaceText title, authors, licence, changes, uncertainty, note;
    INT year = kEmptyInteger;
    const auto sources = ComPtr<IPropertySource>::from(compound_.get());
    const HRESULT hr =
        sources ? sources->GetPropertySource(name_.get(), &found.kind, &found.quality, title.out(), authors.out(),
                                             &year, licence.out(), changes.out(), uncertainty.out(), note.out())
                : E_NOINTERFACE;
    if (hr != S_OK) return failed(hr, "the source of ");
    found.title = title.utf8();
    found.authors = authors.utf8();
    if (year != kEmptyInteger) found.year = year;
    found.licence = licence.utf8();
    found.changes = changes.utf8();
    found.uncertainty = uncertainty.utf8();
    found.note = note.utf8();
    return found;
  }
  // S_FALSE where the property is not set.
  Result<Done> setSource(const PropertySource& source) const {
    const auto sources = ComPtr<IPropertySource>::from(compound_.get());
    const auto text = [](const std::string& known) { return known.empty() ? InterfaceText() : InterfaceText(known); };
    const HRESULT hr =
        sources ? sources->SetPropertySource(name_.get(), source.kind, source.quality, text(source.title).get(),
                                             text(source.authors).get(), source.year.value_or(kEmptyInteger),
                                             text(source.licence).get(), text(source.changes).get(),
                                             text(source.uncertainty).get(), text(source.note).get())
                : E_NOINTERFACE;
    if (hr == S_OK) return Done();
    return failed(hr, "the source of ");
  }

 private:
  Failure failed(HRESULT hr, const char* what = "") const {
    return detail::failureOf(compound_.get(), hr, what + key());
  }

  Result<double> number(HRESULT hr, double value) const {
    if (hr == S_OK) return value;
    return failed(hr);
  }
  Result<bool> allThere(HRESULT hr) const {
    if (SUCCEEDED(hr)) return hr == S_OK;
    return failed(hr);
  }

  template <class Put>
  Result<Done> change(Put&& call) const {
    const auto put = ComPtr<ICompoundPropPut>::from(compound_.get());
    BYTE found = 0, fixed = 0;
    HRESULT hr = put ? put->FindProperty(name_.get(), &found, &fixed) : E_NOINTERFACE;
    if (SUCCEEDED(hr)) hr = call(put.get(), fixed);
    if (hr == S_OK) return Done();
    return failed(hr);
  }

  // The numbers of a variant, which is cleared.
  static std::vector<double> taken(VARIANT& variant) {
    std::vector<double> numbers;
    LONG last = -1;
    void* elements = nullptr;
    if (variant.vt == (VT_ARRAY | VT_VARIANT) && SUCCEEDED(SafeArrayGetUBound(variant.parray, 1, &last)) &&
        SUCCEEDED(SafeArrayAccessData(variant.parray, &elements))) {
      for (LONG i = 0; i <= last; ++i) numbers.push_back(static_cast<const VARIANT*>(elements)[i].dblVal);
      SafeArrayUnaccessData(variant.parray);
    }
    VariantClear(&variant);
    return numbers;
  }

  ComPtr<ICompoundEvaluationArrays> arrays_;
  ComPtr<IBasicCompound> compound_;
  InterfaceText name_;
};

// A reference to an object, or to none: the base of what follows.
template <class I>
class Object {
 public:
  Object() = default;
  // Adds a reference; none when the object is null or lacks the interface.
  explicit Object(IUnknown* object) : object_(ComPtr<I>::from(object)) {}

  explicit operator bool() const noexcept { return static_cast<bool>(object_); }
  // Lent: for calls on the interface.
  I* get() const noexcept { return object_.get(); }
  // Another interface of the object, empty where it lacks that.
  template <class Other>
  ComPtr<Other> as() const {
    return ComPtr<Other>::from(object_.get());
  }

 protected:
  // A new object of a class.
  template <class Made>
  static Result<Made> make(REFCLSID clsid, const char* what) {
    const auto created = qs::create<I>(clsid);
    if (created) return Made(created->get());
    return Failure{created.code(), what};
  }

  ComPtr<I> object_;
};

// A compound, or none.
class Compound : public Object<IBasicCompound> {
 public:
  using Object::Object;

  // A new one without content.
  static Result<Compound> create() { return make<Compound>(__uuidof(::COQSCompound), "a new compound"); }
  // The compound with a number of the database in a directory; S_FALSE when there is none with it.
  static Result<Compound> read(std::string_view database, int number) {
    auto compound = create();
    if (!compound) return compound;
    const auto files = compound->as<ICompoundInitFromVelDB>();
    const HRESULT hr = files ? files->Init(InterfaceText(database).get(), number) : E_NOINTERFACE;
    if (hr == S_OK) return compound;
    const auto what = "compound " + std::to_string(number) + " of the database in " + std::string(database);
    return detail::failureOf(compound->get(), hr, what);
  }

  Property operator[](std::string_view key) const { return {object_, key}; }

  Result<std::string> name() const { return identity("name", &ICompoundID::get_Name); }
  Result<std::string> iupacName() const { return identity("IUPAC name", &ICompoundID::get_IUPACName); }
  Result<std::string> casNumber() const { return identity("CAS number", &ICompoundID::get_CASN); }
  Result<std::string> formula() const { return identity("formula", &ICompoundID::get_ChemicalFormula); }
  // In the database.
  Result<int> number() const { return detail::get<INT>(as<ICompoundID>(), "number", &ICompoundID::get_VelcorinID); }
  std::vector<std::string> synonyms() const {
    std::vector<std::string> all;
    const auto id = as<ICompoundID>();
    const int count = detail::get<INT>(id, "synonyms", &ICompoundID::get_NumberOfSynonymNames).value_or(0);
    for (INT i = 0; i < count; ++i)
      if (auto synonym = detail::getText(id, "synonym", &ICompoundID::get_SynonymName, i)) all.push_back(*synonym);
    return all;
  }
  Result<Done> setName(std::string_view name) const {
    const auto id = as<ICompoundIDPut>();
    return detail::done(id.get(), id ? id->put_Name(InterfaceText(name).get()) : E_NOINTERFACE, "name");
  }

  // The properties that are set: keys and then names of the host's own, each in name order.
  std::vector<std::string> keys() const {
    std::vector<std::string> all;
    const auto properties = as<ICompoundProp>();
    for (const BYTE fixed : {BYTE{1}, BYTE{0}}) {
      INT count = 0;
      if (!properties || FAILED(properties->GetNumbOfProperty(fixed, &count))) continue;
      for (INT i = 0; i < count; ++i) {
        InterfaceText name;
        tagPropTypeEnum type = VoidProp;
        if (properties->GetPropertyName(fixed, i, name.out(), &type) == S_OK && type != VoidProp)
          all.push_back(name.utf8());
      }
    }
    return all;
  }

  // Another compound with the same content under a new number.
  Result<Compound> copy(int number) const {
    auto other = create();
    if (!other) return other;
    const auto copying = other->as<ICompoundCopy>();
    const HRESULT hr = copying ? copying->CopyToThis(number, object_.get()) : E_NOINTERFACE;
    if (hr == S_OK) return other;
    return detail::failureOf(other->get(), hr, "a copy");
  }

  // The compound as XML text, by the sum of tagXMLFormEnum values, and its content from such a text. A text that fails
  // changes nothing.
  Result<std::string> xml(int form = xmlExactForm | xmlProvenance) const { return detail::xmlOf(object_.get(), form); }
  Result<Done> readXml(std::string_view text) const { return detail::readXml(object_.get(), text); }

 private:
  Result<std::string> identity(const char* what, HRESULT (STDMETHODCALLTYPE ICompoundID::*getter)(BSTR*)) const {
    return detail::getText(as<ICompoundID>(), what, getter);
  }
};

// An ordered collection of compounds, or none; a range over them. A position may be empty: its compound is none.
class Collection : public Object<ICompoundCollection> {
 public:
  using iterator = detail::PositionIterator<Collection, Compound>;

  using Object::Object;

  static Result<Collection> create() {
    return make<Collection>(__uuidof(::COQSCompoundCollection), "a new collection");
  }

  int size() const {
    return detail::get<INT>(object_, "size", &ICompoundCollection::get_NumberOfCompounds).value_or(0);
  }
  // The compound at a position from 0; S_FALSE for an empty position and for one outside.
  Result<Compound> at(int position) const {
    const auto found = detail::getObject<IBasicCompound>(
        get(), "compound at " + std::to_string(position),
        [&](auto out) { return object_ ? object_->GetBasicCompound(position, out) : E_NOINTERFACE; });
    if (found) return Compound(found->get());
    return found.failure();
  }
  // Every iterator goes to the size that the collection has when `end` is called.
  iterator begin() const { return {*this, 0}; }
  iterator end() const { return {*this, size()}; }

  // Appends the compound itself, not a copy.
  Result<Done> add(const Compound& compound) const {
    return detail::done(get(), object_ ? object_->AddCompound(compound.get()) : E_NOINTERFACE, "adding a compound");
  }
  Result<Done> clear() const { return detail::done(get(), object_ ? object_->Reset() : E_NOINTERFACE, "clearing"); }

  // A collection that shows the compounds at these positions of this one, in their order.
  Result<Collection> view(std::span<const LONG> positions) const {
    const auto array = makeArray(positions);
    if (!array) return array.failure();
    const auto views = as<ISubCompList>();
    const auto made = detail::getObject<ICompoundCollection>(
        get(), "a view", [&](auto out) { return views ? views->CreateSubCompList(array->get(), out) : E_NOINTERFACE; });
    if (made) return Collection(made->get());
    return made.failure();
  }

  // The numbers of the compounds of a database that have a text in an identity field, for instance CASN; S_FALSE when
  // there are none.
  Result<std::vector<LONG>> find(std::string_view database, std::string_view field, std::string_view text) const {
    const auto query = as<IQueryLoader>();
    const std::string what = std::string(field) + " " + std::string(text) + " in " + std::string(database);
    const auto numbers = detail::getObject<IIntegerArrayDisp>(get(), what, [&](auto out) {
      return query ? query->GetVelIDs(InterfaceText(database).get(), InterfaceText(field).get(),
                                      InterfaceText(text).get(), out)
                   : E_NOINTERFACE;
    });
    if (!numbers) return numbers.failure();
    return readArray(numbers->get());
  }

  // A property of the compounds at these positions, or of all, at many temperatures: buffers have a row for each
  // compound. Whether every number is there.
  Result<bool> evaluate(std::string_view key, std::span<const double> temperatures, const Buffers& buffers,
                        std::optional<std::span<const LONG>> positions = {}, tagLimitPolicyEnum policy = eRecommended,
                        double pressure = 101.325) const {
    const auto arrays = as<ICompoundCollectionEvaluationArrays>();
    const std::size_t rows = positions ? positions->size() : static_cast<std::size_t>(size());
    const std::size_t columns = temperatures.size();
    HRESULT hr = arrays ? E_INVALIDARG : E_NOINTERFACE;
    if (arrays && detail::countable(rows) && detail::countable(columns) && buffers.fit(std::uint64_t{rows} * columns))
      hr = arrays->EvaluateCompoundArray(InterfaceText(key).get(), static_cast<LONG>(rows),
                                         positions ? positions->data() : nullptr, static_cast<LONG>(columns),
                                         temperatures.data(), pressure, policy, detail::data(buffers.values),
                                         detail::data(buffers.firstDerivatives),
                                         detail::data(buffers.secondDerivatives), detail::data(buffers.statuses));
    if (SUCCEEDED(hr)) return hr == S_OK;
    return detail::failureOf(get(), hr, key);
  }

  // As of a compound.
  Result<std::string> xml(int form = xmlExactForm | xmlProvenance) const { return detail::xmlOf(object_.get(), form); }
  Result<Done> readXml(std::string_view text) const { return detail::readXml(object_.get(), text); }
};

// A phase, or none.
class Phase : public Object<IBasicPhase> {
 public:
  using Object::get;
  using Object::Object;

  // A value by its getter, as &IBasicPhase::get_Enthalpy; S_FALSE when it is not set.
  template <class T>
  Result<T> get(HRESULT (STDMETHODCALLTYPE IBasicPhase::*getter)(T*)) const {
    return detail::get<T>(object_, "a value of a phase", getter);
  }
  template <class T>
  Result<Done> set(HRESULT (STDMETHODCALLTYPE IBasicPhase::*setter)(T), std::type_identity_t<T> value) const {
    return detail::done(get(), object_ ? (object_.get()->*setter)(value) : E_NOINTERFACE, "a value of a phase");
  }

  Result<tagPhaseTypeEnum> type() const { return get(&IBasicPhase::get_PhaseType); }
  Result<Done> setType(tagPhaseTypeEnum type) const { return set(&IBasicPhase::put_PhaseType, type); }
  bool isActive() const { return get(&IBasicPhase::get_PhaseStatus).value_or(xpsInactivePhase) == xpsActivePhase; }
  Result<Done> setActive(bool active) const {
    return set(&IBasicPhase::put_PhaseStatus, active ? xpsActivePhase : xpsInactivePhase);
  }
  // Moles of the phase per mole of all.
  Result<double> fraction() const { return get(&IBasicPhase::get_PhaseFraction); }
  Result<Done> setFraction(double fraction) const { return set(&IBasicPhase::put_PhaseFraction, fraction); }
  Result<double> temperature() const { return get(&IBasicPhase::get_Temperature); }
  Result<Done> setTemperature(double temperature) const { return set(&IBasicPhase::put_Temperature, temperature); }
  Result<double> pressure() const { return get(&IBasicPhase::get_Pressure); }
  Result<Done> setPressure(double pressure) const { return set(&IBasicPhase::put_Pressure, pressure); }

  // By compound: mole fractions, and natural logarithms of fugacity coefficients.
  Result<std::vector<double>> composition() const {
    const auto array = detail::getObject<IDispatch>(
        get(), "a composition", [&](auto out) { return object_ ? object_->get_MolarComposition(out) : E_NOINTERFACE; });
    if (!array) return array.failure();
    return readArray(ComPtr<IRealArrayDisp>::from(array->get()).get());
  }
  Result<Done> setComposition(std::span<const double> fractions) const {
    return setArray(&IBasicPhase::put_MolarComposition, fractions);
  }
  Result<std::vector<double>> lnFugacityCoefficients() const {
    const auto array = detail::getObject<IRealArrayDisp>(get(), "fugacity coefficients", [&](auto out) {
      return object_ ? object_->get_LnFugacityCoeff(out) : E_NOINTERFACE;
    });
    if (!array) return array.failure();
    return readArray(array->get());
  }
  Result<Done> setLnFugacityCoefficients(std::span<const double> logarithms) const {
    return setArray(&IBasicPhase::put_LnFugacityCoeff, logarithms);
  }

 private:
  template <class Array>
  Result<Done> setArray(HRESULT (STDMETHODCALLTYPE IBasicPhase::*setter)(Array*),
                        std::span<const double> values) const {
    const auto array = makeArray(values);
    if (!array) return array.failure();
    return set(setter, array->get());
  }
};

// The phases of a calculation; a range over those that take part.
class Phases : public Object<IPhaseCollection> {
 public:
  using iterator = detail::PositionIterator<Phases, Phase>;

  using Object::Object;

  // New ones for a collection of compounds. Their properties get their numbers from `registry`, or else from a new one.
  static Result<Phases> create(const Collection& compounds, int equilibriumPhases, int feeds = 1,
                               IUnknown* registry = nullptr) {
    const auto created = qs::create<IPhaseCollection>(__uuidof(::COQSPhaseCollection));
    if (!created) return created.failure();
    auto numbers = ComPtr<IEnumeratedPropertyRegistry>::from(registry);
    if (!registry) {
      const auto own = qs::create<IEnumeratedPropertyRegistry>(__uuidof(::PropertyRegistry));
      if (!own) return Failure{own.code(), "a registry of properties"};
      numbers = *own;
    }
    const auto registerable = ComPtr<IRegisterableObject>::from(created->get());
    HRESULT hr = registerable ? registerable->RegisterProperties(numbers.get()) : E_NOINTERFACE;
    if (hr == S_OK) hr = (*created)->Finalize(compounds.get(), equilibriumPhases, feeds);
    if (hr == S_OK) return Phases(created->get());
    return detail::failureOf(created->get(), hr, "new phases");
  }

  // The phases that take part, by position from 0.
  int size() const {
    INT count = 0;  // with S_FALSE where the status of the last phase is not set
    return object_ && SUCCEEDED(object_->get_NumberOfActivePhases(&count)) ? count : 0;
  }
  Result<Phase> at(int position) const { return phase(&IPhaseCollection::GetActivePhase, position); }
  iterator begin() const { return {*this, 0}; }
  iterator end() const { return {*this, size()}; }

  // How many of the equilibrium phases are in use, and one of them by position from 0.
  Result<Done> setEquilibriumPhases(int count) const {
    return detail::done(get(), object_ ? object_->put_NumberOfEquilibriumPhases(count) : E_NOINTERFACE,
                        "equilibrium phases");
  }
  Result<Phase> equilibriumPhase(int position) const { return phase(&IPhaseCollection::GetEquilibriumPhase, position); }
  // The phase of a kind, of several the one with this position.
  Result<Phase> locate(tagPhaseTypeEnum type, int position = 0) const {
    return phase(&IPhaseCollection::LocatePhase, type, position);
  }
  // Mole fractions by compound.
  Result<Done> setFeed(std::span<const double> fractions, int feed = 0) const {
    const auto array = makeArray(fractions);
    if (!array) return array.failure();
    return detail::done(get(), object_ ? object_->PutFeedComposition(array->get(), feed) : E_NOINTERFACE, "a feed");
  }

 private:
  template <class Method, class... Arguments>
  Result<Phase> phase(Method method, Arguments... arguments) const {
    const auto found = detail::getObject<IBasicPhase>(get(), "a phase", [&](auto out) {
      return object_ ? (object_.get()->*method)(arguments..., out) : E_NOINTERFACE;
    });
    if (found) return Phase(found->get());
    return found.failure();
  }
};

}  // namespace qs
