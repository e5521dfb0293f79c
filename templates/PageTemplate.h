// PageTemplate: a page's template as it was read from its file, ready to be expanded with any refresh header.
//
// Shared by pointer between the outputs and workers that use the file; may be used on any thread.
#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "templates/CompiledTemplate.h"
#include "text/Encodings.h"

namespace zeb {

class PageTemplate {
 public:
  // Tags that an editor has escaped are tags in `text`.
  PageTemplate(std::string text, FileEncoding encoding);
  static std::shared_ptr<const PageTemplate> FromBytes(std::string_view bytes);

  const std::string& Text() const { return *text_; }
  const FileEncoding& Encoding() const { return encoding_; }  // of the file, and of the page to be

  bool IsSame(const PageTemplate& other) const {
    return *text_ == *other.text_ && encoding_ == other.encoding_;
  }

  // The page, with its refresh header of the snapshot's moment. Nothing: it would be larger than
  // kMaxPageBytes.
  std::optional<std::string> Expand(const RefreshHeader& header, const ServiceSnapshot& snapshot,
                                    std::string_view simpleText, UploadFileList& uploadFiles,
                                    ValueEncoding values = {}) const;

  std::size_t Bytes() const;  // of memory, as it stands now

 private:
  using Compiled = std::shared_ptr<const CompiledTemplate>;
  Compiled CompiledFor(std::string_view header) const;
  Compiled Known(std::size_t characters) const;

  const CompiledTemplate::Text text_;
  const FileEncoding encoding_;
  const std::size_t headerAt_;

  // By the length of the header in characters, the latest last. It depends on the month's name and on what
  // the pairs of this template ask for: few at a time.
  struct Variant {
    std::size_t characters;
    Compiled compiled;
  };
  mutable std::mutex mutex_;
  mutable std::vector<Variant> variants_;
};

}  // namespace zeb
