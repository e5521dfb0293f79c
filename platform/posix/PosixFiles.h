// PosixFiles: the file system of a POSIX machine. Nothing in it changes after it was made, so any thread may
// call it.
//
// Nothing here waits for a pipe's or device's other end: anything but a regular file is refused. New files
// get mode 0644 less the umask.
#pragma once

#include <cstdint>

#include "platform/FileSystem.h"

namespace zeb {

class PosixFiles : public FileSystem {
 public:
  // Temporary files go to $TMPDIR, else /tmp. `dataFolder` marks their names, so that a later run on the same
  // data folder knows them; "": this program makes none that could be left.
  explicit PosixFiles(const std::string& dataFolder = {});

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
  const std::string tempFolder_;
  const std::string owner_;       // between a temporary file's prefix and its random part
  const std::int64_t startedAt_;  // nanoseconds since 1970, by the clock of file times
};

}  // namespace zeb
