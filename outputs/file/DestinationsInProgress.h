// DestinationsInProgress: which files are being written now, by any output of any service.
//
// Two outputs may have the same destination (by mistake, or two services into one folder with the same
// pictures); they must not mix their bytes in one work file, so the second waits. Also remembers the last
// numbered version of each destination. One for all outputs of a program, shared by them; guarded, since the
// workers that write the files ask it too, and a worker that comes back late releases what it holds.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/EventLoop.h"

namespace zeb {

class DestinationsInProgress : public std::enable_shared_from_this<DestinationsInProgress> {
 public:
  // Keeps its paths from others until it is destroyed, on whatever thread.
  class Claim {
   public:
    Claim(std::shared_ptr<DestinationsInProgress> owner, std::set<std::string> held)
        : owner_(std::move(owner)), held_(std::move(held)) {}
    ~Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    bool Holds(const std::string& path) const;
    // One more, when nobody else has it; does not wait.
    bool Add(const std::string& path);

   private:
    friend class DestinationsInProgress;
    std::shared_ptr<DestinationsInProgress> owner_;
    std::set<std::string> held_;  // those of them that are busy by another claim are not its own
  };
  using ClaimPtr = std::unique_ptr<Claim>;

  // Claims all the paths at once, so that two outputs never wait for each other. Waits (in a task) until all
  // are free; after `limit`, or when `enough` says so, it claims those that are.
  ClaimPtr Take(EventLoop& loop, std::vector<std::string> paths, Duration limit,
                const std::function<bool()>& enough = nullptr);

  // The number of the newest numbered version of a destination; nothing: not known yet.
  std::optional<std::int64_t> LastVersion(const std::string& destination) const;
  void SetLastVersion(const std::string& destination, std::int64_t number);

 private:
  bool TakeAll(const std::set<std::string>& keys);
  bool TakeOne(const std::string& key);

  mutable std::mutex mutex_;
  std::unordered_set<std::string_view>
      busy_;  // the texts are those of the claims, each of the one that holds it
  std::map<std::string, std::int64_t> lastVersions_;
};

}  // namespace zeb
