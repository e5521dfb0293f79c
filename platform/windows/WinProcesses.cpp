#include "platform/windows/WinProcesses.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "platform/windows/WinHandle.h"

namespace zeb {
namespace {

// Ours, with the order's in the place of those with the same names; sorted as Windows wants them.
std::wstring VariablesFor(const ProcessOrder& order) {
  std::vector<std::wstring> all;
  wchar_t* const ours = GetEnvironmentStringsW();
  for (const wchar_t* one = ours; *one != L'\0'; one += std::wstring_view(one).size() + 1)
    all.emplace_back(one);
  FreeEnvironmentStringsW(ours);
  for (const auto& [name, value] : order.variables) {
    const std::wstring start = Wide(name) + L"=";
    std::erase_if(all, [&](const std::wstring& other) {
      return other.size() >= start.size() &&
             CompareStringOrdinal(other.data(), static_cast<int>(start.size()), start.data(),
                                  static_cast<int>(start.size()), TRUE) == CSTR_EQUAL;
    });
    all.push_back(start + Wide(value));
  }
  std::sort(all.begin(), all.end(), [](const std::wstring& one, const std::wstring& other) {
    return CompareStringOrdinal(one.data(), static_cast<int>(one.size()), other.data(),
                                static_cast<int>(other.size()), TRUE) == CSTR_LESS_THAN;
  });
  std::wstring block;
  for (const std::wstring& one : all) block += one + L'\0';
  return block + L'\0';
}

// A job that kills what is in it when its handle closes.
WinHandle MakeJob() {
  WinHandle job(CreateJobObjectW(nullptr, nullptr));
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
  limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
  SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
  return job;
}

}  // namespace

Outcome WinProcesses::Run(const ProcessOrder& order) {
  const auto fails = [&order](const std::string& why) { return Failure{"'" + order.program + "' " + why}; };
  std::wstring variables = VariablesFor(order);
  std::wstring command = L"\"" + Wide(order.program) + L"\"";
  STARTUPINFOW start{};
  start.cb = sizeof start;
  PROCESS_INFORMATION made{};
  if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE,
                     CREATE_SUSPENDED | CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT, variables.data(),
                     nullptr, &start, &made) == 0)
    return fails("cannot be run: " + SystemErrorText(GetLastError()));
  const WinHandle process(made.hProcess), thread(made.hThread);
  const WinHandle job = MakeJob();
  AssignProcessToJobObject(job.Get(), process.Get());
  ResumeThread(thread.Get());
  const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(order.limit).count();
  if (WaitForSingleObject(process.Get(), static_cast<DWORD>(limit)) != WAIT_OBJECT_0) {
    TerminateJobObject(job.Get(), 1);
    TerminateProcess(process.Get(), 1);  // should it be in no job
    return fails("was killed: it had not ended in time");
  }
  DWORD status = 0;
  GetExitCodeProcess(process.Get(), &status);
  if (status != 0) return fails("ended with status " + std::to_string(static_cast<int>(status)));
  return {};
}

}  // namespace zeb
