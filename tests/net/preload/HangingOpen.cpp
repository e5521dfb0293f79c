// Loaded in front of the C library: opening, looking at or renaming a file below $ZEB_HANG_BELOW does not
// return for as long as the file $ZEB_HANG_WHILE is there, as on a share whose server is gone.

#include <dlfcn.h>
#include <fcntl.h>
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

void HangBelow(const char* path) {
  const char* below = std::getenv("ZEB_HANG_BELOW");
  const char* whileThere = std::getenv("ZEB_HANG_WHILE");
  if (!path || !below || !whileThere || std::strncmp(path, below, std::strlen(below)) != 0) return;
  while (access(whileThere, F_OK) == 0) usleep(10'000);
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
  return Real<int(const char*, int, mode_t)>("open")(path, flags, mode);
}

extern "C" int stat(const char* path, struct stat* status) noexcept {
  HangBelow(path);
  return Real<int(const char*, struct stat*)>("stat")(path, status);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  HangBelow(to);
  return Real<int(const char*, const char*)>("rename")(from, to);
}
