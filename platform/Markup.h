// Markup: reads XML and HTML texts. Texts are UTF-8, whatever encoding they declare.
//
// Calls may be made from worker threads. Nothing is fetched and no entity but the predefined ones is put in:
// XML that uses another is refused.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"

namespace zeb {

// A document's elements in document order, and all its character data in one piece, of which each element's
// text (with that of the elements in it) is a part.
struct MarkupDocument {
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);
  struct Element {
    std::string name;
    std::size_t parent = kNone;  // the root element has none
    std::size_t textBegin = 0, textEnd = 0;
  };
  std::vector<Element> elements;
  std::string text;

  // "/Root/Child" from the document, "./child/grandchild" from an element, in document order.
  std::vector<std::size_t> Select(std::string_view path, std::size_t from = kNone) const;
  std::string_view TextOf(std::size_t element) const {
    const Element& found = elements[element];
    return std::string_view(text).substr(found.textBegin, found.textEnd - found.textBegin);
  }
};

class Markup {
 public:
  virtual ~Markup() = default;
  virtual Result<MarkupDocument> ReadXml(std::string_view text) = 0;
  // The text that a reader of the page would see: tags and scripts removed, character entities decoded, white
  // space as one blank, <br> as a line feed. Where a block (a paragraph, a table cell) begins or ends, words
  // are separate.
  virtual std::string HtmlToText(std::string_view html) = 0;
};

}  // namespace zeb
