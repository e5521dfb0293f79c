#include "platform/posix/PosixFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <utility>

#include "platform/posix/OpenFile.h"
#include "platform/posix/PosixTarget.h"

namespace zeb {
namespace {

constexpr const char* kNotRegular = "it is not a regular file";
// Far above any folder that pages are published to; a runaway one must not fill the memory.
constexpr std::size_t kMaxNamesInFolder = 1'000'000;

// O_NONBLOCK: opening a pipe whose other end nobody holds returns at once. It means nothing to regular files.
int Open(const std::string& path, int flags, mode_t mode = 0644) {
  if (HasNul(path)) {
    errno = EINVAL;
    return -1;
  }
  int number = -1;
  do number = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
  while (number < 0 && errno == EINTR);
  return number;
}

bool StatOf(const std::string& path, struct stat& status) {
  return !HasNul(path) && ::stat(path.c_str(), &status) == 0;
}

// Why the open file cannot be used; "" when it is a regular one.
std::string WhyNotRegular(const Descriptor& file, struct stat& status) {
  if (::fstat(file.Number(), &status) != 0) return ErrorText(errno);
  return S_ISREG(status.st_mode) ? std::string() : kNotRegular;
}

FileInfo InfoOf(const struct stat& status) {
  FileInfo info;
  info.size = static_cast<std::uint64_t>(status.st_size);
  info.modified = Nanoseconds(status.st_mtim);
  info.changed = Nanoseconds(status.st_ctim);
  info.device = status.st_dev;
  info.inode = status.st_ino;
  info.seen = std::chrono::steady_clock::now().time_since_epoch();
  info.isFolder = S_ISDIR(status.st_mode);
  info.isRegular = S_ISREG(status.st_mode);
  info.openToAll = (status.st_mode & static_cast<mode_t>(info.isFolder ? S_IXOTH : S_IROTH)) != 0;
  return info;
}

Result<std::string> RealPathOf(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(
      HasNul(path) ? nullptr : ::realpath(path.c_str(), nullptr), std::free);
  if (!real) return Cannot("find", path, ErrorText(HasNul(path) ? EINVAL : errno));
  return std::string(real.get());
}

class Reader : public FileReader {
 public:
  Reader(std::string path, int number) : path_(std::move(path)), file_(number) {}

  // Why it cannot be read; "" when it can.
  std::string Begin() {
    if (!file_.IsOpen()) return ErrorText(errno);
    struct stat status = {};
    std::string why = WhyNotRegular(file_, status);
    device_ = status.st_dev;
    inode_ = status.st_ino;
    info_ = InfoOf(status);
    return why;
  }
  std::uint64_t Size() const override { return info_.size; }
  FileInfo Info() const override { return info_; }
  // The kernel knows where the open file lies; a system without /proc finds it by its name again.
  Result<std::string> RealPath() const override {
    for (const std::string& name : {"/proc/self/fd/" + std::to_string(file_.Number()), path_}) {
      Result<std::string> real = RealPathOf(name);
      struct stat status = {};
      if (real && StatOf(real.Value(), status) && status.st_dev == device_ && status.st_ino == inode_)
        return real;
    }
    return Cannot("find", path_, "it was moved or deleted meanwhile");
  }
  Result<std::size_t> Read(char* to, std::size_t most) override {
    const ssize_t got = ReadSome(file_, to, most);
    if (got < 0) return Cannot("read", path_, ErrorText(errno));
    return static_cast<std::size_t>(got);
  }
  Outcome Rewind() override {
    if (::lseek(file_.Number(), 0, SEEK_SET) == 0) return {};
    return Cannot("read", path_, ErrorText(errno));
  }

 private:
  const std::string path_;
  Descriptor file_;
  FileInfo info_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

std::string TempFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
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

// This moment by the clock that the system stamps files with.
std::int64_t FileTime() {
  timespec now = {};
#ifdef CLOCK_REALTIME_COARSE
  ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
#else
  ::clock_gettime(CLOCK_REALTIME, &now);
#endif
  return Nanoseconds(now);
}

constexpr std::string_view kRandomPart = "XXXXXX";

}  // namespace

PosixFiles::PosixFiles(const std::string& dataFolder)
    : tempFolder_(TempFolder()), owner_(OwnerMark(dataFolder)), startedAt_(FileTime()) {}

std::optional<FileInfo> PosixFiles::Stat(const std::string& path) {
  struct stat status = {};
  if (!StatOf(path, status)) return std::nullopt;
  return InfoOf(status);
}

Result<std::string> PosixFiles::RealPath(const std::string& path) {
  return RealPathOf(path);
}

Result<std::string> PosixFiles::Read(const std::string& path, std::uint64_t limit) {
  Descriptor file(Open(path, O_RDONLY));
  if (!file.IsOpen()) return Cannot("read", path, ErrorText(errno));
  struct stat status = {};
  if (std::string why = WhyNotRegular(file, status); !why.empty()) return Cannot("read", path, why);

  // The size is only a hint: the file may grow or shrink meanwhile.
  auto size = static_cast<std::uint64_t>(status.st_size);
  std::string bytes;
  std::size_t length = 0;
  if (size <= limit) bytes.resize(static_cast<std::size_t>(size) + 1);
  while (size <= limit) {
    if (length == bytes.size()) bytes.resize(bytes.size() * 2);
    ssize_t got = ReadSome(file, bytes.data() + length, bytes.size() - length);
    if (got < 0) return Cannot("read", path, ErrorText(errno));
    if (got == 0) break;
    length += static_cast<std::size_t>(got);
    size = std::max<std::uint64_t>(size, length);
  }
  if (size > limit) return Cannot("read", path, "it is larger than " + std::to_string(limit) + " bytes");
  bytes.resize(length);
  return bytes;
}

Result<std::unique_ptr<FileReader>> PosixFiles::OpenForReading(const std::string& path) {
  auto reader = std::make_unique<Reader>(path, Open(path, O_RDONLY));
  if (std::string why = reader->Begin(); !why.empty()) return Cannot("read", path, why);
  return std::unique_ptr<FileReader>(std::move(reader));
}

Outcome PosixFiles::Write(const std::string& path, std::string_view bytes) {
  // Emptied only once it is known to be a regular file.
  Descriptor file(Open(path, O_WRONLY | O_CREAT));
  if (!file.IsOpen()) return Cannot("write", path, ErrorText(errno));
  struct stat status = {};
  if (std::string why = WhyNotRegular(file, status); !why.empty()) return Cannot("write", path, why);
  if ((status.st_size == 0 || ::ftruncate(file.Number(), 0) == 0) && WriteAll(file, bytes) && file.Close())
    return {};
  int error = errno;
  ::unlink(path.c_str());
  return Cannot("write", path, ErrorText(error));
}

Outcome PosixFiles::Append(const std::string& path, std::string_view bytes) {
  Descriptor file(Open(path, O_WRONLY | O_CREAT | O_APPEND));
  if (!file.IsOpen()) return Cannot("write", path, ErrorText(errno));
  struct stat status = {};
  if (std::string why = WhyNotRegular(file, status); !why.empty()) return Cannot("write", path, why);
  if (WriteAll(file, bytes) && file.Close()) return {};
  return Cannot("write", path, ErrorText(errno));
}

Outcome PosixFiles::Delete(const std::string& path) {
  if (HasNul(path)) return Cannot("delete", path, ErrorText(EINVAL));
  if (path.empty() || ::unlink(path.c_str()) == 0 || errno == ENOENT) return {};
  return Cannot("delete", path, ErrorText(errno));
}

Result<std::unique_ptr<FileTarget>> PosixFiles::FindTarget(const std::string& path, const LinkRules& rules) {
  return FindPosixTarget(path, rules, startedAt_);
}

Outcome PosixFiles::CreateFolders(const std::string& path) {
  if (HasNul(path)) return Cannot("create folder", path, ErrorText(EINVAL));
  std::size_t end = 0;
  while (end != std::string::npos) {
    end = path.find('/', end + 1);
    std::string part = path.substr(0, end);
    if (::mkdir(part.c_str(), 0755) == 0 || errno == EEXIST) continue;
    // On a read-only or foreign file system the upper folders may be there and still refuse.
    int error = errno;
    struct stat status = {};
    if (!StatOf(part, status)) return Cannot("create folder", path, ErrorText(error));
  }
  struct stat status = {};
  if (!StatOf(path, status)) return Cannot("create folder", path, ErrorText(errno));
  if (!S_ISDIR(status.st_mode)) return Cannot("create folder", path, ErrorText(ENOTDIR));
  return {};
}

Result<std::vector<std::string>> PosixFiles::List(const std::string& folder) {
  if (HasNul(folder)) return Cannot("list", folder, ErrorText(EINVAL));
  std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder.c_str()), ::closedir);
  if (!open) return Cannot("list", folder, ErrorText(errno));
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = ::readdir(open.get())) {
    std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    if (names.size() == kMaxNamesInFolder)
      return Cannot("list", folder, "it holds more than " + std::to_string(kMaxNamesInFolder) + " files");
    names.push_back(std::move(name));
    errno = 0;
  }
  if (errno != 0) return Cannot("list", folder, ErrorText(errno));
  std::sort(names.begin(), names.end());
  return names;
}

Result<std::string> PosixFiles::MakeTempFile(const std::string& prefix) {
  std::string path = tempFolder_ + "/" + prefix + owner_ + std::string(kRandomPart);
  Descriptor file(HasNul(path) ? -1 : ::mkostemp(path.data(), O_CLOEXEC));
  if (!file.IsOpen()) return Cannot("create a temporary file in", tempFolder_, ErrorText(errno));
  return path;
}

std::size_t PosixFiles::DeleteLeftTempFiles(const std::string& prefix) {
  if (owner_.empty()) return 0;
  const std::string start = prefix + owner_;
  const Result<std::vector<std::string>> names = List(tempFolder_);
  if (!names) return 0;
  const auto isLeft = [&](const std::string& name) {
    struct stat status = {};
    return name.size() == start.size() + kRandomPart.size() && name.compare(0, start.size(), start) == 0 &&
           ::lstat((tempFolder_ + "/" + name).c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           status.st_uid == ::geteuid() && Nanoseconds(status.st_ctim) < startedAt_;
  };
  return static_cast<std::size_t>(
      std::count_if(names.Value().begin(), names.Value().end(), [&](const std::string& name) {
        return isLeft(name) && ::unlink((tempFolder_ + "/" + name).c_str()) == 0;
      }));
}

}  // namespace zeb
