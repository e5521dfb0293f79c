// hxGeneral: the debug log, problem reports, {hh} escapes and temporary file names.
//
// The debug log is process-wide, as it is one file per program and day: the main program (or a test) makes a
// DebugLog and installs it; without one, or at level 0, every call here costs a comparison. Messages are put
// together only when they will be written. Everything except GetTempFile is called on the loop's thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/FileSystem.h"
#include "platform/LineWriter.h"
#include "platform/Operator.h"
#include "platform/SettingsHive.h"
#include "text/Numbers.h"

namespace zeb {

enum class LineKind { kPlain = 0, kStarted = 1, kFinished = 2, kReset = 3 };

// One log file a day: folder + program + "." + yyyymmdd + ".log". Failures to write are ignored, except for a
// folder that cannot be made: the operator is shown that once.
class DebugLog {
 public:
  // Makes what brings the lines to the file; the sink touches files only.
  using WriterMaker = std::function<std::unique_ptr<LineWriter>(LineSink)>;

  // `level`: 0 off, -1 everything, else lines up to it. `alsoToOperator` writes each line to the journal too.
  // Without `makeWriter` each line is in the file when the call returns, or the disk has refused it.
  DebugLog(EventLoop& loop, FileSystem& files, Operator& person, std::string programName, std::string folder,
           std::int32_t level, bool alsoToOperator = false, const WriterMaker& makeWriter = {});
  ~DebugLog();  // uninstalls itself
  void Install();
  void WriteLine(std::string_view message, LineKind kind);
  void ShowToOperator(const std::string& text);  // a message box with the exclamation icon

  static constexpr char kRootKey[] = "SOFTWARE\\Hexmoor";
  // "/DEBUG=<word>" on the command line, else DebugMode under "SOFTWARE\Hexmoor".
  static std::int32_t StartUpLevel(std::string_view commandLine, SettingsHive& hive);
  // DebugPath under "SOFTWARE\Hexmoor", else DebugFiles in the data folder.
  static std::string StartUpFolder(SettingsHive& hive, const std::string& dataFolder);

 private:
  struct Folder;
  void TellFolderProblem();

  EventLoop& loop_;
  Operator& person_;
  std::string programName_;
  std::int32_t level_;
  bool alsoToOperator_;
  bool folderProblemShown_ = false;
  std::shared_ptr<Folder> folder_;  // shared with the writer's sink
  std::unique_ptr<LineWriter> writer_;
  int depth_ = 0;
};

namespace detail {
extern std::int32_t debugLevel;  // of the installed log; 0 without one
void WriteInstalled(std::string_view message, LineKind kind);
void ShowInstalled(const std::string& text);
inline void Append(std::string& to, std::string_view part) {
  to += part;
}
inline void Append(std::string& to, std::int64_t part) {
  AppendPlainNumber(to, part);
}
inline void Append(std::string& to, int part) {
  AppendPlainNumber(to, static_cast<std::int64_t>(part));
}
}  // namespace detail

inline bool DebugLevelAllows(std::int32_t level) {
  return detail::debugLevel != 0 && (detail::debugLevel == -1 || level <= detail::debugLevel);
}

// Level -1 means 5.
void WriteDebugLine(std::string_view message, std::int32_t level = 5, LineKind kind = LineKind::kPlain);

// A plain line at level 5 put together from texts and whole numbers, when it will be written.
template <class... Parts>
void DebugLine(const Parts&... parts) {
  if (!DebugLevelAllows(5)) return;
  std::string message;
  (detail::Append(message, parts), ...);
  detail::WriteInstalled(message, LineKind::kPlain);
}

// "Started X" now and "Finished X" at the end of the scope; ExitAs writes the reason of an early exit.
class Trace {
 public:
  explicit Trace(std::string_view what) : what_(what), on_(DebugLevelAllows(5)) {
    if (on_) Write("Started ", LineKind::kStarted);
  }
  ~Trace() {
    if (on_) Write("Finished ", LineKind::kFinished);
  }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  void ExitAs(std::string_view reason) const {
    if (on_) DebugLine("Exit as ", reason);
  }

 private:
  void Write(std::string_view start, LineKind kind) const;
  std::string_view what_;  // a literal
  bool on_;
};

// Whether the operator sees a problem, or only the debug log.
enum class Report { kShown, kQuietly };

// "There was a problem " + what, with the error's description when there is one; logged at level 5.
void ShowProblem(std::string_view what, std::string_view description, Report report);
// The same with "description (number)". Call it in the handler that ends the error's way.
void ReportError(std::string_view what, std::string_view description, int number, Report report);
// In a catch block: reports the exception in flight.
void ReportException(std::string_view what, Report report);

// Undoes {hh} escapes in a loop: the first digit from 0-9A-F, the second any character; other four-character
// pieces that begin with "{" are removed; a produced "{" is examined again.
std::string ConvertHexEscapes(std::string_view text);

// A new temporary file (it exists, empty). For worker threads, which must not write to the log: its steps,
// and the report when it fails, are added to `trace` for WriteDebugLines.
Result<std::string> GetTempFile(FileSystem& files, std::string_view prefix,
                                std::vector<std::string>* trace = nullptr);
// Plain lines at level 5, on the loop's thread.
void WriteDebugLines(const std::vector<std::string>& lines);

}  // namespace zeb
