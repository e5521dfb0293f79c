#include "outputs/wire/WireLog.h"

#include "diagnostics/hxGeneral.h"
#include "platform/WorkLane.h"
#include "text/Numbers.h"
#include "text/Paths.h"
#include "text/SharedTime.h"

namespace zeb {

namespace {
#ifdef _WIN32
constexpr const char* kLineEnd = "\r\n";
#else
constexpr const char* kLineEnd = "\n";
#endif
}  // namespace

std::string WireLogPath(const Environment& environment, const ServiceSnapshot& snapshot,
                        std::string_view suffix) {
  const std::string folder = JoinPath(JoinPath(environment.dataFolder, snapshot.LoggingPath),
                                      "Service " + PaddedNumber(snapshot.serviceNumber, 2));
  std::string name = FormatDateTime(environment.loop.Now(), "yyyy-mm-dd");
  name.append(suffix).append(".log");
  return JoinPath(folder, name);
}

Outcome AppendToWireLog(Environment& environment, const ServiceSnapshot& snapshot, std::string_view suffix,
                        std::string_view text) {
  const std::string path = WireLogPath(environment, snapshot, suffix);
  const std::string line = std::string(text) + kLineEnd;
  const auto appended = environment.loop.RunBlocking(
      [&files = environment.files, path, line] {
        Outcome outcome = files.Append(path, line);
        // Most often the folder is not there yet.
        if (!outcome && files.CreateFolders(std::string(FolderPart(path))))
          outcome = files.Append(path, line);
        return outcome;
      },
      kFileWorkLimit);
  const Outcome outcome = appended ? *appended : Failure{"'" + path + "' does not answer"};
  if (!outcome) DebugLine(outcome.Reason());
  return outcome;
}

}  // namespace zeb
