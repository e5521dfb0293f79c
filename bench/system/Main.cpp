// The whole program, measured as a process over real sockets and files, beside a bare program that does the
// least. The driver runs on a core of its own, what it measures on the others.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <iostream>

#include "bench/system/Process.h"

namespace {

// Some rows take a descriptor for each of thousands of services.
void TakeAllDescriptors() {
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  files.rlim_cur = files.rlim_max;
  setrlimit(RLIMIT_NOFILE, &files);
}

}  // namespace

int main(int count, char** arguments) {
  benchmark::Initialize(&count, arguments);
  if (benchmark::ReportUnrecognizedArguments(count, arguments)) return 2;
  try {
    zeb::bench::TakeOwnCore();
  } catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
  }
  TakeAllDescriptors();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
