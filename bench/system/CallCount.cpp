// How many system calls an update takes: strace writes them all down for a moment, and they are counted.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "bench/system/Measures.h"

namespace zeb::bench {
namespace {

constexpr const char* kStrace = "/usr/bin/strace";
constexpr double kAttachLimit = 5;
constexpr double kGap = 0.005;
constexpr double kNamedFrom = 0.05;  // what is rarer is some timer's

bool AllTraced(const Process& process) {
  for (const std::string& thread : process.Threads())
    if (StatusNumber(thread, "TracerPid") == 0) return false;
  return true;
}

// The name of the call that begins in a line "ID name(...", "" in any other.
std::string CallOf(const std::string& line) {
  std::istringstream words(line);
  std::string id, call;
  words >> id >> call;
  const std::size_t end = call.find('(');
  const bool begins = !call.empty() && call[0] != '<' && call[0] != '+' && call[0] != '-';
  return begins && end != std::string::npos ? call.substr(0, end) : std::string();
}

}  // namespace

Calls CountCalls(Publisher& publisher, int items) {
  const TemporaryFolder folder(Medium::kMemory);
  const std::string list = (folder.Path() / "calls").string();
  Process strace({kStrace, "-f", "-qq", "-e", "signal=none", "-o", list, "-p",
                  std::to_string(publisher.Program().Id())});
  for (const Moment start = Now(); !AllTraced(publisher.Program()); Sleep(0.01)) {
    strace.MustRun();
    if (Seconds(start, Now()) > kAttachLimit) throw std::runtime_error("strace does not get to its process");
  }
  for (int item = 0; item < items; ++item) {
    LineToFiles(publisher);
    LetRest(publisher, kGap);
  }
  strace.End();

  std::map<std::string, int> counts;
  std::ifstream lines(list);
  for (std::string line; std::getline(lines, line);)
    if (const std::string call = CallOf(line); !call.empty()) ++counts[call];
  std::vector<std::pair<double, std::string>> sorted;
  Calls calls;
  for (const auto& [name, count] : counts) {
    sorted.emplace_back(static_cast<double>(count) / items, name);
    calls.all += sorted.back().first;
  }
  std::sort(sorted.rbegin(), sorted.rend());
  for (const auto& [each, name] : sorted) {
    if (each < kNamedFrom) break;
    char text[64];
    std::snprintf(text, sizeof text, "%s%s %.1f", calls.byName.empty() ? "" : ", ", name.c_str(), each);
    calls.byName += text;
  }
  return calls;
}

}  // namespace zeb::bench
