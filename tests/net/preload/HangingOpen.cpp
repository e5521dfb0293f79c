// Loaded in front of the C library: opening, looking at or putting in place a file below $ZEB_HANG_BELOW does
// not return for as long as somebody else has the lock on $ZEB_HANG_LOCK, as on a share whose server is gone.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace {

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

using OpenFunction = int(const char*, int, mode_t);

void HangBelow(const char* path) {
  const char* below = std::getenv("ZEB_HANG_BELOW");
  const char* lock = std::getenv("ZEB_HANG_LOCK");
  if (!path || !below || !lock || std::strncmp(path, below, std::strlen(below)) != 0) return;
  const int file = Real<OpenFunction>("open")(lock, O_RDONLY | O_CLOEXEC, 0);
  if (file < 0) return;
  flock(file, LOCK_SH);
  close(file);
}

}  // namespace

extern "C" int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list more;
    va_start(more, flags);
    mode = va_arg(more, mode_t);
    va_end(more);
  }
  HangBelow(path);
  return Real<OpenFunction>("open")(path, flags, mode);
}

extern "C" int openat(int folder, const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    va_list more;
    va_start(more, flags);
    mode = va_arg(more, mode_t);
    va_end(more);
  }
  HangBelow(path);
  return Real<int(int, const char*, int, mode_t)>("openat")(folder, path, flags, mode);
}

extern "C" int stat(const char* path, struct stat* status) noexcept {
  HangBelow(path);
  return Real<int(const char*, struct stat*)>("stat")(path, status);
}

extern "C" int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  HangBelow(path);
  return Real<int(int, const char*, struct stat*, int)>("fstatat")(folder, path, status, flags);
}

extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                         unsigned flags) noexcept {
  HangBelow(to);
  return Real<int(int, const char*, int, const char*, unsigned)>("renameat2")(fromFolder, from, toFolder, to,
                                                                              flags);
}
