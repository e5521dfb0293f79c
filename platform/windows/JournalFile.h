// JournalFile: the journal of a program that nobody has given a standard error: a service.
//
// One file, set aside as NAME.old when it has grown to its limit, so that both together never take more than
// twice that.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/windows/WinHandle.h"

namespace zeb {

class JournalFile {
 public:
  static constexpr std::uint64_t kMostBytes = 10 * 1024 * 1024;

  // From now on WriteToStandardError writes there; to be called before anything is written.
  static void Choose(const std::string& path);
  static JournalFile* Chosen();  // null: standard error itself

  explicit JournalFile(std::string path) : path_(std::move(path)) {}
  // Each line begins with the moment. False when the file cannot be written; the next call tries again.
  bool Append(std::string_view line);

 private:
  bool Open();

  const std::string path_;
  std::mutex mutex_;
  WinHandle file_;
  std::uint64_t bytes_ = 0;
};

}  // namespace zeb
