// PublishedNames: what all outputs of the program call their pages and templates, so that no picture takes
// such a name, and which files named like pages ZEB itself has put beside its pages since it was started, so
// that it may renew them.
//
// Names count without their folders and without regard to case: one folder has many paths (links, shares, an
// FTP server's view of it). One for all outputs, shared by them; guarded, since workers ask.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "outputs/file/clsFileParameters.h"
#include "platform/FileSystem.h"

namespace zeb {

class PublishedNames {
 public:
  // The names of one output; they count while it lives.
  class Entry {
   public:
    explicit Entry(std::shared_ptr<PublishedNames> owner) : owner_(std::move(owner)) {}
    ~Entry() { Clear(); }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    void Set(const std::vector<clsFileParameters>& pairs);
    void Add(const clsFileParameters& pair);

   private:
    void Clear();
    void AddName(std::string_view path);

    const std::shared_ptr<PublishedNames> owner_;
    std::vector<std::string> names_;
  };

  // Whether a plain name is that of a page, of a page's numbered version, or of a template; what a percent
  // code in it stands for counts too.
  bool Contains(std::string_view name) const;

  // A file of ours at `place` (a path, or a server and a path); `info` as it is then.
  void NoteCopy(const std::string& place, const FileInfo& info);
  // Whether the file there is still the one that was noted.
  bool IsCopy(const std::string& place, const FileInfo& info) const;

 private:
  bool Has(const std::string& lowerCased) const;

  struct Copy {
    std::uint64_t size = 0;
    std::int64_t modified = 0;
  };
  mutable std::mutex mutex_;
  std::map<std::string, int> names_;  // lower-cased, and how many outputs have it
  std::map<std::string, Copy> copies_;
};

}  // namespace zeb
