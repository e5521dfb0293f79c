#include "outputs/file/PageWork.h"

#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/EventLoop.h"

namespace zeb {
namespace {

constexpr const char* kKeptTempPrefix = "TMPKEPT";

}  // namespace

ValueEncoding PageValues(const clsFileParameters& pair, std::string_view templateText) {
  return {.escape = EscapeFor(pair.EscapeValues, pair.DestinationFileName(), templateText)};
}

Result<std::string> BuildPage(const PageTemplate& page, const clsFileParameters& pair,
                              const ServiceSnapshot& snapshot, UploadFileList& uploadFiles,
                              ValueEncoding values, std::string_view date) {
  const RefreshHeader header{pair.RefreshTagSeconds, pair.AddNoCache, ZEB_VERSION, date};
  std::optional<std::string> built =
      page.Expand(header, snapshot, pair.SimpleTextFormat, uploadFiles, values);
  if (built) return std::move(*built);
  return Failure{"the page of '" + pair.SourceFileName() + "' would be larger than " +
                 std::to_string(kMaxPageBytes) + " bytes; shorten the template or what its tags stand for"};
}

Shown::Page ShownPage(const clsFileParameters& pair, std::string_view text, std::string_view bytes,
                      PageDigest::When digest) {
  return {pair.DestinationFileName(), bytes.size(), std::string(text.substr(0, kMostFirstBytes)),
          PageDigest(bytes, digest)};
}

void NoteSource(Shown::Page& shown, const clsFileParameters& pair, std::shared_ptr<const PageTemplate> page,
                const SnapshotPtr& snapshot, const ValueEncoding& values) {
  const std::string* const text = &page->Text();
  shown.snapshot = snapshot;
  // The text stays as long as it is named, also when the template has changed since.
  shown.source = {std::shared_ptr<const std::string>(std::move(page), text), pair.SimpleTextFormat,
                  values.escape, values.urlEncode};
}

Result<std::string> WriteTempPage(FileSystem& files, std::string_view bytes, TempPage kind,
                                  std::vector<std::string>* trace) {
  Result<std::string> name =
      GetTempFile(files, kind == TempPage::kKept ? kKeptTempPrefix : kTempPrefix, trace);
  if (!name) return name;
  if (const Outcome written = files.Write(name.Value(), bytes); !written) return written.AsFailure();
  return name;
}

}  // namespace zeb
