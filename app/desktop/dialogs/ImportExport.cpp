#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "app/desktop/Boxes.h"
#include "app/desktop/dialogs/DialogFrame.h"
#include "app/desktop/dialogs/Files.h"
#include "app/desktop/dialogs/ImportDialog.h"
#include "core/RegDifference.h"
#include "core/RegFile.h"
#include "platform/EventLoop.h"
#include "platform/FileSystem.h"
#include "text/Composed.h"
#include "text/SharedTime.h"

namespace zeb {
namespace {

constexpr Duration kFileLimit = std::chrono::seconds(30);
constexpr std::string_view kFilter = Translatable("Settings (*.reg)");
constexpr std::string_view kAllFiles = Translatable("All files (*)");

// Windows are made outside of tasks, whose stacks are small.
void Show(Desk& desk, MessageIcon icon, std::string text) {
  desk.environment.loop.Post(
      [&desk, icon, text = std::move(text)] { desk.boxes.Show(desk.frame, icon, text); });
}

void TellNotRead(Desk& desk, const std::string& reason) {
  Show(desk, MessageIcon::kExclamation,
       Composed("The settings file could not be read; nothing has been changed.\n%1", {reason}));
}

void TellNotWritten(Desk& desk, const std::string& reason) {
  Show(desk, MessageIcon::kExclamation, Composed("The settings could not be exported.\n%1", {reason}));
}

Result<RegChanges> ReadChanges(FileSystem& files, const std::string& path) {
  const Result<std::string> bytes = files.Read(path, kMaxRegFileBytes);
  if (!bytes) return bytes.AsFailure();
  Result<RegChanges> changes = ParseRegFile(bytes.Value());
  if (!changes) return Failure{"'" + path + "': " + changes.Reason()};
  return changes;
}

// In a task.
void ShowChanges(Desk& desk, const std::string& path) {
  try {
    std::optional<Result<RegChanges>> read = desk.environment.loop.RunBlocking(
        [&files = desk.environment.files, path] { return ReadChanges(files, path); }, kFileLimit);
    if (!read) return TellNotRead(desk, "'" + path + "' could not be read in time");
    if (!*read) return TellNotRead(desk, read->Reason());
    const auto changes = std::make_shared<const RegChanges>(std::move(read->Value()));
    std::vector<RegDifference> differences = CompareRegChanges(desk.environment.hive, *changes);
    if (differences.empty())
      return Show(desk, MessageIcon::kInformation,
                  std::string(Translatable(
                      "The file changes nothing: all of its settings are as they are already.")));
    desk.environment.loop.Post([&desk, path, changes, differences = std::move(differences)] {
      (new ImportDialog(desk, path, changes, differences))->open();
    });
  } catch (const std::exception& error) {
    TellNotRead(desk, error.what());
  }
}

// In a task.
void Write(Desk& desk, const std::string& path) {
  try {
    std::string text = ExportRegFile(desk.environment.hive, desk.environment.settingsRoot);
    const std::optional<Outcome> written = desk.environment.loop.RunBlocking(
        [&files = desk.environment.files, path, text = std::move(text)]() -> Outcome {
          const auto target = files.FindTarget(path, {});
          return target ? target.Value()->ReplacePrivately(text) : Outcome(target);
        },
        kFileLimit);
    if (!written) return TellNotWritten(desk, "'" + path + "' could not be written in time");
    if (!*written) return TellNotWritten(desk, written->Reason());
    Show(
        desk, MessageIcon::kInformation,
        Composed("The settings are now in\n%1\nThe file holds passwords: keep it where nobody else reads it.",
                 {path}));
  } catch (const std::exception& error) {
    TellNotWritten(desk, error.what());
  }
}

}  // namespace

void OpenImportSettings(Desk& desk) {
  OpenFileQuestion(desk.frame,
                   {.title = std::string(Translatable("Import Settings")),
                    .filters = {std::string(kFilter), std::string(kAllFiles)},
                    .folder = {},
                    .name = {},
                    .suffix = {}},
                   [&desk](const std::string& path) {
                     desk.environment.loop.Start("import", [&desk, path] { ShowChanges(desk, path); });
                   });
}

void OpenExportSettings(Desk& desk) {
  const std::string name = "zeb-settings-" + FormatDateTime(desk.environment.loop.Now(), "yyyymmdd") + ".reg";
  OpenFileQuestion(desk.frame,
                   {.title = std::string(Translatable("Export Settings")),
                    .filters = {std::string(kFilter), std::string(kAllFiles)},
                    .folder = {},
                    .name = name,
                    .toWrite = true,
                    .suffix = "reg"},
                   [&desk](const std::string& path) {
                     desk.environment.loop.Start("export", [&desk, path] { Write(desk, path); });
                   });
}

}  // namespace zeb
