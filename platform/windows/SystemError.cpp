#include "platform/windows/SystemError.h"

#include <windows.h>

#include <string_view>

#include "platform/windows/WideText.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

// What stations meet, for a Windows that has no English texts.
struct Known {
  unsigned long code;
  const char* text;
};
constexpr Known kKnown[] = {
    {ERROR_FILE_NOT_FOUND, "There is no such file"},
    {ERROR_PATH_NOT_FOUND, "There is no such folder"},
    {ERROR_ACCESS_DENIED, "Access is denied"},
    {ERROR_SHARING_VIOLATION, "Another program has the file open"},
    {ERROR_LOCK_VIOLATION, "Another program has locked the file"},
    {ERROR_BAD_NETPATH, "The network path was not found"},
    {ERROR_BAD_NET_NAME, "The share was not found"},
    {ERROR_DISK_FULL, "The disk is full"},
    {ERROR_HANDLE_DISK_FULL, "The disk is full"},
    {ERROR_SEM_TIMEOUT, "There was no answer in time"},
    {ERROR_INVALID_NAME, "The name is not valid"},
    {ERROR_FILENAME_EXCED_RANGE, "The name is too long"},
    {ERROR_NETWORK_UNREACHABLE, "The network cannot be reached"},
    {ERROR_LOGON_FAILURE, "The user name or password is wrong"},
    {ERROR_NO_SYSTEM_RESOURCES, "The system is short of resources"},
};

std::string OneLineOf(std::wstring_view words) {
  std::string text = OneLine(Narrow(words));
  text.erase(text.find_last_not_of(". ") + 1);
  return text;
}

}  // namespace

std::string SystemErrorText(unsigned long code) {
  wchar_t words[1024];
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
                     MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), words, ARRAYSIZE(words), nullptr);
  const std::string text = OneLineOf({words, length});
  if (!text.empty()) return text;
  for (const Known& known : kKnown)
    if (known.code == code) return known.text;
  return "error " + std::to_string(code);
}

}  // namespace zeb
