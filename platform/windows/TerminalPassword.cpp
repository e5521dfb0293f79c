#include "platform/system/TerminalPassword.h"

#include <windows.h>

#include <string>

#include "platform/windows/WideText.h"

namespace zeb {
namespace {

constexpr std::size_t kMostCharacters = 4096;

// The console is put back as it was, whatever happens.
class Silence {
 public:
  Silence() : input_(GetStdHandle(STD_INPUT_HANDLE)) {
    on_ = GetConsoleMode(input_, &before_) != 0 &&
          SetConsoleMode(input_, (before_ & ~DWORD{ENABLE_ECHO_INPUT}) | ENABLE_LINE_INPUT) != 0;
  }
  ~Silence() {
    if (on_) SetConsoleMode(input_, before_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  bool On() const { return on_; }

 private:
  HANDLE input_;
  DWORD before_ = 0;
  bool on_ = false;
};

void Say(const std::string& text) {
  const std::wstring wide = Wide(text);
  DWORD written = 0;
  WriteConsoleW(GetStdHandle(STD_ERROR_HANDLE), wide.data(), static_cast<DWORD>(wide.size()), &written,
                nullptr);
}

}  // namespace

bool CanAskForPassword() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

Result<std::string> AskForPassword(const std::string& question) {
  const Silence silence;
  if (!silence.On()) return Failure{"the console cannot be kept from showing the password"};
  Say(question);
  std::wstring line(kMostCharacters, L'\0');
  DWORD count = 0;
  const bool read = ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), line.data(), static_cast<DWORD>(line.size()),
                                 &count, nullptr) != 0;
  Say("\r\n");
  line.resize(read ? count : 0);
  const std::size_t end = line.find_last_not_of(L"\r\n");
  if (end == std::wstring::npos) return Failure{"nothing was entered"};
  return Narrow(std::wstring_view(line).substr(0, end + 1));
}

}  // namespace zeb
