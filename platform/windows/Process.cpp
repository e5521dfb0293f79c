#include "platform/system/Process.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include <cstdio>

#include "platform/windows/WideText.h"

namespace zeb {
namespace {

bool IsConsole(DWORD which) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(which), &mode) != 0;
}

}  // namespace

// The system's own line: that of the C library has lost what the code page does not know.
std::vector<std::string> ProgramArguments(int, char**) {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(Narrow(words[i]));
  LocalFree(words);
  return arguments;
}

// A disk or share that does not answer is an error that we report, not a box of the system's that waits for
// somebody to press a button.
void PrepareSystem() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
}

bool StandardErrorIsTerminal() {
  return IsConsole(STD_ERROR_HANDLE);
}

bool StandardOutputIsTerminal() {
  return IsConsole(STD_OUTPUT_HANDLE);
}

void UsePlainStreams() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  SetConsoleOutputCP(CP_UTF8);
  SetConsoleCP(CP_UTF8);
}

// Rights are handed down by folders here, whoever makes a file.
bool WouldLockOwnerOut(const std::string&) {
  return false;
}

}  // namespace zeb
