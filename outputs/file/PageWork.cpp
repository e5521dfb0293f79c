#include "outputs/file/PageWork.h"

#include "diagnostics/hxGeneral.h"
#include "platform/EventLoop.h"

namespace zeb {
namespace {

constexpr const char* kKeptTempPrefix = "TMPKEPT";

}  // namespace

Result<LoadedTemplate> LoadTemplate(FileSystem& files, const std::string& path) {
  Result<std::string> bytes = files.Read(path, kMaxFileBytes);
  if (!bytes) return bytes.AsFailure();
  LoadedTemplate loaded;
  loaded.encoding = DetectFileEncoding(bytes.Value());
  loaded.text = UndoEscapedTags(DecodeFile(bytes.Value(), loaded.encoding));
  return loaded;
}

ValueEncoding PageValues(const clsFileParameters& pair, std::string_view templateText) {
  return {.escape = EscapeFor(pair.EscapeValues, pair.DestinationFileName(), templateText)};
}

std::string BuildPage(std::string text, const clsFileParameters& pair, const ServiceSnapshot& snapshot,
                      UploadFileList& uploadFiles, ValueEncoding values) {
  InsertRefreshHeader(text, pair.RefreshTagSeconds, pair.AddNoCache, snapshot.moment, ZEB_VERSION);
  return ExpandPage(text, snapshot, pair.SimpleTextFormat, uploadFiles, values);
}

Result<std::string> WriteTempPage(FileSystem& files, std::string_view page, const FileEncoding& encoding,
                                  TempPage kind, std::vector<std::string>* trace) {
  Result<std::string> name =
      GetTempFile(files, kind == TempPage::kKept ? kKeptTempPrefix : kTempPrefix, trace);
  if (!name) return name;
  if (const Outcome written = files.Write(name.Value(), EncodeFile(page, encoding)); !written)
    return written.AsFailure();
  return name;
}

}  // namespace zeb
