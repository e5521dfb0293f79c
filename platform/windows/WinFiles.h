// WinFiles: files through Windows itself: paths of any length, shares, and names in any script.
//
// What another program holds for a moment is tried again for a quarter of a second. Rights are those that the
// folder hands down; `openToAll` is always so.
#pragma once

#include <cstdint>
#include <string>

#include "platform/FileSystem.h"

namespace zeb {

class WinFiles : public FileSystem {
 public:
  // `dataFolder` marks the names of temporary files, so that a later run on the same data folder knows them;
  // "": this program makes none that could be left.
  explicit WinFiles(const std::string& dataFolder = {});

  std::optional<FileInfo> Stat(const std::string& path) override;
  Result<std::string> Read(const std::string& path, std::uint64_t limit) override;
  Result<std::unique_ptr<FileReader>> OpenForReading(const std::string& path) override;
  Result<std::string> RealPath(const std::string& path) override;
  Outcome Write(const std::string& path, std::string_view bytes) override;
  Outcome Append(const std::string& path, std::string_view bytes) override;
  Outcome Delete(const std::string& path) override;
  Result<std::unique_ptr<FileTarget>> FindTarget(const std::string& path, const LinkRules& rules) override;
  Outcome CreateFolders(const std::string& path) override;
  Result<std::vector<std::string>> List(const std::string& folder) override;
  Result<std::string> MakeTempFile(const std::string& prefix) override;
  std::size_t DeleteLeftTempFiles(const std::string& prefix) override;

 private:
  const std::string tempFolder_;  // with its separator
  const std::string owner_;       // between a temporary file's prefix and its random part
  const std::int64_t startedAt_;  // nanoseconds since 1970
};

}  // namespace zeb
