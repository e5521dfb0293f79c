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
  // Everyone on the machine may read the file, or enter the folder, as far as its mode says; true where the
  // system has no such modes.
  bool openToAll = true;
};

// A file that is open for reading, for those that are too large to be held. Used on one thread at a time.
class FileReader {
 public:
  virtual ~FileReader() = default;
  virtual std::uint64_t Size() const = 0;  // when it was opened
  // Of the open file itself, when it was opened: whoever puts another in its place changes nothing here.
  virtual FileInfo Info() const = 0;
  // Where the open file lies, links followed; fails when it can no longer be found there.
  virtual Result<std::string> RealPath() const = 0;
  // The next bytes, at most `most`; 0 at the end, wherever that is by now.
  virtual Result<std::size_t> Read(char* to, std::size_t most) = 0;
  virtual Outcome Rewind() = 0;  // the next bytes are the first again
};

// A place where a file is to be put, found fit for one: nothing is there, or a regular file. Used at once, on
// one thread.
//
// The file is made beside its place, under WorkName, and takes the place in one step: whoever reads finds the
// old file or the new one, whole, and never none. What has the work name already (left over, or a link that
// somebody planted) is removed and never written through. The new file has the mode and, where that is
// allowed, the owner of the old one. A failure leaves the old file, and nothing else.
class FileTarget {
 public:
  virtual ~FileTarget() = default;
  // Where the file really is; another path than was asked for when a link was followed.
  virtual const std::string& Path() const = 0;
  virtual Outcome Replace(std::string_view bytes) = 0;
  // For what may hold passwords: from the first byte on nobody but this user may read the new file, whatever
  // the mode of the old one was.
  virtual Outcome ReplacePrivately(std::string_view bytes) = 0;
  // With what is left to read of `source`, as far as the size that it was opened with. The time stamp is
  // `modified` where the file system can keep it.
  virtual Outcome ReplaceByCopy(FileReader& source, std::int64_t modified) = 0;
  // Removes a work file that surely was left by an earlier run: a regular file of this user's or of the old
  // file's owner, not changed since this program began. Whether one was removed.
  virtual bool RemoveLeftOver() = 0;
};

// The name under which a file is made beside its place.
inline std::string WorkName(const std::string& path) {
  return path + ".tmp";
}

// What a symbolic link at a target means.
struct LinkRules {
  // It is followed, once, when it belongs to this user, to root or to the owner of the folder that it is in;
  // else refused. Off: the link itself is replaced.
  bool follow = false;
  std::string notBelow;  // a folder that a followed link must not lead into; "": none
  std::string notFile;   // a file that it must not lead to; "": none
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual std::optional<FileInfo> Stat(const std::string& path) = 0;  // nothing: missing or unreachable
  // The whole file. Fails on anything but a regular file (never blocks on a pipe) and above `limit` bytes.
  virtual Result<std::string> Read(const std::string& path, std::uint64_t limit) = 0;
  // Fails on anything but a regular file, as Read does.
  virtual Result<std::unique_ptr<FileReader>> OpenForReading(const std::string& path) = 0;
  // The absolute path of what is there, links followed, without "." and "..".
  virtual Result<std::string> RealPath(const std::string& path) = 0;
  // Creates or empties the file, then writes it whole. A failure part way removes what was written.
  virtual Outcome Write(const std::string& path, std::string_view bytes) = 0;
  // Appends in one piece, creating the file when missing.
  virtual Outcome Append(const std::string& path, std::string_view bytes) = 0;
  // A missing file, or an empty name, is a success.
  virtual Outcome Delete(const std::string& path) = 0;
  // Refuses what is no regular file (folder, pipe, device) and links that break the rules; the reason says
  // what to do. A folder that is missing or closed to this user shows when the file is put there.
  virtual Result<std::unique_ptr<FileTarget>> FindTarget(const std::string& path, const LinkRules& rules) = 0;
  virtual Outcome CreateFolders(const std::string& path) = 0;
  virtual Result<std::vector<std::string>> List(const std::string& folder) = 0;  // plain names, sorted
  // A new empty file in the user's temporary folder whose name starts with `prefix`.
  virtual Result<std::string> MakeTempFile(const std::string& prefix) = 0;
  // Removes the files that MakeTempFile made with just this prefix for earlier runs on the same data folder;
  // how many. None when this program has no data folder of its own.
  virtual std::size_t DeleteLeftTempFiles(const std::string& prefix) = 0;
};

constexpr std::uint64_t kMaxFileBytes = 16u * 1024 * 1024;  // polled files and templates

}  // namespace zeb
