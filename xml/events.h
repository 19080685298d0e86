// What the readers of XML share: attributes by name, and elements that are followed as a whole to their end.
#pragma once

#include <algorithm>
#include <utility>

#include "com/bstr.h"
#include "interfaces/interfaces.h"
#include "platform/number_text.h"

namespace qs {

// A string literal that can be passed where a BSTR is only read: its length in bytes is before the text.
template <std::size_t size>
struct XmlTag {
  explicit constexpr XmlTag(const OLECHAR (&literal)[size]) { std::copy_n(literal, size, text); }
  BSTR get() const { return const_cast<BSTR>(text); }

  UINT bytes = (size - 1) * sizeof(OLECHAR);
  OLECHAR text[size]{};
};

// The attributes of an element, each found by its name; null counts as none. `read` is false, and leaves its target as
// it was, for an attribute that cannot be found; one that is found with a null string is empty. Throws
// CQSCOMError(E_OUTOFMEMORY).
class XmlAttributes {
 public:
  explicit XmlAttributes(TaggedAttributes* attributes) : attributes_(attributes) {}

  template <std::size_t size>
  bool read(const XmlTag<size>& tag, Bstr& target) const {
    if (!attributes_) return false;
    Bstr value;
    const HRESULT found = attributes_->find(tag.get(), value.out());
    if (!succeeded(found) || found != S_OK) return false;
    target = value ? std::move(value) : Bstr(WideView(OLESTR("")));
    return true;
  }
  template <std::size_t size>
  bool read(const XmlTag<size>& tag, double& target) const {
    Bstr value;
    if (!read(tag, value)) return false;
    convertValue(value.view(), &target);
    return true;
  }
  template <std::size_t size>
  bool read(const XmlTag<size>& tag, INT& target) const {
    Bstr value;
    if (!read(tag, value)) return false;
    LONG number = target;
    convertValue(value.view(), &number);
    target = number;
    return true;
  }

  TaggedAttributes* get() const { return attributes_; }

 private:
  TaggedAttributes* attributes_;
};

// An element that is skipped, or read by another reader, with all that it holds. Elements of its name within it are
// counted, so that their ends are not taken for its own.
class XmlSpan {
 public:
  bool isOpen() const { return depth_ > 0; }
  void open(WideView name) {
    name_ = name;
    depth_ = 1;
  }
  // What starts and ends within the element; true at its own end.
  void start(WideView name) {
    if (name == name_) ++depth_;
  }
  bool end(WideView name) { return name == name_ && --depth_ == 0; }

 private:
  WideString name_;
  std::size_t depth_ = 0;
};

}  // namespace qs
