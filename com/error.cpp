#include "com/error.h"

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>

#include "platform/number_text.h"
#include "platform/per_thread.h"

namespace qs {
namespace {

constexpr struct {
  HRESULT result;
  std::string_view text;
} kMeanings[] = {
    {S_FALSE, "it is not there"},
    {E_POINTER, "a result has no place"},
    {E_OUTOFMEMORY, "there is not enough memory"},
    {E_INVALIDARG, "an argument is not allowed"},
    {E_NOINTERFACE, "an object lacks an interface that is needed"},
    {E_NOTIMPL, "it is not implemented"},
    {E_BOUNDS, "a position is outside"},
    {DISP_E_TYPEMISMATCH, "a value has another type than is needed"},
    {DISP_E_OVERFLOW, "a number is too large"},
    {CO_E_CLASSSTRING, "there is no class of this name"},
    {REGDB_E_CLASSNOTREG, "the class is not registered"},
};

// A text of a limited length, so that it needs no memory; what is longer is cut off.
class Text {
 public:
  WideView view() const { return {units_.data(), length_}; }
  void clear() { length_ = 0; }

  void append(WideView text) {
    const std::size_t count = std::min(text.size(), units_.size() - length_);
    std::copy_n(text.data(), count, units_.data() + length_);
    length_ += count;
  }
  void append(std::string_view text) noexcept try {
    if (std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }))
      append(WideView(widenUtf8(text)));
    else
      for (std::size_t i = 0; i < text.size() && length_ < units_.size(); ++i)
        units_[length_++] = static_cast<OLECHAR>(text[i]);
  } catch (...) {
    append("...");
  }
  void append(std::int32_t number) {
    std::array<char, kNumberLength> digits;
    append(
        std::string_view(digits.data(), static_cast<std::size_t>(writeInteger(digits.data(), number) - digits.data())));
  }
  void append(Meaning meaning) {
    for (const auto& [result, text] : kMeanings)
      if (result == meaning.result) return append(text);
    append("result ");
    for (int shift = 28; shift >= 0; shift -= 4)
      append(std::string_view("0123456789ABCDEF").substr(static_cast<std::uint32_t>(meaning.result) >> shift & 0xF, 1));
  }
  void append(TextParts parts) {
    for (const TextPart& part : parts) std::visit([this](auto content) { append(content); }, part.content());
  }

 private:
  std::array<OLECHAR, 1000> units_;
  std::size_t length_ = 0;
};

struct Failure {
  LastFailure last{S_OK, "", {}};
  Text text;
  // What was said and is not yet recorded, and of which result code.
  Text said;
  HRESULT saidOf = S_OK;
};

// Null where there is no memory for it.
Failure* failureOfThread() noexcept try {
  static PerThread<Failure> failures;
  return &failures.get();
} catch (...) {
  return nullptr;
}

}  // namespace

HRESULT because(HRESULT result, TextParts why) noexcept {
  if (Failure* failure = failureOfThread()) {
    failure->saidOf = result;
    failure->said.clear();
    failure->said.append(why);
  }
  return result;
}

void fail(HRESULT result, TextParts why) { throw CQSCOMError(because(result, why)); }

HRESULT also(HRESULT result, TextParts more) noexcept {
  if (result == S_OK) return result;
  if (Failure* failure = failureOfThread(); failure && failure->saidOf == result) failure->said.append(more);
  return result;
}

void unsay() noexcept {
  if (Failure* failure = failureOfThread()) failure->saidOf = S_OK;
}

HRESULT report(HRESULT result, TextParts why, const char* member) noexcept {
  Failure* failure = failureOfThread();
  if (!failure) return result;
  if (why.size() > 0) because(result, why);
  failure->text.clear();
  if (failure->saidOf == result) failure->text.append(failure->said.view());
  failure->saidOf = S_OK;
  failure->last = {result, member, {}};
  return result;
}

HRESULT passOn(HRESULT result) noexcept {
  const LastFailure* last = lastFailure();
  return last && last->result == result ? because(result, {last->text}) : result;
}

const LastFailure* lastFailure() noexcept {
  Failure* failure = failureOfThread();
  if (!failure || failure->last.result == S_OK) return nullptr;
  if (failure->text.view().empty()) failure->text.append(Meaning{failure->last.result});
  failure->last.text = failure->text.view();
  return &failure->last;
}

HRESULT resultOfException() noexcept {
  try {
    throw;
  } catch (const CQSCOMError& error) {
    return error.result();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (const std::runtime_error& error) {
    return because(E_FAIL, {error.what()});
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace qs
