// FileSystem: every touch of a file goes through here.
//
// Calls block as the operating system does, and may be made from a worker thread (EventLoop::RunBlocking): an
// implementation keeps no state that two threads could share unguarded. Reasons name the file. Paths are
// UTF-8; both separators are the platform's business (FileNamePart and FolderPart in text/Paths.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"
#include "platform/Time.h"

namespace zeb {

struct FileInfo {
  std::uint64_t size = 0;
  std::int64_t modified = 0;  // nanoseconds since 1970, for comparing only
  std::int64_t changed = 0;   // the same of the last change of anything about it, which nobody can set
  std::uint64_t device = 0, inode = 0;  // which file it is; 0 where there is no such thing
  MonotonicTime seen{};                 // once this had been found out
  bool isFolder = false;
  bool isRegular = true;  // false for folders, pipes, devices
};

// A file that is open for reading, for those that are too large to be held. Used on one thread at a time.
class FileReader {
 public:
  virtual ~FileReader() = default;
  virtual std::uint64_t Size() const = 0;  // when it was opened
  // The next bytes, at most `most`; 0 at the end, wherever that is by now.
  virtual Result<std::size_t> Read(char* to, std::size_t most) = 0;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual std::optional<FileInfo> Stat(const std::string& path) = 0;  // nothing: missing or unreachable
  // The whole file. Fails on anything but a regular file (never blocks on a pipe) and above `limit` bytes.
  virtual Result<std::string> Read(const std::string& path, std::uint64_t limit) = 0;
  // Fails on anything but a regular file, as Read does.
  virtual Result<std::unique_ptr<FileReader>> OpenForReading(const std::string& path) = 0;
  // Creates or empties the file, then writes it whole. A failure part way removes what was written.
  virtual Outcome Write(const std::string& path, std::string_view bytes) = 0;
  // Appends in one piece, creating the file when missing.
  virtual Outcome Append(const std::string& path, std::string_view bytes) = 0;
  // A missing file, or an empty name, is a success.
  virtual Outcome Delete(const std::string& path) = 0;
  // Puts `from` in the place of `to` in one step: no reader ever finds `to` missing or in part.
  virtual Outcome Rename(const std::string& from, const std::string& to) = 0;
  // Copies contents and time stamp; an existing target is deleted first. A failure leaves no part of it.
  virtual Outcome Copy(const std::string& from, const std::string& to) = 0;
  virtual Outcome CreateFolders(const std::string& path) = 0;
  virtual Result<std::vector<std::string>> List(const std::string& folder) = 0;  // plain names, sorted
  // A new empty file in the user's temporary folder whose name starts with `prefix`.
  virtual Result<std::string> MakeTempFile(const std::string& prefix) = 0;
};

constexpr std::uint64_t kMaxFileBytes = 16u * 1024 * 1024;  // polled files and templates

}  // namespace zeb
