#include "platform/system/StandardError.h"

#include <string>

#include "platform/windows/JournalFile.h"
#include "platform/windows/WideText.h"
#include "platform/windows/WinHandle.h"

namespace zeb {

bool WriteToStandardError(const LogLine& line) {
  const std::string bytes = line.time + line.text + "\r\n";
  if (JournalFile* const file = JournalFile::Chosen()) return file->Append(bytes);
  const HANDLE out = GetStdHandle(STD_ERROR_HANDLE);
  // A program that was started with a window has none: nobody reads, and that is no failure.
  if (out == nullptr || out == INVALID_HANDLE_VALUE) return true;
  DWORD mode = 0;
  if (GetConsoleMode(out, &mode) != 0) {
    const std::wstring wide = Wide(bytes);
    DWORD written = 0;
    return WriteConsoleW(out, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr) != 0;
  }
  for (std::size_t done = 0; done < bytes.size();) {
    DWORD written = 0;
    if (WriteFile(out, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &written, nullptr) == 0)
      return false;
    done += written;
  }
  return true;
}

// No kind of handle says whether it would wait; the writer's own thread waits then.
LineSink TryStandardError() {
  return nullptr;
}

}  // namespace zeb
