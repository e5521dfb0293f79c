// SupportFile: what a person who helps from afar needs to see of a station, as files for one zip: who asks
// and why, settings, status, journal, debug logs, templates. Nothing is sent anywhere, and passwords are left
// out: those of the settings by their names, and wherever else they stand.
//
//   SupportPlan plan = PlanSupport(environment, input);                       on the loop's thread
//   const auto entries = CollectSupport(environment.files, std::move(plan));  on a worker
//   WriteSupport(files, zips, path, entries, now);                            on a worker
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dashboard/JournalTail.h"
#include "platform/Environment.h"
#include "platform/FileSystem.h"
#include "platform/Result.h"
#include "platform/Time.h"
#include "platform/ZipFiles.h"
#include "status/StationState.h"

namespace zeb {

struct SupportInput {
  std::string reason;     // what the person asks for help with, in their words
  std::string reference;  // that the helper gave; may be empty
  bool withTemplates = false;
  std::string status, statusJson;  // "" where nothing runs
  std::string journal;
};

// Of what runs in this program.
void AddStatus(SupportInput& input, const EventLoop& loop, const std::vector<StationState>& states);
void AddJournal(SupportInput& input, const JournalTail& journal);

// What is known already, and the files that are still to be read.
struct SupportPlan {
  struct File {
    std::string path, name;  // where it is, and what it is called in the zip
    std::uint64_t most = 0;  // of a longer one the end
  };
  std::vector<ZipEntry> entries;
  std::vector<File> files;
  std::string logFolder;
  std::vector<std::string> words;  // that must not be in it
};

inline constexpr std::uint64_t kMostSupportLog = 16u * 1024 * 1024;
inline constexpr std::size_t kMostSupportLogs = 3;
inline constexpr std::uint64_t kMostSupportTemplate = 1024 * 1024;
inline constexpr std::size_t kMostSupportTemplates = 200;

// When the settings cannot be read, the plan says so in their place: then help is wanted most.
SupportPlan PlanSupport(const Environment& environment, const SupportInput& input);
// A file that cannot be read is there with the reason as its text.
std::vector<ZipEntry> CollectSupport(FileSystem& files, SupportPlan plan);

// "ZEB-support-4711-20261124-1530.zip"
std::string SupportFileName(const std::string& reference, WallTime now);
// Beside its place first, and readable to this user only.
Outcome WriteSupport(FileSystem& files, const ZipFiles& zips, const std::string& path,
                     const std::vector<ZipEntry>& entries, WallTime now);

}  // namespace zeb
