// DestinationsInProgress: which files are being written now, by any output of any service.
//
// Two outputs may have the same destination (by mistake, or two services into one folder with the same
// pictures); they must not mix their bytes in one work file, so the second waits. Also remembers the last
// numbered version of each destination. One for all outputs of a program, shared by them; used on the loop's
// thread only.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/EventLoop.h"

namespace zeb {

class DestinationsInProgress : public std::enable_shared_from_this<DestinationsInProgress> {
 public:
  // Keeps its paths from others until it is destroyed.
  class Claim {
   public:
    Claim(std::shared_ptr<DestinationsInProgress> owner, std::set<std::string> held)
        : owner_(std::move(owner)), held_(std::move(held)) {}
    ~Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    bool Holds(const std::string& path) const;

   private:
    std::shared_ptr<DestinationsInProgress> owner_;
    std::set<std::string> held_;
  };

  // Claims all the paths at once, so that two outputs never wait for each other. Waits (in a task) until all
  // are free; after `limit` it claims those that are.
  std::unique_ptr<Claim> Take(EventLoop& loop, const std::vector<std::string>& paths, Duration limit);

  // The number of the newest numbered version of a destination; nothing: not known yet.
  std::optional<std::int64_t> LastVersion(const std::string& destination) const;
  void SetLastVersion(const std::string& destination, std::int64_t number);

 private:
  std::set<std::string> busy_;
  std::map<std::string, std::int64_t> lastVersions_;
};

}  // namespace zeb
