#include "platform/system/TerminalPassword.h"

#include <termios.h>
#include <unistd.h>

#include <cerrno>

namespace zeb {

namespace {

constexpr std::size_t kMostBytes = 4096;

// The terminal is put back as it was, whatever happens.
class Silence {
 public:
  Silence() {
    if (tcgetattr(STDIN_FILENO, &before_) != 0) return;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    on_ = tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
  }
  ~Silence() {
    if (on_) (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  bool On() const { return on_; }

 private:
  termios before_{};
  bool on_ = false;
};

void Say(const std::string& text) {
  (void)!write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

bool CanAskForPassword() {
  return isatty(STDIN_FILENO) != 0;
}

Result<std::string> AskForPassword(const std::string& question) {
  const Silence silence;
  if (!silence.On()) return Failure{"the terminal cannot be kept from showing the password"};
  Say(question);
  std::string line;
  char c = 0;
  for (;;) {
    const ssize_t count = read(STDIN_FILENO, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    if (c == '\n') {
      Say("\n");
      return line;
    }
    if (line.size() < kMostBytes) line += c;
  }
  Say("\n");
  return Failure{"nothing was entered"};
}

}  // namespace zeb
