#include "platform/posix/PosixFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <utility>

namespace zeb {
namespace {

constexpr const char* kNotRegular = "it is not a regular file";
// Far above any folder that pages are published to; a runaway one must not fill the memory.
constexpr std::size_t kMaxNamesInFolder = 1'000'000;

std::string ErrorText(int error) {
  return std::generic_category().message(error);
}

Failure Cannot(const std::string& verb, const std::string& path, const std::string& why) {
  return {"cannot " + verb + " '" + path + "': " + why};
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }
  // A share may tell only now that the disk is full.
  bool Close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

// A name with a NUL inside would reach the system cut short, as another file's.
bool HasNul(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

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

std::int64_t Nanoseconds(const timespec& moment) {
  return static_cast<std::int64_t>(moment.tv_sec) * 1'000'000'000 + moment.tv_nsec;
}

// Why the open file cannot be used; "" when it is a regular one.
std::string WhyNotRegular(const Descriptor& file, struct stat& status) {
  if (::fstat(file.Number(), &status) != 0) return ErrorText(errno);
  return S_ISREG(status.st_mode) ? std::string() : kNotRegular;
}

ssize_t ReadSome(const Descriptor& file, char* to, std::size_t size) {
  ssize_t got = 0;
  do got = ::read(file.Number(), to, size);
  while (got < 0 && errno == EINTR);
  return got;
}

bool WriteAll(const Descriptor& file, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t written = ::write(file.Number(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// At most the size that the source had when it was opened, so that a growing file is not followed for ever.
bool CopyContents(const Descriptor& from, const Descriptor& to, std::uint64_t size) {
  std::string buffer(static_cast<std::size_t>(std::min<std::uint64_t>(size, 256 * 1024)), '\0');
  while (size > 0) {
    ssize_t got =
        ReadSome(from, buffer.data(), static_cast<std::size_t>(std::min<std::uint64_t>(size, buffer.size())));
    if (got < 0) return false;
    if (got == 0) break;
    if (!WriteAll(to, std::string_view(buffer).substr(0, static_cast<std::size_t>(got)))) return false;
    size -= static_cast<std::uint64_t>(got);
  }
  return true;
}

class Reader : public FileReader {
 public:
  Reader(std::string path, int number) : path_(std::move(path)), file_(number) {}

  // Why it cannot be read; "" when it can.
  std::string Begin() {
    if (!file_.IsOpen()) return ErrorText(errno);
    struct stat status = {};
    std::string why = WhyNotRegular(file_, status);
    size_ = static_cast<std::uint64_t>(status.st_size);
    return why;
  }
  std::uint64_t Size() const override { return size_; }
  Result<std::size_t> Read(char* to, std::size_t most) override {
    const ssize_t got = ReadSome(file_, to, most);
    if (got < 0) return Cannot("read", path_, ErrorText(errno));
    return static_cast<std::size_t>(got);
  }

 private:
  const std::string path_;
  Descriptor file_;
  std::uint64_t size_ = 0;
};

// What people set on a published file outlives its replacement. Not being allowed to is no failure.
void TakeOverModeAndOwner(const std::string& from, const std::string& to) {
  struct stat old = {}, fresh = {};
  if (::stat(to.c_str(), &old) != 0 || !S_ISREG(old.st_mode) || ::stat(from.c_str(), &fresh) != 0) return;
  if (old.st_uid != fresh.st_uid || old.st_gid != fresh.st_gid)
    static_cast<void>(!::chown(from.c_str(), old.st_uid, old.st_gid));
  constexpr mode_t kPermissions = 0777;
  if ((old.st_mode & kPermissions) != (fresh.st_mode & kPermissions))
    ::chmod(from.c_str(), old.st_mode & kPermissions);
}

std::string TempFolder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

}  // namespace

PosixFiles::PosixFiles() : tempFolder_(TempFolder()) {}

std::optional<FileInfo> PosixFiles::Stat(const std::string& path) {
  struct stat status = {};
  if (!StatOf(path, status)) return std::nullopt;
  FileInfo info;
  info.size = static_cast<std::uint64_t>(status.st_size);
  info.modified = Nanoseconds(status.st_mtim);
  info.changed = Nanoseconds(status.st_ctim);
  info.device = status.st_dev;
  info.inode = status.st_ino;
  info.seen = std::chrono::steady_clock::now().time_since_epoch();
  info.isFolder = S_ISDIR(status.st_mode);
  info.isRegular = S_ISREG(status.st_mode);
  return info;
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

Outcome PosixFiles::Rename(const std::string& from, const std::string& to) {
  std::string verb = "rename '" + from + "' to";
  if (HasNul(from) || HasNul(to)) return Cannot(verb, to, ErrorText(EINVAL));
  TakeOverModeAndOwner(from, to);
  if (::rename(from.c_str(), to.c_str()) == 0) return {};
  return Cannot(verb, to, ErrorText(errno));
}

Outcome PosixFiles::Copy(const std::string& from, const std::string& to) {
  std::string verb = "copy '" + from + "' to";
  Descriptor source(Open(from, O_RDONLY));
  if (!source.IsOpen()) return Cannot(verb, to, ErrorText(errno));
  struct stat status = {};
  if (std::string why = WhyNotRegular(source, status); !why.empty()) return Cannot(verb, to, why);
  struct stat present = {};
  if (StatOf(to, present) && present.st_dev == status.st_dev && present.st_ino == status.st_ino)
    return Cannot(verb, to, "they are the same file");
  if (Outcome deleted = Delete(to); !deleted) return Cannot(verb, to, deleted.Reason());

  // Exclusive: a link that somebody puts there meanwhile must not be followed.
  Descriptor target(Open(to, O_WRONLY | O_CREAT | O_EXCL));
  if (!target.IsOpen()) return Cannot(verb, to, ErrorText(errno));
  const timespec times[2] = {status.st_atim, status.st_mtim};
  if (CopyContents(source, target, static_cast<std::uint64_t>(status.st_size))) {
    // Some shares refuse to set times; the contents are what matters.
    static_cast<void>(::futimens(target.Number(), times));
    if (target.Close()) return {};
  }
  int error = errno;
  ::unlink(to.c_str());
  return Cannot(verb, to, ErrorText(error));
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
  std::string path = tempFolder_ + "/" + prefix + "XXXXXX";
  Descriptor file(HasNul(path) ? -1 : ::mkostemp(path.data(), O_CLOEXEC));
  if (!file.IsOpen()) return Cannot("create a temporary file in", tempFolder_, ErrorText(errno));
  return path;
}

}  // namespace zeb
