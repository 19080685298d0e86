// What an object keeps while it reads XML text.
#pragma once

#include <memory>
#include <utility>

namespace qs {

// `Before` owns a content of the object, or is empty: std::unique_ptr or std::optional.
template <class Reader, class Before>
class XmlReading {
 public:
  // Of the object's element, from its start to its end. Shared, so that a component that is called and calls back
  // cannot end it.
  std::shared_ptr<Reader> reader;

  // The content from before the text.
  Before before;

  bool isInDocument() const { return inDocument_; }

  void startDocument() {
    end();
    inDocument_ = true;
  }

  // The content that was read stays. The former one is released last, since that may call back.
  void end() {
    reader.reset();
    inDocument_ = false;
    const auto old = std::exchange(before, Before());
  }

  // Restores the former content.
  template <class Content>
  void undo(Content& content) {
    if (before) std::swap(content, *before);
    end();
  }

 private:
  bool inDocument_ = false;
};

}  // namespace qs
