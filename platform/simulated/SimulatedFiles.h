// SimulatedFiles: a file system in memory, with failures on request. Folders are made by CreateFolders,
// except "/" and the temporary folder "/tmp", which are there. Used on one thread.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/FileSystem.h"

namespace zeb {

class SimulatedFiles : public FileSystem {
 public:
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

  // Asked before each operation ("Read" (also before each block of an open file), "Write", "Append",
  // "Delete", "CreateFolders", "List", "MakeTempFile"), with the path that it changes or reads (the prefix of
  // a temporary file). Putting a file in its place asks for the work file "Write" or "Copy", for the place
  // "Rename". A non-empty answer is the reason it fails: "cannot write '/x': " + answer.
  std::function<std::string(const std::string& operation, const std::string& path)> fail;

  // Called at each state that another process could find while an operation that changes something runs: a
  // file just emptied, half written, complete.
  std::function<void(const std::string& operation, const std::string& path)> observe;

  std::string Contents(const std::string& path);  // "" when missing
  bool Exists(const std::string& path);
  void Put(const std::string& path, std::string bytes);  // makes the folders too
  // Gives a file the time stamps of another moment, as a rewrite within one tick of the clock would.
  void SetModified(const std::string& path, std::int64_t modified);
  void PutSpecial(const std::string& path);               // a pipe or device: exists, but is not regular
  void SetOpenToAll(const std::string& path, bool open);  // files and folders are, until then
  std::map<std::string, std::string> realPaths;           // where a path leads through links
  void PutLink(const std::string& path, const std::string& to);  // a symbolic link of this user's
  void Restart() { startedAt_ = clock_; }                        // what is there is an earlier run's
  MonotonicTime now{};                                           // what a look at a file gives as its moment
  int operations = 0;                                            // how many were asked for

 private:
  class Reader;
  class Target;
  struct File {
    std::string bytes;
    std::int64_t modified = 0, changed = 0;
    std::uint64_t inode = 0;
    bool isFolder = false;
    bool isSpecial = false;
    bool openToAll = true;
    std::string linksTo;  // "": no link
  };
  FileInfo InfoOf(const File& file) const;
  static File Folder();
  std::string Refusal(const char* operation, const std::string& path);
  std::string CannotHoldFile(const std::string& path) const;  // why a file cannot be there; "" when it can
  std::string WhyMissing(const std::string& path) const;      // of a path where nothing is
  std::string Behind(const std::string& normal) const;        // of a link
  std::string WhyNoTarget(const std::string& normal, const LinkRules& rules, std::string& behind) const;
  void Observe(const char* operation, const std::string& path) const;
  void FillInSteps(const char* operation, const std::string& path, std::string bytes);
  void Touch(File& file);

  std::map<std::string, File> files_ = {{"/", Folder()}, {"/tmp", Folder()}};
  std::int64_t clock_ = 1, startedAt_ = 1;
  std::uint64_t nextInode_ = 1;
  int nextTemp_ = 1;
};

}  // namespace zeb
