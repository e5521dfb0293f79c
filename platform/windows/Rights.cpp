#include "platform/windows/Rights.h"

#include <windows.h>
// After windows.h.
#include <aclapi.h>

#include <array>
#include <memory>
#include <string>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr wchar_t kKey[] = L"Software\\Hexmoor";
constexpr wchar_t kKeyForRights[] = L"MACHINE\\Software\\Hexmoor";
constexpr DWORD kHandedDown = CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE;

// All but taking the key or folder over.
constexpr DWORD kChangeKey = KEY_READ | KEY_WRITE | DELETE;
constexpr DWORD kChangeFiles =
    FILE_GENERIC_READ | FILE_GENERIC_WRITE | FILE_GENERIC_EXECUTE | FILE_DELETE_CHILD | DELETE;

struct Freed {
  void operator()(void* memory) const { LocalFree(memory); }
};

// Adds to the rights that there are. ERROR_SUCCESS, or why not.
DWORD Grant(Account given, std::wstring name, SE_OBJECT_TYPE kind, DWORD rights) {
  std::array<unsigned char, SECURITY_MAX_SID_SIZE> account{};
  DWORD size = static_cast<DWORD>(account.size());
  const auto known = given == Account::kUsers ? WinBuiltinUsersSid : WinLocalServiceSid;
  if (CreateWellKnownSid(known, nullptr, account.data(), &size) == 0) return GetLastError();
  PACL present = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  DWORD error = GetNamedSecurityInfoW(name.data(), kind, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                      &present, nullptr, &descriptor);
  const std::unique_ptr<void, Freed> freeDescriptor(descriptor);
  if (error != ERROR_SUCCESS) return error;
  EXPLICIT_ACCESSW added{};
  added.grfAccessPermissions = rights;
  added.grfAccessMode = GRANT_ACCESS;
  added.grfInheritance = kHandedDown;
  added.Trustee.TrusteeForm = TRUSTEE_IS_SID;
  added.Trustee.TrusteeType = TRUSTEE_IS_WELL_KNOWN_GROUP;
  added.Trustee.ptstrName = reinterpret_cast<wchar_t*>(account.data());
  PACL together = nullptr;
  error = SetEntriesInAclW(1, &added, present, &together);
  const std::unique_ptr<void, Freed> freeTogether(together);
  if (error != ERROR_SUCCESS) return error;
  return SetNamedSecurityInfoW(name.data(), kind, DACL_SECURITY_INFORMATION, nullptr, nullptr, together,
                               nullptr);
}

std::string Name(Account account) {
  return account == Account::kUsers ? "users" : "the service";
}

}  // namespace

Outcome OpenTo(Account account, const std::string& dataFolder) {
  HKEY key = nullptr;
  DWORD error = static_cast<DWORD>(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0,
                                                   KEY_READ | KEY_WOW64_32KEY, nullptr, &key, nullptr));
  if (error == ERROR_SUCCESS) {
    RegCloseKey(key);
    error = Grant(account, kKeyForRights, SE_REGISTRY_WOW64_32KEY, kChangeKey);
  }
  if (error != ERROR_SUCCESS)
    return Failure{Name(account) + " may not change the settings: " + SystemErrorText(error)};
  CreateDirectoryW(Wide(dataFolder).c_str(), nullptr);
  error = Grant(account, Wide(dataFolder), SE_FILE_OBJECT, kChangeFiles);
  if (error != ERROR_SUCCESS)
    return Failure{Name(account) + " may not write in the data folder '" + dataFolder +
                   "': " + SystemErrorText(error)};
  return {};
}

}  // namespace zeb
