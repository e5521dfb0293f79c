// Publisher: a program that publishes the items of N services into files, in a temporary folder, and a
// controller's connection to each service: ours, or the bare program that it is measured against.
//
// Every service has the same pairs. Pair p of service i makes www/i-p.html of page-p.html.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bench/system/Moment.h"
#include "bench/system/Process.h"

namespace zeb::bench {

enum class Medium { kDisk, kMemory };
// The folder from ZEB_BENCH_DISK (/var/tmp) or ZEB_BENCH_MEMORY (/dev/shm). Throws when it is on the other
// medium.
std::string FolderOn(Medium medium);

struct Plan {
  Medium medium = Medium::kMemory;
  int services = 1;
  int pairs = 1;
};

// Removed with all that is in it.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(Medium medium);
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A page that was put in place.
struct Arrival {
  int service;
  int pair;
  Moment at;
};

class Publisher {
 public:
  enum class Kind { kZeb, kBare };
  // Throws when anything does not come about.
  Publisher(Kind kind, const Plan& plan);
  ~Publisher();
  Publisher(const Publisher&) = delete;
  Publisher& operator=(const Publisher&) = delete;

  const Plan& Planned() const { return plan_; }
  Process& Program() { return *program_; }
  bool IsZeb() const { return kind_ == Kind::kZeb; }

  // Sends a new item to a service, counted from 1; its number.
  int Send(int service);
  // The pages put in place since the last look. Does not wait.
  void Look(std::vector<Arrival>& arrivals);
  // The number of the item that a service's first page shows.
  int Shown(int service) const;

 private:
  int Connect(int service);
  void LogOn(int link);

  const Kind kind_;
  const Plan plan_;
  TemporaryFolder home_;
  const int ports_;  // service i listens on this + i
  std::unique_ptr<Process> program_;
  int watch_ = -1;
  int item_ = 0;
  std::vector<int> links_;
};

// One piece of work at a time, and both in turns: what disturbs the one disturbs the other.
struct Rivals {
  explicit Rivals(const Plan& plan) : zeb(Publisher::Kind::kZeb, plan), bare(Publisher::Kind::kBare, plan) {}
  Publisher zeb;
  Publisher bare;
};

}  // namespace zeb::bench
