#include "platform/windows/WinFiles.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <utility>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "platform/windows/WinFileInfo.h"
#include "platform/windows/WinHandle.h"
#include "platform/windows/WinTarget.h"

namespace zeb {
namespace {

// Far above any folder that pages are published to; a runaway one must not fill the memory.
constexpr std::size_t kMaxNamesInFolder = 1'000'000;
constexpr DWORD kMostAtOnce = 1 << 24;

std::string LastError() {
  return SystemErrorText(GetLastError());
}

bool ReadSome(const WinHandle& file, char* to, std::size_t most, std::size_t& got) {
  DWORD count = 0;
  const auto wanted = static_cast<DWORD>(std::min<std::size_t>(most, kMostAtOnce));
  const bool done = ReadFile(file.Get(), to, wanted, &count, nullptr) != 0;
  got = count;
  return done;
}

// Why the open file cannot be used; "" when it is a regular one.
std::string WhyNotRegular(const WinHandle& file, FileInfo& info) {
  const auto found = InfoOf(file);
  if (!found) return LastError();
  info = *found;
  return info.isRegular ? std::string() : kNotRegular;
}

WinHandle OpenToRead(const std::string& path) {
  return OpenFileSharing(path, GENERIC_READ, OPEN_EXISTING);
}

class Reader : public FileReader {
 public:
  Reader(std::string path, WinHandle file) : path_(std::move(path)), file_(std::move(file)) {}

  // Why it cannot be read; "" when it can.
  std::string Begin() { return file_.IsOpen() ? WhyNotRegular(file_, info_) : LastError(); }
  std::uint64_t Size() const override { return info_.size; }
  FileInfo Info() const override { return info_; }
  Result<std::string> RealPath() const override {
    std::string path = PathOf(file_);
    if (path.empty()) return Cannot("find", path_, "it was moved or deleted meanwhile");
    return path;
  }
  Result<std::size_t> Read(char* to, std::size_t most) override {
    std::size_t got = 0;
    if (!ReadSome(file_, to, most, got)) return Cannot("read", path_, LastError());
    return got;
  }
  Outcome Rewind() override {
    if (SetFilePointerEx(file_.Get(), {}, nullptr, FILE_BEGIN) != 0) return {};
    return Cannot("read", path_, LastError());
  }

 private:
  const std::string path_;
  WinHandle file_;
  FileInfo info_;
};

std::string TempFolder() {
  std::wstring path(MAX_PATH + 2, L'\0');
  const DWORD length = GetTempPathW(static_cast<DWORD>(path.size()), path.data());
  path.resize(length);
  return Narrow(path);
}

// What temporary files of this data folder are told by; "" without one. Short, and the same in each run.
std::string OwnerMark(const std::string& dataFolder) {
  if (dataFolder.empty()) return {};
  std::uint32_t hash = 2166136261u;  // FNV-1a
  for (const char byte : dataFolder) hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619u;
  char text[16];
  std::snprintf(text, sizeof text, "-%08x-", static_cast<unsigned>(hash));
  return text;
}

std::int64_t FileTimeNow() {
  FILETIME now{};
  GetSystemTimePreciseAsFileTime(&now);
  LARGE_INTEGER time{};
  time.LowPart = now.dwLowDateTime;
  time.HighPart = static_cast<LONG>(now.dwHighDateTime);
  return Nanoseconds(time);
}

constexpr std::size_t kRandomLetters = 6;

std::string RandomLetters() {
  static constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device random;
  std::string letters;
  for (std::size_t i = 0; i < kRandomLetters; ++i) letters += kLetters[random() % kLetters.size()];
  return letters;
}

// The next part's end in a path, after the drive or the share.
std::size_t FirstFolderEnd(const std::wstring& path) {
  std::size_t begin = 0;
  if (path.starts_with(L"\\\\?\\UNC\\"))
    begin = path.find(L'\\', path.find(L'\\', 8) + 1);
  else if (path.starts_with(L"\\\\?\\"))
    begin = 6;
  else if (path.starts_with(L"\\\\"))
    begin = path.find(L'\\', path.find(L'\\', 2) + 1);
  else if (path.size() > 1 && path[1] == L':')
    begin = 2;
  return begin == std::wstring::npos ? begin : path.find(L'\\', begin + 1);
}

}  // namespace

WinFiles::WinFiles(const std::string& dataFolder)
    : tempFolder_(TempFolder()), owner_(OwnerMark(dataFolder)), startedAt_(FileTimeNow()) {}

std::optional<FileInfo> WinFiles::Stat(const std::string& path) {
  return InfoOfPath(path);
}

Result<std::string> WinFiles::RealPath(const std::string& path) {
  const WinHandle file =
      OpenFileSharing(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  std::string real = file.IsOpen() ? PathOf(file) : std::string();
  if (real.empty()) return Cannot("find", path, LastError());
  return real;
}

Result<std::string> WinFiles::Read(const std::string& path, std::uint64_t limit) {
  const WinHandle file = OpenToRead(path);
  if (!file.IsOpen()) return Cannot("read", path, LastError());
  FileInfo info;
  if (std::string why = WhyNotRegular(file, info); !why.empty()) return Cannot("read", path, why);

  // The size is only a hint: the file may grow or shrink meanwhile.
  std::uint64_t size = info.size;
  std::string bytes;
  std::size_t length = 0;
  if (size <= limit) bytes.resize(static_cast<std::size_t>(size) + 1);
  while (size <= limit) {
    if (length == bytes.size()) bytes.resize(bytes.size() * 2);
    std::size_t got = 0;
    if (!ReadSome(file, bytes.data() + length, bytes.size() - length, got))
      return Cannot("read", path, LastError());
    if (got == 0) break;
    length += got;
    size = std::max<std::uint64_t>(size, length);
  }
  if (size > limit) return Cannot("read", path, "it is larger than " + std::to_string(limit) + " bytes");
  bytes.resize(length);
  return bytes;
}

Result<std::unique_ptr<FileReader>> WinFiles::OpenForReading(const std::string& path) {
  auto reader = std::make_unique<Reader>(path, OpenToRead(path));
  if (std::string why = reader->Begin(); !why.empty()) return Cannot("read", path, why);
  return std::unique_ptr<FileReader>(std::move(reader));
}

Outcome WinFiles::Write(const std::string& path, std::string_view bytes) {
  // Emptied only once it is known to be a regular file.
  WinHandle file = OpenFileSharing(path, GENERIC_WRITE | FILE_READ_ATTRIBUTES, OPEN_ALWAYS);
  if (!file.IsOpen()) return Cannot("write", path, LastError());
  FileInfo info;
  if (std::string why = WhyNotRegular(file, info); !why.empty()) return Cannot("write", path, why);
  if ((info.size == 0 || SetEndOfFile(file.Get()) != 0) && WriteAll(file, bytes) && file.Close()) return {};
  const std::string why = LastError();
  file.Close();
  DeleteFileW(SystemPath(path).c_str());
  return Cannot("write", path, why);
}

Outcome WinFiles::Append(const std::string& path, std::string_view bytes) {
  // With this right alone each write goes to the end, whoever else writes.
  WinHandle file = OpenFileSharing(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, OPEN_ALWAYS);
  if (!file.IsOpen()) return Cannot("write", path, LastError());
  FileInfo info;
  if (std::string why = WhyNotRegular(file, info); !why.empty()) return Cannot("write", path, why);
  if (WriteAll(file, bytes) && file.Close()) return {};
  return Cannot("write", path, LastError());
}

Outcome WinFiles::Delete(const std::string& path) {
  if (path.empty()) return {};
  const std::wstring name = SystemPath(path);
  if (name.empty()) return Cannot("delete", path, SystemErrorText(ERROR_INVALID_NAME));
  if (TriedAgain([&] { return DeleteFileW(name.c_str()) != 0; })) return {};
  const DWORD error = GetLastError();
  if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return {};
  return Cannot("delete", path, SystemErrorText(error));
}

Result<std::unique_ptr<FileTarget>> WinFiles::FindTarget(const std::string& path, const LinkRules& rules) {
  return FindWinTarget(path, rules, startedAt_);
}

Outcome WinFiles::CreateFolders(const std::string& path) {
  const std::wstring name = SystemPath(path);
  if (name.empty()) return Cannot("create folder", path, SystemErrorText(ERROR_INVALID_NAME));
  for (std::size_t end = FirstFolderEnd(name);; end = name.find(L'\\', end + 1)) {
    const std::wstring part = name.substr(0, end);
    if (CreateDirectoryW(part.c_str(), nullptr) == 0 && GetLastError() != ERROR_ALREADY_EXISTS) {
      // On a read-only or foreign file system the upper folders may be there and still refuse.
      const DWORD error = GetLastError();
      if (GetFileAttributesW(part.c_str()) == INVALID_FILE_ATTRIBUTES)
        return Cannot("create folder", path, SystemErrorText(error));
    }
    if (end == std::wstring::npos) break;
  }
  const DWORD attributes = GetFileAttributesW(name.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return Cannot("create folder", path, LastError());
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    return Cannot("create folder", path, "there is a file of that name");
  return {};
}

Result<std::vector<std::string>> WinFiles::List(const std::string& folder) {
  std::wstring pattern = SystemPath(folder.empty() ? "." : folder);
  if (pattern.empty()) return Cannot("list", folder, SystemErrorText(ERROR_INVALID_NAME));
  pattern += pattern.back() == L'\\' ? L"*" : L"\\*";
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                         nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (search == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND) return std::vector<std::string>();
    const auto info = InfoOfPath(folder);
    return Cannot("list", folder, info && !info->isFolder ? "it is not a folder" : SystemErrorText(error));
  }
  const std::unique_ptr<void, decltype(&FindClose)> open(search, FindClose);
  std::vector<std::string> names;
  do {
    std::string name = Narrow(found.cFileName);
    if (name == "." || name == "..") continue;
    if (names.size() == kMaxNamesInFolder)
      return Cannot("list", folder, "it holds more than " + std::to_string(kMaxNamesInFolder) + " files");
    names.push_back(std::move(name));
  } while (FindNextFileW(search, &found) != 0);
  if (GetLastError() != ERROR_NO_MORE_FILES) return Cannot("list", folder, LastError());
  std::sort(names.begin(), names.end());
  return names;
}

Result<std::string> WinFiles::MakeTempFile(const std::string& prefix) {
  constexpr int kTries = 16;
  for (int left = kTries;; --left) {
    std::string path = tempFolder_ + prefix + owner_ + RandomLetters();
    const WinHandle file = OpenFileSharing(path, GENERIC_WRITE, CREATE_NEW);
    if (file.IsOpen()) return path;
    if (GetLastError() != ERROR_FILE_EXISTS || left == 0)
      return Cannot("create a temporary file in", tempFolder_, LastError());
  }
}

std::size_t WinFiles::DeleteLeftTempFiles(const std::string& prefix) {
  if (owner_.empty()) return 0;
  const std::string start = prefix + owner_;
  const Result<std::vector<std::string>> names = List(tempFolder_);
  if (!names) return 0;
  const auto isLeft = [&](const std::string& name) {
    if (name.size() != start.size() + kRandomLetters || !name.starts_with(start)) return false;
    const auto info = InfoOfPath(tempFolder_ + name);
    return info && info->isRegular && info->changed < startedAt_;
  };
  return static_cast<std::size_t>(
      std::count_if(names.Value().begin(), names.Value().end(), [&](const std::string& name) {
        return isLeft(name) && DeleteFileW(SystemPath(tempFolder_ + name).c_str()) != 0;
      }));
}

}  // namespace zeb
