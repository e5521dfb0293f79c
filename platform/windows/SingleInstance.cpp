#include "platform/system/SingleInstance.h"

#include "platform/windows/SystemError.h"
#include "platform/windows/WinHandle.h"
#include "text/Paths.h"

namespace zeb {

Result<std::unique_ptr<SingleInstance>> SingleInstance::Claim(const std::string& folder) {
  const std::string path = JoinPath(folder, "zeb.lock");
  // Shared with nobody: a second one cannot even be opened.
  const HANDLE file = CreateFileW(SystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file != INVALID_HANDLE_VALUE)
    return std::unique_ptr<SingleInstance>(new SingleInstance(reinterpret_cast<std::intptr_t>(file)));
  const DWORD error = GetLastError();
  if (error == ERROR_SHARING_VIOLATION) return std::unique_ptr<SingleInstance>();
  return Failure{"cannot open lock file '" + path + "': " + SystemErrorText(error)};
}

SingleInstance::~SingleInstance() {
  CloseHandle(reinterpret_cast<HANDLE>(file_));
}

}  // namespace zeb
