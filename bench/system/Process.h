// Process: a program that the benchmarks start, measure and end. It does not outlive the benchmarks, however
// they end.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zeb::bench {

// Gives this process, the driver, a core of its own: the first that it may use. Throws when there is one
// only.
void TakeOwnCore();

// What a process has used since its start. Switches are of threads that live, voluntary or not; hand-overs
// are the times that a thread other than the first went to sleep, so was woken for something before.
struct Usage {
  double seconds = 0;  // processor time, of threads that have ended too
  double switches = 0;
  double handOvers = 0;

  Usage operator-(const Usage& before) const;
  Usage For(double updates) const;  // of one of so many updates
};

class Process {
 public:
  enum class Cores { kAll, kBesideDriver };
  // What it says on standard error and standard output goes through a local socket, as under a service
  // manager. `environment`: lines NAME=value on top of ours. Throws when there are no means for a process.
  explicit Process(const std::vector<std::string>& command, const std::vector<std::string>& environment = {},
                   Cores cores = Cores::kBesideDriver);
  ~Process();  // asks it to end, waits 10 s, kills it
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t Id() const { return id_; }
  void End();
  // Throws with its last words when it has ended.
  void MustRun();
  // Takes what it has said, so that it never waits for us.
  void Listen();

  Usage Used() const;
  std::vector<std::string> Threads() const;  // their folders below /proc
  double ResidentMegabytes() const;

 private:
  pid_t id_ = -1;
  int words_ = -1;  // our end of the socket
  std::string lastWords_;
};

// The number behind "name:" in a status file of /proc; 0 without it.
std::int64_t StatusNumber(const std::string& folder, const std::string& name);

}  // namespace zeb::bench
