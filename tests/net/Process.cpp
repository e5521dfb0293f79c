#include "tests/net/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

namespace zeb {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  }
  int ends[2];
};

void CloseEnd(int& descriptor) {
  if (descriptor >= 0) close(descriptor);
  descriptor = -1;
}

int Milliseconds(Clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, 100000));
}

Clock::time_point After(Seconds limit) {
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(limit);
}

}  // namespace

Process::Process(const std::vector<std::string>& command) {
  std::signal(SIGPIPE, SIG_IGN);
  const Pipe in, out, err;
  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error("cannot fork");
  if (pid_ == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    dup2(in.ends[0], STDIN_FILENO);
    dup2(out.ends[1], STDOUT_FILENO);
    dup2(err.ends[1], STDERR_FILENO);
    std::vector<char*> words;
    for (const std::string& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
  }
  close(in.ends[0]);
  close(out.ends[1]);
  close(err.ends[1]);
  input_ = in.ends[1];
  output_ = out.ends[0];
  error_ = err.ends[0];
}

Process::~Process() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  CloseInput();
  CloseEnd(output_);
  CloseEnd(error_);
}

void Process::Write(const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(input_, text.data() + done, text.size() - done);
    if (count <= 0) return;
    done += static_cast<std::size_t>(count);
  }
}

void Process::CloseInput() {
  CloseEnd(input_);
}

bool Process::ReadSome(Clock::time_point deadline) {
  if (output_ < 0 && error_ < 0) return false;
  pollfd ends[2] = {{output_, POLLIN, 0}, {error_, POLLIN, 0}};  // poll passes closed ones (-1) over
  if (poll(ends, 2, Milliseconds(deadline)) <= 0) return false;
  char buffer[65536];
  const auto take = [&](const pollfd& end, int& descriptor, std::string& text) {
    if (end.revents == 0) return;
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count > 0)
      text.append(buffer, static_cast<std::size_t>(count));
    else
      CloseEnd(descriptor);
  };
  take(ends[0], output_, output);
  take(ends[1], error_, error);
  return true;
}

bool Process::WaitForError(const std::string& text, Seconds limit) {
  const Clock::time_point deadline = After(limit);
  while (true) {
    const std::size_t at = error.find(text, searched_);
    if (at != std::string::npos) {
      searched_ = at + text.size();
      return true;
    }
    if (!ReadSome(deadline)) return false;
  }
}

int Process::Wait(Seconds limit) {
  const Clock::time_point deadline = After(limit);
  while (ReadSome(deadline)) {
  }
  if (pid_ < 0 || output_ >= 0 || error_ >= 0) return -1;  // both are closed by its end at the latest
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool Process::EndsUnread(Seconds limit) const {
  int handle = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
  pollfd end = {handle, POLLIN, 0};
  const bool ended = handle >= 0 && poll(&end, 1, Milliseconds(After(limit))) == 1;
  CloseEnd(handle);
  return ended;
}

void Process::Signal(int signal) const {
  if (pid_ > 0) kill(pid_, signal);
}

Finished RunProgram(const std::vector<std::string>& command, const std::string& input) {
  Process process(command);
  process.Write(input);
  process.CloseInput();
  const int status = process.Wait();
  return {status, process.output, process.error};
}

}  // namespace zeb
