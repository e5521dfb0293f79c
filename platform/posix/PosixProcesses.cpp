#include "platform/posix/PosixProcesses.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string_view>
#include <system_error>

namespace zeb {
namespace {

std::string Reason(int error) {
  return std::system_category().message(error);
}

// Ours, with the order's in the place of those with the same names.
std::vector<std::string> VariablesFor(const ProcessOrder& order) {
  std::vector<std::string> variables;
  for (char** one = environ; *one; ++one) {
    const std::string_view variable = *one;
    const bool replaced = std::any_of(order.variables.begin(), order.variables.end(), [&](const auto& ours) {
      return variable.substr(0, variable.find('=')) == ours.first;
    });
    if (!replaced) variables.emplace_back(variable);
  }
  for (const auto& [name, value] : order.variables) variables.emplace_back(name).append("=").append(value);
  return variables;
}

class SpawnSettings {
 public:
  SpawnSettings() {
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_init(&actions);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
  }
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawnattr_t attributes{};
  posix_spawn_file_actions_t actions{};
};

// "" once it has ended, else why it is to be killed.
std::string WaitFor(pid_t pid, Duration limit) {
  const int watch = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
  if (watch < 0) return "could not be watched: " + Reason(errno);
  pollfd one{watch, POLLIN, 0};
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(limit).count();
  int ended = 0;
  do ended = poll(&one, 1, static_cast<int>(milliseconds));
  while (ended < 0 && errno == EINTR);
  close(watch);
  return ended > 0 ? "" : "had not ended in time";
}

}  // namespace

Outcome PosixProcesses::Run(const ProcessOrder& order) {
  const auto fails = [&order](const std::string& why) { return Failure{"'" + order.program + "' " + why}; };
  std::vector<std::string> variables = VariablesFor(order);
  std::vector<char*> environment;
  environment.reserve(variables.size() + 1);
  for (std::string& variable : variables) environment.push_back(variable.data());
  environment.push_back(nullptr);
  std::string name = order.program;
  char* arguments[] = {name.data(), nullptr};
  const SpawnSettings settings;
  pid_t pid = 0;
  if (const int error = posix_spawn(&pid, order.program.c_str(), &settings.actions, &settings.attributes,
                                    arguments, environment.data());
      error != 0)
    return fails("cannot be run: " + Reason(error));
  const std::string why = WaitFor(pid, order.limit);
  if (!why.empty()) kill(-pid, SIGKILL);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
  if (!why.empty()) return fails("was killed: it " + why);
  if (WIFSIGNALED(status)) return fails("was ended by signal " + std::to_string(WTERMSIG(status)));
  if (WEXITSTATUS(status) != 0) return fails("ended with status " + std::to_string(WEXITSTATUS(status)));
  return {};
}

}  // namespace zeb
