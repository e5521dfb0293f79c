// CompiledTemplate: a template parsed once, to be expanded against one snapshot after another. Its results
// are those of ExpandTemplate, or of ExpandPage after InsertRefreshHeader, to the byte.
//
// Never changed once it is made, and shared by pointer: any number of threads may expand it at a time. An
// expansion is one pass: what stands between tags is copied as it is, and each value and condition is found
// out once.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "templates/PageChunks.h"
#include "templates/TemplateCompiler.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

class TagValues;

class CompiledTemplate {
 public:
  using Text = std::shared_ptr<const std::string>;

  static std::shared_ptr<const CompiledTemplate> OfText(Text text);
  // Where the page's pieces are cut depends on the header's length in characters: this is for headers of the
  // same length as that one, which must be harmless (templates/TemplateCompiler.h).
  static std::shared_ptr<const CompiledTemplate> OfPage(Text page, const HeaderInPage& header = {},
                                                        std::size_t characters = kChunkCharacters);

  // Nothing: the result would be larger than kMaxPageBytes. `header` is put in where the page was compiled to
  // have one.
  std::optional<std::string> Expand(const ServiceSnapshot& snapshot, std::string_view simpleText,
                                    UploadFileList& uploadFiles, ValueEncoding values = {},
                                    std::string_view header = {}) const;

  std::size_t Bytes() const;  // of memory, without the text

 private:
  CompiledTemplate(Text text, std::optional<TemplateProgram> program, std::size_t headerAt,
                   std::size_t characters);
  void ExpandGenerally(TagValues& tags, std::string_view header, std::string& to) const;

  const Text text_;
  const std::optional<TemplateProgram> program_;   // nothing: always the general expansion
  const std::size_t headerAt_;                     // npos: it has none
  const std::size_t characters_;                   // of a piece
  mutable std::atomic<std::size_t> lastSize_ = 0;  // of the last result, for the room of the next
};

}  // namespace zeb
