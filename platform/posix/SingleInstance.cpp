#include "platform/system/SingleInstance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/posix/SettingsFile.h"
#include "text/Paths.h"

namespace zeb {

Result<std::unique_ptr<SingleInstance>> SingleInstance::Claim(const std::string& folder) {
  const std::string path = JoinPath(folder, "zeb.lock");
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (file < 0) return Failure{"cannot open lock file '" + path + "': " + SystemReason(errno)};
  std::unique_ptr<SingleInstance> claim(new SingleInstance(file));
  int locked = 0;
  do locked = ::flock(file, LOCK_EX | LOCK_NB);
  while (locked != 0 && errno == EINTR);
  if (locked == 0) {
    // An administrator's start by hand must not lock the service's own account out of the file.
    struct stat owner {};
    if (::geteuid() == 0 && ::stat(folder.c_str(), &owner) == 0)
      (void)(::fchown(file, owner.st_uid, owner.st_gid) == 0);
    return claim;
  }
  if (errno == EWOULDBLOCK) return std::unique_ptr<SingleInstance>();
  return Failure{"cannot lock '" + path + "': " + SystemReason(errno)};
}

SingleInstance::~SingleInstance() {
  ::close(static_cast<int>(file_));
}

}  // namespace zeb
