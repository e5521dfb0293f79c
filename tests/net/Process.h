// Process: a program run by a test, with deadlines on everything that is waited for. Ends with the test: what
// still runs when it is destroyed is killed.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace zeb {

using Seconds = std::chrono::duration<double>;

class Process {
 public:
  explicit Process(const std::vector<std::string>& command);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  void Write(const std::string& text);
  void CloseInput();
  // Reads on until standard error holds `text` behind what an earlier call found; false at the deadline, or
  // when the program has closed its end.
  bool WaitForError(const std::string& text, Seconds limit = Seconds(20));
  // Waits for the end: the exit status, 128 + signal when it was killed, -1 at the deadline.
  int Wait(Seconds limit = Seconds(30));
  // Whether it ends by itself while nobody reads what it writes. Wait gives its status then, and the rest of
  // its words.
  bool EndsUnread(Seconds limit = Seconds(30)) const;
  void Signal(int signal) const;
  pid_t Id() const { return pid_; }

  std::string output, error;  // so far

 private:
  bool ReadSome(std::chrono::steady_clock::time_point deadline);

  pid_t pid_ = -1;
  int input_ = -1, output_ = -1, error_ = -1;
  std::size_t searched_ = 0;
};

// Runs it to its end.
struct Finished {
  int status;
  std::string output, error;
};
Finished RunProgram(const std::vector<std::string>& command, const std::string& input = "");

}  // namespace zeb
