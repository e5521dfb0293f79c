#include "platform/posix/PosixTarget.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/posix/OpenFile.h"

namespace zeb {
namespace {

using Status = struct stat;

constexpr mode_t kPermissions = 0777;
constexpr mode_t kNewFile = 0644;
constexpr mode_t kPrivateFile = 0600;
// Somebody who plants work files all the time can keep a page from being written, not have it written
// through.
constexpr int kTries = 3;
constexpr std::size_t kCopyBlock = 256u * 1024;

#ifdef O_PATH
constexpr int kFolder = O_PATH | O_DIRECTORY | O_CLOEXEC;
#else
constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif

constexpr const char* kChooseFile = "; choose the name of a file";

// What it is instead of a regular file; "" when it is one.
std::string WhyUnfit(const Status& status) {
  if (S_ISREG(status.st_mode)) return {};
  if (S_ISDIR(status.st_mode)) return "a folder";
  return S_ISLNK(status.st_mode) ? "a link" : "a pipe, a socket or a device";
}

bool IsSame(const Status& one, const Status& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Where a file is, or is to be: by its whole path, or by its name in a folder that is held open.
struct Place {
  Descriptor folder;
  std::string name;
  std::string path;  // for people

  int Folder() const { return folder.IsOpen() ? folder.Number() : AT_FDCWD; }
  std::optional<Status> Look(const std::string& which) const {
    Status status = {};
    if (::fstatat(Folder(), which.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    return status;
  }
};

// The file in the making; removed unless it was published.
class WorkFile {
 public:
  explicit WorkFile(const Place& place) : place_(place), name_(WorkName(place.name)) {}
  ~WorkFile() {
    if (made_) ::unlinkat(place_.Folder(), name_.c_str(), 0);
  }
  WorkFile(const WorkFile&) = delete;
  WorkFile& operator=(const WorkFile&) = delete;

  // Why not; "" when it is there, open and empty.
  std::string Make(mode_t mode) {
    for (int i = 0; i < kTries; ++i) {
      file = Descriptor(::openat(place_.Folder(), name_.c_str(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY, mode));
      made_ = file.IsOpen();
      if (made_) return {};
      if (errno != EEXIST) return ErrorText(errno);
      if (::unlinkat(place_.Folder(), name_.c_str(), 0) != 0 && errno != ENOENT)
        return "'" + WorkName(place_.path) + "' is in the way and cannot be removed: " + ErrorText(errno);
    }
    return "somebody makes '" + WorkName(place_.path) + "' again and again";
  }

  // Where two names can be exchanged and `exchanges` is set, that is done, and the old file removed: a rename
  // over a file makes ext4 write the new one to the disk first. Where they cannot, whatever the reason, a
  // rename does or says why.
  bool Publish(bool exchanges) {
    const char* to = place_.name.c_str();
#ifdef RENAME_EXCHANGE
    if (exchanges && ::renameat2(place_.Folder(), name_.c_str(), place_.Folder(), to, RENAME_EXCHANGE) == 0) {
      made_ = false;
      ::unlinkat(place_.Folder(), name_.c_str(), 0);
      return true;
    }
#else
    static_cast<void>(exchanges);
#endif
    if (::renameat(place_.Folder(), name_.c_str(), place_.Folder(), to) != 0) return false;
    made_ = false;
    return true;
  }

  Descriptor file;

 private:
  const Place& place_;
  const std::string name_;
  bool made_ = false;
};

// Whether an open file is on a file system without a disk, where a rename over a file is as quick as any.
// Asked once for a device, as long as a thread does not turn to another.
bool IsInMemory([[maybe_unused]] const Descriptor& file, [[maybe_unused]] dev_t device) {
#ifdef RENAME_EXCHANGE
  thread_local std::optional<dev_t> asked;
  thread_local bool inMemory = false;
  if (asked == device) return inMemory;
  struct statfs system = {};
  inMemory = ::fstatfs(file.Number(), &system) == 0 &&
             (system.f_type == TMPFS_MAGIC || system.f_type == RAMFS_MAGIC);
  asked = device;
  return inMemory;
#else
  return false;
#endif
}

// What people set on a published file outlives its replacement. Not being allowed to is no failure; a group
// that this user is in can be kept even when the owner cannot.
void TakeOverModeAndOwner(const Status& old, const Descriptor& file) {
  Status fresh = {};
  if (::fstat(file.Number(), &fresh) != 0) return;
  if ((old.st_uid != fresh.st_uid || old.st_gid != fresh.st_gid) &&
      ::fchown(file.Number(), old.st_uid, old.st_gid) != 0 && old.st_gid != fresh.st_gid)
    static_cast<void>(!::fchown(file.Number(), static_cast<uid_t>(-1), old.st_gid));
  if ((old.st_mode & kPermissions) != (fresh.st_mode & kPermissions))
    ::fchmod(file.Number(), old.st_mode & kPermissions);
}

class PosixTarget : public FileTarget {
 public:
  PosixTarget(Place place, const std::optional<Status>& old, std::int64_t startedAt)
      : place_(std::move(place)), old_(old), startedAt_(startedAt) {}

  const std::string& Path() const override { return place_.path; }

  Outcome Replace(std::string_view bytes) override {
    return Put("write", [&](const Descriptor& file) {
      return WriteAll(file, bytes) ? std::string() : ErrorText(errno);
    });
  }

  Outcome ReplacePrivately(std::string_view bytes) override {
    const auto fill = [&](const Descriptor& file) {
      return WriteAll(file, bytes) ? std::string() : ErrorText(errno);
    };
    return Put("write", fill, kPrivateFile);
  }

  Outcome ReplaceByCopy(FileReader& source, std::int64_t modified) override {
    return Put("copy a file to", [&](const Descriptor& file) {
      std::string why = CopyContents(source, file);
      timespec times[2] = {};
      times[0].tv_nsec = UTIME_OMIT;
      times[1].tv_sec = static_cast<time_t>(modified / 1'000'000'000);
      times[1].tv_nsec = static_cast<long>(modified % 1'000'000'000);
      // Some shares refuse to set times; the contents are what matters.
      if (why.empty()) static_cast<void>(::futimens(file.Number(), times));
      return why;
    });
  }

  bool RemoveLeftOver() override {
    const std::string name = WorkName(place_.name);
    const std::optional<Status> left = place_.Look(name);
    return left && S_ISREG(left->st_mode) && Nanoseconds(left->st_ctim) < startedAt_ &&
           (left->st_uid == ::geteuid() || (old_ && left->st_uid == old_->st_uid)) &&
           ::unlinkat(place_.Folder(), name.c_str(), 0) == 0;
  }

 private:
  // `fill` gives the reason when it fails. Without `mode` the file is as the old one was.
  template <class Fill>
  Outcome Put(const std::string& verb, const Fill& fill, std::optional<mode_t> mode = {}) {
    WorkFile work(place_);
    const mode_t usual = old_ ? old_->st_mode & kPermissions : kNewFile;
    if (std::string why = work.Make(mode.value_or(usual)); !why.empty())
      return Cannot(verb, place_.path, why);
    if (old_ && !mode) TakeOverModeAndOwner(*old_, work.file);
    if (std::string why = fill(work.file); !why.empty()) return Cannot(verb, place_.path, why);
    const bool exchanges = old_ && !IsInMemory(work.file, old_->st_dev);
    if (!work.file.Close() || !work.Publish(exchanges)) return Cannot(verb, place_.path, ErrorText(errno));
    return {};
  }

  // A growing file is not followed for ever.
  static std::string CopyContents(FileReader& source, const Descriptor& file) {
    std::uint64_t left = source.Size();
    std::string block(static_cast<std::size_t>(std::min<std::uint64_t>(left, kCopyBlock)), '\0');
    while (left > 0) {
      const Result<std::size_t> got =
          source.Read(block.data(), static_cast<std::size_t>(std::min<std::uint64_t>(left, block.size())));
      if (!got) return got.Reason();
      if (got.Value() == 0) break;
      if (!WriteAll(file, std::string_view(block).substr(0, got.Value()))) return ErrorText(errno);
      left -= got.Value();
    }
    return {};
  }

  const Place place_;
  const std::optional<Status> old_;
  const std::int64_t startedAt_;
};

// ---- Links

// "" when it cannot be read, or is longer than any path.
std::string LinkText(const std::string& path) {
  char text[PATH_MAX];
  const ssize_t length = ::readlink(path.c_str(), text, sizeof text);
  return length <= 0 || length == sizeof text ? std::string()
                                              : std::string(text, static_cast<std::size_t>(length));
}

// The folder of a path, with its separator; "./" when it names none.
std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

bool MayBeFollowed(const std::string& path, const Status& link) {
  if (link.st_uid == ::geteuid() || link.st_uid == 0) return true;
  Status folder = {};
  return ::stat(FolderOf(path).c_str(), &folder) == 0 && link.st_uid == folder.st_uid;
}

// Told by what the folders are and not by their names, so that no link on the way hides one. Yes when in
// doubt.
bool IsWithin(const Descriptor& folder, const std::string& top) {
  if (top.empty()) return false;
  Status wanted = {}, here = {}, above = {};
  if (::stat(top.c_str(), &wanted) != 0 || ::fstat(folder.Number(), &here) != 0) return true;
  Descriptor up;
  while (!IsSame(here, wanted)) {
    up = Descriptor(::openat(up.IsOpen() ? up.Number() : folder.Number(), "..", kFolder));
    if (!up.IsOpen() || ::fstat(up.Number(), &above) != 0) return true;
    if (IsSame(above, here)) return false;  // the root
    here = above;
  }
  return true;
}

// The place that the text of a link at `path` leads to; its folder is open when it can be.
Place PlaceBehind(const std::string& path, const std::string& text) {
  const std::string to = text.front() == '/' ? text : FolderOf(path) + text;
  const std::string folder = FolderOf(to);
  Place place;
  place.name = to.substr(to.rfind('/') + 1);
  place.path = to;
  if (char* real = ::realpath(folder.c_str(), nullptr)) {
    place.path = std::string(real) + (real[1] == '\0' ? "" : "/") + place.name;
    place.folder = Descriptor(::open(real, kFolder));
    const int error = errno;
    std::free(real);
    errno = error;
  }
  return place;
}

// Why a link that leads there is not followed; "" when it is.
std::string WhyNotThere(const Place& place, const std::optional<Status>& there, const LinkRules& rules) {
  if (place.name.empty() || place.name == "." || place.name == "..") return "a folder";
  if (there)
    if (std::string what = WhyUnfit(*there); !what.empty()) return what;
  if (IsWithin(place.folder, rules.notBelow)) return "ZEB's data folder";
  Status kept = {};
  if (there && !rules.notFile.empty() && ::stat(rules.notFile.c_str(), &kept) == 0 && IsSame(*there, kept))
    return "the template itself";
  return {};
}

Result<std::unique_ptr<FileTarget>> FollowLink(const std::string& path, const Status& link,
                                               const LinkRules& rules, std::int64_t startedAt) {
  if (!MayBeFollowed(path, link))
    return Cannot("write", path,
                  "it is a link that belongs to another user (number " + std::to_string(link.st_uid) +
                      "); let ZEB's user or the folder's owner make the link");
  const std::string text = LinkText(path);
  if (text.empty()) return Cannot("write", path, "it is a link that cannot be read; make it anew");
  Place place = PlaceBehind(path, text);
  const std::string leads = "it is a link to '" + text + "'";
  if (!place.folder.IsOpen())
    return Cannot("write", path,
                  leads + ", whose folder cannot be opened (" + ErrorText(errno) +
                      "); check that the disk or share is there");
  std::optional<Status> there = place.Look(place.name);
  if (const std::string what = WhyNotThere(place, there, rules); !what.empty())
    return Cannot("write", path, leads + ", and that is " + what + "; let it lead to another file");
  return std::unique_ptr<FileTarget>(std::make_unique<PosixTarget>(std::move(place), there, startedAt));
}

}  // namespace

Result<std::unique_ptr<FileTarget>> FindPosixTarget(const std::string& path, const LinkRules& rules,
                                                    std::int64_t startedAt) {
  if (path.empty() || HasNul(path)) return Cannot("write", path, ErrorText(EINVAL) + kChooseFile);
  Place place;
  place.name = place.path = path;
  std::optional<Status> there = place.Look(path);
  if (there && S_ISLNK(there->st_mode)) {
    if (rules.follow) return FollowLink(path, *there, rules, startedAt);
    there.reset();  // a plain rename replaces it
  }
  if (there)
    if (const std::string what = WhyUnfit(*there); !what.empty())
      return Cannot("write", path, "it is " + what + kChooseFile);
  return std::unique_ptr<FileTarget>(std::make_unique<PosixTarget>(std::move(place), there, startedAt));
}

}  // namespace zeb
