// LibxmlMarkup: Markup on libxml2. Network access, external entities and entity expansion are off, and
// a document that uses an entity of its own is refused by the entity's name; depth
// (256, the library's own limit), elements and size are bounded; the library writes nothing to standard
// error.
#pragma once

#include "platform/Markup.h"

namespace zeb {

class LibxmlMarkup : public Markup {
 public:
  LibxmlMarkup();  // on the main thread, before others use it
  Result<MarkupDocument> ReadXml(std::string_view text) override;
  std::string HtmlToText(std::string_view html) override;
};

}  // namespace zeb
