// PosixFiles: the file system of a POSIX machine. Stateless except for the temporary folder, so any thread
// may call it.
//
// Nothing here waits for a pipe's or device's other end: anything but a regular file is refused. New files
// get mode 0644 less the umask; a file put in place of another by Rename takes over its mode and, where
// allowed, its owner, so that a page stays readable for whoever could read it before.
#pragma once

#include "platform/FileSystem.h"

namespace zeb {

class PosixFiles : public FileSystem {
 public:
  PosixFiles();  // temporary files go to $TMPDIR, else /tmp

  std::optional<FileInfo> Stat(const std::string& path) override;
  Result<std::string> Read(const std::string& path, std::uint64_t limit) override;
  Result<std::unique_ptr<FileReader>> OpenForReading(const std::string& path) override;
  Result<std::string> RealPath(const std::string& path) override;
  Outcome Write(const std::string& path, std::string_view bytes) override;
  Outcome Append(const std::string& path, std::string_view bytes) override;
  Outcome Delete(const std::string& path) override;
  Outcome Rename(const std::string& from, const std::string& to) override;
  Outcome Copy(const std::string& from, const std::string& to) override;
  Outcome CopyFrom(FileReader& from, const std::string& to) override;
  Outcome CreateFolders(const std::string& path) override;
  Result<std::vector<std::string>> List(const std::string& folder) override;
  Result<std::string> MakeTempFile(const std::string& prefix) override;

 private:
  const std::string tempFolder_;
};

}  // namespace zeb
