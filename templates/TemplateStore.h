// TemplateStore: the page templates that are in use, each read and compiled once until its file changes.
//
// One for all outputs of a program, shared by pointer; may be used on any thread. Bounded in files and bytes:
// what was used least recently goes first. Nothing is kept open.
//
// Each use looks at the file. It is read again when its size, times, inode or device differ. Clocks tick, on
// some shares every two seconds only, so an edit may leave all of these as they are when it follows another
// one within a tick; a file is therefore read at each use until it has been read once more two seconds after
// its present state was first seen. That measures by our clock only: a share's clock may differ.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "platform/FileSystem.h"
#include "platform/Result.h"
#include "templates/PageTemplate.h"

namespace zeb {

class TemplateStore {
 public:
  static constexpr std::size_t kMostBytes = 256u * 1024 * 1024;
  static constexpr std::size_t kMostFiles = 10'000;

  explicit TemplateStore(std::size_t mostBytes = kMostBytes, std::size_t mostFiles = kMostFiles)
      : mostBytes_(mostBytes), mostFiles_(mostFiles) {}
  TemplateStore(const TemplateStore&) = delete;
  TemplateStore& operator=(const TemplateStore&) = delete;

  // The template of the file as it is now. Blocks as the file system does; nobody waits for that but the
  // caller. `path` is a full one.
  Result<std::shared_ptr<const PageTemplate>> Load(FileSystem& files, const std::string& path);

  std::size_t Files() const;
  std::size_t Bytes() const;  // about

 private:
  using Page = std::shared_ptr<const PageTemplate>;
  struct Entry {
    std::string path;
    FileInfo info;
    MonotonicTime firstSeen{};  // as `info` says
    bool settled = false;       // read long enough after that
    Page page;
    std::size_t bytes = 0;
  };
  using Entries = std::list<Entry>;

  Page KnownFor(const std::string& path, const FileInfo& info);
  Page Keep(const std::string& path, const FileInfo& info, Page page);
  void Forget(const std::string& path);
  void Weigh(Entry& entry);
  void MakeRoom();
  void Erase(Entries::iterator entry);

  const std::size_t mostBytes_, mostFiles_;
  mutable std::mutex mutex_;  // over all that follows
  Entries entries_;           // the most recently used first
  std::unordered_map<std::string_view, Entries::iterator> byPath_;
  std::size_t bytes_ = 0;
};

}  // namespace zeb
