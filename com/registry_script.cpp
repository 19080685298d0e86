#include "com/registry_script.h"

#include "com/error.h"

namespace qs {
namespace {

bool isBlank(OLECHAR c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

class Parser {
 public:
  Parser(WideView text, const Replacements& replacements) : rest_(text), replacements_(replacements) { advance(); }

  std::vector<RegistryKey> keys() {
    std::vector<RegistryKey> result;
    while (!atEnd_) result.push_back(key(0));
    return result;
  }

 private:
  // Deeper nesting than any registry script has is an error, not a deeper recursion.
  static constexpr int kDeepest = 32;

  [[noreturn]] static void fail() { throw CQSCOMError(E_FAIL); }

  // Makes the next word, brace, equals sign or quoted text the current token.
  void advance() {
    while (!rest_.empty() && isBlank(rest_.front())) rest_.remove_prefix(1);
    atEnd_ = rest_.empty();
    quoted_ = !atEnd_ && rest_.front() == '\'';
    token_.clear();
    if (quoted_) {
      readQuoted();
    } else {
      while (!rest_.empty() && !isBlank(rest_.front())) {
        token_.push_back(rest_.front());
        rest_.remove_prefix(1);
      }
    }
    replace();
  }

  void readQuoted() {
    rest_.remove_prefix(1);
    for (;;) {
      if (rest_.empty()) fail();
      const OLECHAR c = rest_.front();
      rest_.remove_prefix(1);
      if (c != '\'') {
        token_.push_back(c);
      } else if (!rest_.empty() && rest_.front() == '\'') {
        token_.push_back(c);
        rest_.remove_prefix(1);
      } else {
        return;
      }
    }
  }

  void replace() {
    WideString result;
    WideView rest = token_;
    for (std::size_t open = rest.find('%'); open != WideView::npos; open = rest.find('%')) {
      const std::size_t close = rest.find('%', open + 1);
      if (close == WideView::npos) fail();
      result.append(rest.substr(0, open)).append(replacementOf(rest.substr(open + 1, close - open - 1)));
      rest.remove_prefix(close + 1);
    }
    token_ = result.append(rest);
  }

  const WideString& replacementOf(WideView name) const {
    for (const auto& [key, value] : replacements_)
      if (key == name) return value;
    fail();
  }

  bool isWord(WideView word) const { return !atEnd_ && !quoted_ && token_ == word; }

  bool accept(WideView word) {
    if (!isWord(word)) return false;
    advance();
    return true;
  }

  void expect(WideView word) {
    if (!accept(word)) fail();
  }

  WideString text() {
    if (atEnd_ || isWord(OLESTR("{")) || isWord(OLESTR("}")) || isWord(OLESTR("="))) fail();
    WideString result = std::move(token_);
    advance();
    return result;
  }

  WideString stringValue() {
    expect(OLESTR("s"));
    return text();
  }

  RegistryKey key(int depth) {
    if (depth > kDeepest) fail();
    RegistryKey result;
    if (accept(OLESTR("NoRemove")))
      result.removal = RegistryKey::Removal::Never;
    else if (accept(OLESTR("ForceRemove")))
      result.removal = RegistryKey::Removal::WithAll;
    result.name = text();
    if (result.name.empty()) fail();
    if (accept(OLESTR("="))) result.value = stringValue();
    if (!accept(OLESTR("{"))) return result;

    while (!accept(OLESTR("}"))) {
      if (accept(OLESTR("val"))) {
        WideString name = text();
        expect(OLESTR("="));
        result.namedValues.emplace_back(std::move(name), stringValue());
      } else {
        result.children.push_back(key(depth + 1));
      }
    }
    return result;
  }

  WideView rest_;
  const Replacements& replacements_;
  WideString token_;
  bool quoted_ = false;
  bool atEnd_ = false;
};

}  // namespace

std::vector<RegistryKey> parseRegistryScript(WideView text, const Replacements& replacements) {
  return Parser(text, replacements).keys();
}

}  // namespace qs
