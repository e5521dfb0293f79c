// The debug log of diagnostics/hxGeneral.h.
#include <algorithm>
#include <atomic>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/DirectLineWriter.h"
#include "text/LetterCase.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

#ifdef _WIN32
constexpr char kLineEnd[] = "\r\n";
#else
constexpr char kLineEnd[] = "\n";
#endif

// One log for the process, as there is one file for it.
DebugLog* installed = nullptr;

std::int32_t LevelByWord(std::string_view word) {
  struct Level {
    std::string_view word;
    std::int32_t level;
  };
  static constexpr Level kLevels[] = {{"MAX", 10}, {"NORMAL", 5}, {"MEDIUM", 5}, {"NONE", 0}, {"OFF", 0}};
  for (const Level& known : kLevels)
    if (EqualIgnoringAsciiCase(word, known.word)) return known.level;
  return 10;
}

}  // namespace

namespace detail {

std::int32_t debugLevel = 0;

void WriteInstalled(std::string_view message, LineKind kind) {
  if (installed != nullptr) installed->WriteLine(message, kind);
}

void ShowInstalled(const std::string& text) {
  if (installed != nullptr) installed->ShowToOperator(text);
}

}  // namespace detail

// The folder and what goes into it: the sink's side, which may be a thread's.
struct DebugLog::Folder {
  Folder(FileSystem& fileSystem, std::string folder) : files(fileSystem), path(std::move(folder)) {
    if (!path.empty() && path.back() != kPathSeparator && path.back() != '/') path += kPathSeparator;
  }

  FileSystem& files;
  std::string path;
  bool ready = false;  // the sink's only
  std::atomic<bool> failed = false;

  bool IsReady() {
    if (ready || failed) return ready;
    const auto info = files.Stat(path);
    ready = path.empty() || (info && info->isFolder) || files.CreateFolders(path);
    failed = !ready;
    return ready;
  }

  bool Append(const LogLine& line) {
    if (!IsReady()) return false;
    // The folder may have been removed while the program runs: the next line makes it again.
    ready = files.Append(line.file, line.time + line.text + kLineEnd).Ok();
    return ready;
  }
};

DebugLog::DebugLog(EventLoop& loop, FileSystem& files, Operator& person, std::string programName,
                   std::string folder, std::int32_t level, bool alsoToOperator, const WriterMaker& makeWriter)
    : loop_(loop),
      person_(person),
      programName_(std::move(programName)),
      level_(level),
      alsoToOperator_(alsoToOperator),
      folder_(std::make_shared<Folder>(files, std::move(folder))) {
  LineSink sink = [into = folder_](const LogLine& line) { return into->Append(line); };
  writer_ = makeWriter ? makeWriter(std::move(sink)) : std::make_unique<DirectLineWriter>(std::move(sink));
}

DebugLog::~DebugLog() {
  if (installed != this) return;
  installed = nullptr;
  detail::debugLevel = 0;
}

void DebugLog::Install() {
  installed = this;
  detail::debugLevel = level_;
}

void DebugLog::ShowToOperator(const std::string& text) {
  person_.Show(MessageIcon::kExclamation, text);
}

void DebugLog::WriteLine(std::string_view message, LineKind kind) {
  if (kind == LineKind::kFinished && depth_ > 0) --depth_;
  if (kind == LineKind::kReset) depth_ = 0;
  const auto depth = static_cast<std::size_t>(depth_);
  if (kind == LineKind::kStarted) ++depth_;
  // Whatever goes wrong with a log line, the program goes on.
  try {
    const WallTime now = loop_.Now();
    LogLine line = {"", FormatDateTime(now, "hh:nn:ss "), std::string(4 * depth, ' ')};
    line.text += message;
    if (alsoToOperator_) person_.Note(line.time + line.text);
    if (folder_->failed) return TellFolderProblem();
    line.file = folder_->path + programName_ + '.' + FormatDateTime(now, "yyyymmdd") + ".log";
    writer_->Write(std::move(line));
    if (folder_->failed) TellFolderProblem();
  } catch (const std::exception&) {
  }
}

void DebugLog::TellFolderProblem() {
  if (std::exchange(folderProblemShown_, true)) return;
  person_.Show(MessageIcon::kExclamation,
               "The Debug Files folder could not be created in '" + folder_->path + "'!");
}

std::int32_t DebugLog::StartUpLevel(std::string_view commandLine, SettingsHive& hive) {
  constexpr std::string_view kOption = "/DEBUG";
  std::size_t at = 0;
  while ((at = commandLine.find_first_not_of(' ', at)) != std::string_view::npos) {
    const std::size_t end = std::min(commandLine.find(' ', at), commandLine.size());
    const std::string_view item = commandLine.substr(at, end - at);
    at = end;
    if (!EqualIgnoringAsciiCase(item.substr(0, kOption.size()), kOption)) continue;
    const std::string_view rest = item.substr(kOption.size());
    if (rest.empty() || rest[0] == '=') return LevelByWord(rest.empty() ? rest : rest.substr(1));
  }
  return hive.ReadNumber(kRootKey, "DebugMode", 0);
}

std::string DebugLog::StartUpFolder(SettingsHive& hive, const std::string& dataFolder) {
  const std::string path = hive.ReadText(kRootKey, "DebugPath", "");
  return path.empty() ? JoinPath(dataFolder, "DebugFiles") : path;
}

}  // namespace zeb
