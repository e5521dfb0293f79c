#include "platform/windows/JournalFile.h"

#include <array>
#include <cstdio>
#include <memory>

namespace zeb {
namespace {

std::unique_ptr<JournalFile>& TheChosen() {
  static std::unique_ptr<JournalFile> chosen;
  return chosen;
}

std::string Stamp() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d ", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute, now.wSecond);
  return text.data();
}

}  // namespace

void JournalFile::Choose(const std::string& path) {
  TheChosen() = std::make_unique<JournalFile>(path);
}

JournalFile* JournalFile::Chosen() {
  return TheChosen().get();
}

bool JournalFile::Append(std::string_view line) {
  const std::lock_guard lock(mutex_);
  if (!file_.IsOpen() && !Open()) return false;
  if (bytes_ > kMostBytes) {
    file_.Close();
    MoveFileExW(SystemPath(path_).c_str(), SystemPath(path_ + ".old").c_str(), MOVEFILE_REPLACE_EXISTING);
    if (!Open()) return false;
  }
  const std::string whole = Stamp() + std::string(line);
  bytes_ += whole.size();
  if (WriteAll(file_, whole)) return true;
  file_.Close();
  return false;
}

bool JournalFile::Open() {
  file_ = OpenFileSharing(path_, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, OPEN_ALWAYS);
  LARGE_INTEGER size{};
  bytes_ = file_.IsOpen() && GetFileSizeEx(file_.Get(), &size) != 0
               ? static_cast<std::uint64_t>(size.QuadPart)
               : 0;
  return file_.IsOpen();
}

}  // namespace zeb
