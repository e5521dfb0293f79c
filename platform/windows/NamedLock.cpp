#include "platform/windows/NamedLock.h"

// clang-format off
#include <windows.h>
#include <sddl.h>
// clang-format on

#include <algorithm>

#include "platform/SettingsHive.h"
#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

// Waiting for it and letting it go; what a lock made by a service would else refuse to the people.
constexpr wchar_t kRights[] = L"D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;0x00100001;;;AU)";
constexpr DWORD kRightsNeeded = SYNCHRONIZE | MUTEX_MODIFY_STATE;

// Not "Local\", when this is refused: two sessions would then each have a lock of their own.
std::wstring GlobalName(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return L"Global\\" + Wide(name);
}

}  // namespace

NamedLock::NamedLock(const std::string& name) {
  SECURITY_ATTRIBUTES security{sizeof security, nullptr, FALSE};
  ConvertStringSecurityDescriptorToSecurityDescriptorW(kRights, SDDL_REVISION_1,
                                                       &security.lpSecurityDescriptor, nullptr);
  mutex_ = CreateMutexExW(&security, GlobalName(name).c_str(), 0, kRightsNeeded);
  const DWORD error = GetLastError();
  LocalFree(security.lpSecurityDescriptor);
  if (mutex_ == nullptr)
    throw SettingsError("cannot share '" + name + "' with other programs: " + SystemErrorText(error));
}

NamedLock::~NamedLock() {
  CloseHandle(mutex_);
}

bool NamedLock::Take(std::chrono::milliseconds patience) {
  const DWORD taken = WaitForSingleObject(mutex_, static_cast<DWORD>(patience.count()));
  return taken == WAIT_OBJECT_0 || taken == WAIT_ABANDONED;
}

void NamedLock::LetGo() {
  ReleaseMutex(mutex_);
}

}  // namespace zeb
