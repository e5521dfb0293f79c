#include "bench/system/Process.h"

#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

#include "bench/system/Moment.h"

namespace zeb::bench {
namespace {

constexpr std::size_t kLastWords = 2000;
constexpr double kEndLimit = 10;

// The cores of this process when it began.
const cpu_set_t& AllCores() {
  static const cpu_set_t all = [] {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    sched_getaffinity(0, sizeof cores, &cores);
    return cores;
  }();
  return all;
}

int FirstCore(const cpu_set_t& cores) {
  int core = 0;
  while (core < CPU_SETSIZE && !CPU_ISSET(core, &cores)) ++core;
  return core;
}

cpu_set_t CoresOf(Process::Cores which) {
  cpu_set_t cores = AllCores();
  if (which == Process::Cores::kBesideDriver && CPU_COUNT(&cores) > 1) CPU_CLR(FirstCore(cores), &cores);
  return cores;
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> OurEnvironment() {
  std::vector<std::string> lines;
  for (char** line = environ; *line; ++line) lines.push_back(*line);
  return lines;
}

}  // namespace

void TakeOwnCore() {
  const cpu_set_t all = AllCores();
  if (CPU_COUNT(&all) < 2) throw std::runtime_error("the benchmarks need two cores, one for the driver");
  cpu_set_t own;
  CPU_ZERO(&own);
  CPU_SET(FirstCore(all), &own);
  if (sched_setaffinity(0, sizeof own, &own) != 0) throw std::runtime_error("cannot take a core");
  setpriority(PRIO_PROCESS, 0, -20);
}

Usage Usage::operator-(const Usage& before) const {
  return {seconds - before.seconds, switches - before.switches, handOvers - before.handOvers};
}

Usage Usage::For(double updates) const {
  return {seconds / updates, switches / updates, handOvers / updates};
}

Process::Process(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                 Cores cores) {
  std::vector<std::string> lines = OurEnvironment();
  lines.insert(lines.begin(), environment.begin(), environment.end());
  const std::vector<char*> arguments = Pointers(command), variables = Pointers(lines);
  const cpu_set_t mask = CoresOf(cores);
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::runtime_error("cannot make a socket for what " + command[0] + " says");
  const pid_t driver = getpid();
  id_ = fork();
  if (id_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != driver) _exit(127);
    sched_setaffinity(0, sizeof mask, &mask);
    dup2(ends[1], 1);
    dup2(ends[1], 2);
    execve(command[0].c_str(), arguments.data(), variables.data());
    _exit(127);
  }
  close(ends[1]);
  words_ = ends[0];
  if (id_ < 0) {
    close(words_);
    throw std::runtime_error("cannot start " + command[0]);
  }
}

Process::~Process() {
  End();
  close(words_);
}

void Process::End() {
  if (id_ < 0) return;
  kill(id_, SIGTERM);
  const Moment asked = Now();
  while (waitpid(id_, nullptr, WNOHANG) == 0) {
    if (Seconds(asked, Now()) > kEndLimit) kill(id_, SIGKILL);
    Listen();
    Sleep(0.001);
  }
  id_ = -1;
}

void Process::MustRun() {
  if (id_ > 0 && waitpid(id_, nullptr, WNOHANG) == 0) return;
  id_ = -1;
  Listen();
  throw std::runtime_error("a program has ended: " + lastWords_);
}

void Process::Listen() {
  char buffer[4096];
  ssize_t got = 0;
  while ((got = recv(words_, buffer, sizeof buffer, MSG_DONTWAIT)) > 0) {
    lastWords_.append(buffer, static_cast<std::size_t>(got));
    if (lastWords_.size() > kLastWords) lastWords_.erase(0, lastWords_.size() - kLastWords);
  }
}

Usage Process::Used() const {
  Usage used;
  clockid_t clock;
  timespec time{};
  if (clock_getcpuclockid(id_, &clock) == 0 && clock_gettime(clock, &time) == 0)
    used.seconds = static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  const std::string first = "/proc/" + std::to_string(id_) + "/task/" + std::to_string(id_);
  for (const std::string& thread : Threads()) {
    const auto slept = static_cast<double>(StatusNumber(thread, "voluntary_ctxt_switches"));
    used.switches += slept + static_cast<double>(StatusNumber(thread, "nonvoluntary_ctxt_switches"));
    if (thread != first) used.handOvers += slept;
  }
  return used;
}

std::vector<std::string> Process::Threads() const {
  std::vector<std::string> folders;
  std::error_code gone;
  const std::filesystem::directory_iterator tasks("/proc/" + std::to_string(id_) + "/task", gone);
  for (const auto& task : tasks) folders.push_back(task.path().string());
  return folders;
}

double Process::ResidentMegabytes() const {
  return static_cast<double>(StatusNumber("/proc/" + std::to_string(id_), "VmRSS")) * 1024 / 1e6;
}

std::int64_t StatusNumber(const std::string& folder, const std::string& name) {
  std::ifstream status(folder + "/status");
  std::string word;
  while (status >> word) {
    std::int64_t number = 0;
    if (word == name + ":") return status >> number ? number : 0;
  }
  return 0;
}

}  // namespace zeb::bench
