#include "outputs/file/PageWork.h"

#include "platform/EventLoop.h"

namespace zeb {

Result<LoadedTemplate> LoadTemplate(FileSystem& files, const std::string& path) {
  Result<std::string> bytes = files.Read(path, kMaxFileBytes);
  if (!bytes) return Failure{bytes.Reason()};
  LoadedTemplate loaded;
  loaded.encoding = DetectFileEncoding(bytes.Value());
  loaded.text = UndoEscapedTags(DecodeFile(bytes.Value(), loaded.encoding));
  return loaded;
}

std::string BuildPage(std::string text, const clsFileParameters& pair, const clsZEBService& service,
                      UploadFileList& uploadFiles) {
  InsertRefreshHeader(text, pair.RefreshTagSeconds, pair.AddNoCache, service.environment().loop.Now(),
                      ZEB_VERSION);
  return ExpandPage(text, service, pair.SimpleTextFormat, uploadFiles);
}

Result<std::string> WriteTempPage(FileSystem& files, std::string_view page, const FileEncoding& encoding) {
  Result<std::string> name = files.MakeTempFile("TMP");
  if (!name) return name;
  Outcome written = files.Write(name.Value(), EncodeFile(page, encoding));
  if (!written) return Failure{written.Reason()};
  return name;
}

}  // namespace zeb
