#include "templates/PageTemplate.h"

#include <algorithm>
#include <utility>

#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::size_t kMostVariants = 4;

}  // namespace

PageTemplate::PageTemplate(std::string text, FileEncoding encoding)
    : text_(std::make_shared<const std::string>(std::move(text))),
      encoding_(encoding),
      headerAt_(RefreshHeaderPlace(*text_)) {}

std::shared_ptr<const PageTemplate> PageTemplate::FromBytes(std::string_view bytes) {
  const FileEncoding encoding = DetectFileEncoding(bytes);
  return std::make_shared<const PageTemplate>(UndoEscapedTags(DecodeFile(bytes, encoding)), encoding);
}

std::optional<std::string> PageTemplate::Expand(const RefreshHeader& header, const ServiceSnapshot& snapshot,
                                                std::string_view simpleText, UploadFileList& uploadFiles,
                                                ValueEncoding values) const {
  if (headerAt_ == std::string::npos)
    return CompiledFor({})->Expand(snapshot, simpleText, uploadFiles, values);
  const std::string headerText = RefreshHeaderText(header, snapshot.moment);
  if (IsHarmlessHeader(headerText))
    return CompiledFor(headerText)->Expand(snapshot, simpleText, uploadFiles, values, headerText);
  std::string page = *text_;
  page.insert(headerAt_, headerText);
  return ExpandPage(page, snapshot, simpleText, uploadFiles, values);
}

PageTemplate::Compiled PageTemplate::CompiledFor(std::string_view header) const {
  const std::size_t characters = CountCharacters(header);
  if (Compiled known = Known(characters)) return known;
  // Not under the lock: another thread may do the same meanwhile, and either result serves.
  Compiled compiled = CompiledTemplate::OfPage(text_, {headerAt_, header});
  const std::lock_guard lock(mutex_);
  if (variants_.size() == kMostVariants) variants_.erase(variants_.begin());
  variants_.push_back({characters, compiled});
  return compiled;
}

PageTemplate::Compiled PageTemplate::Known(std::size_t characters) const {
  const std::lock_guard lock(mutex_);
  const auto known = std::find_if(variants_.begin(), variants_.end(),
                                  [&](const Variant& variant) { return variant.characters == characters; });
  if (known == variants_.end()) return nullptr;
  std::rotate(known, known + 1, variants_.end());
  return variants_.back().compiled;
}

std::size_t PageTemplate::Bytes() const {
  const std::lock_guard lock(mutex_);
  std::size_t bytes = sizeof *this + text_->capacity();
  for (const Variant& variant : variants_) bytes += variant.compiled->Bytes();
  return bytes;
}

}  // namespace zeb
