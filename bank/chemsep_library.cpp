#include "bank/chemsep_library.h"

#include <algorithm>
#include <exception>
#include <span>
#include <stdexcept>

#include "bank/finding.h"
#include "bank/text_file.h"
#include "com/error.h"
#include "xml/parser.h"

namespace qs::bank {
namespace {

constexpr std::size_t kDeepest = 8;  // levels; a library has four

std::string textOf(std::string_view text) { return std::string(text); }
std::string textOf(WideView text) { return bank::utf8(std::filesystem::path(WideString(text))); }

class Reader final : public XmlEvents {
 public:
  Reader(std::string file, const std::function<void(const LibraryElement&)>& receive)
      : file_(std::move(file)), receive_(receive) {
    line = 1;
  }

  // Throws what an event failed with.
  std::string title() {
    if (failure_) std::rethrow_exception(failure_);
    return std::move(title_);
  }
  [[noreturn]] void fail(const std::string& message) const {
    Finding finding{.rule = "syntax", .file = file_, .line = *line, .message = message};
    if (open_.size() > 1) {
      const LibraryElement* name = open_[1].find("CompoundID");
      const std::string* value = name ? name->attribute("value") : nullptr;
      finding.compound = value ? "compound " + *value : "a compound without a name yet";
    }
    if (!open_.empty()) finding.field = open_.back().name;
    throw std::runtime_error(textOf(finding));
  }

  HRESULT attribute(WideView name, WideView value) noexcept override {
    return run([&] { attributes_.emplace_back(textOf(name), textOf(value)); });
  }
  HRESULT attributes(const char* const* all) noexcept override {
    return run([&] {
      for (; *all; all += 2) attributes_.emplace_back(all[0], all[1]);
    });
  }
  HRESULT startElement(WideView name) noexcept override { return start(name); }
  HRESULT startElement(std::string_view name) noexcept override { return start(name); }
  HRESULT endElement(WideView) noexcept override { return end(); }
  HRESULT endElement(std::string_view) noexcept override { return end(); }
  HRESULT text(WideView) noexcept override { return S_OK; }
  HRESULT text(std::string_view) noexcept override { return S_OK; }
  HRESULT comment() noexcept override { return S_OK; }
  HRESULT instruction(WideView, WideView) noexcept override { return S_OK; }

 private:
  template <class Event>
  HRESULT run(Event&& event) noexcept {
    try {
      if (!failure_) event();
    } catch (...) {
      failure_ = std::current_exception();
    }
    return failure_ ? E_FAIL : S_OK;
  }

  template <class Text>
  HRESULT start(Text name) noexcept {
    return run([&] {
      open_.push_back({textOf(name), *line, std::exchange(attributes_, {}), {}});
      if (open_.size() > kDeepest) fail("nested too deeply");
      if (open_.size() > 1) return;
      if (open_[0].name != "compounds") fail("the file is not a list of compounds");
      if (const std::string* title = open_[0].attribute("library")) title_ = *title;
    });
  }
  HRESULT end() noexcept {
    return run([&] {
      LibraryElement element = std::move(open_.back());
      open_.pop_back();
      if (open_.size() == 1) receive_(element);
      if (open_.size() > 1) open_.back().content.push_back(std::move(element));
    });
  }

  const std::string file_;
  const std::function<void(const LibraryElement&)>& receive_;
  std::string title_;
  std::vector<LibraryElement> open_;
  std::vector<std::pair<std::string, std::string>> attributes_;  // of the element that starts next
  std::exception_ptr failure_;
};

// The system's parser may be a component.
struct ComponentUse {
  const HRESULT started = CoInitialize(nullptr);

  ComponentUse() = default;
  ComponentUse(const ComponentUse&) = delete;
  ComponentUse& operator=(const ComponentUse&) = delete;
  ~ComponentUse() {
    if (SUCCEEDED(started)) CoUninitialize();
  }
};

bool parse(std::string_view text, Reader& reader) {
  const ComponentUse use;
  try {
    return parseXml(std::as_bytes(std::span(text)), reader);
  } catch (const CQSCOMError& error) {
    if (error.result() == E_OUTOFMEMORY) throw std::bad_alloc();
    return false;
  }
}

}  // namespace

const std::string* LibraryElement::attribute(std::string_view attributeName) const {
  const auto found = std::ranges::find(attributes, attributeName, &std::pair<std::string, std::string>::first);
  return found == attributes.end() ? nullptr : &found->second;
}

const LibraryElement* LibraryElement::find(std::string_view elementName) const {
  const auto found = std::ranges::find(content, elementName, &LibraryElement::name);
  return found == content.end() ? nullptr : &*found;
}

std::string readLibrary(const std::filesystem::path& file, const std::function<void(const LibraryElement&)>& receive) {
  Reader reader(bank::utf8(file), receive);
  const bool isWellFormed = parse(readText(file), reader);
  std::string title = reader.title();
  if (!isWellFormed) reader.fail("not well-formed XML, or with a document type, which is not accepted");
  return title;
}

}  // namespace qs::bank
