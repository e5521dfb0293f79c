#include "app/SupportFile.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <exception>
#include <memory>
#include <set>
#include <utility>

#include "app/StatusTable.h"
#include "core/RegFile.h"
#include "dashboard/StationJson.h"
#include "dashboard/StationList.h"
#include "diagnostics/hxGeneral.h"
#include "dialogs/SecretSettings.h"
#include "platform/EventLoop.h"
#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Paths.h"
#include "text/SharedTime.h"
#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr char kAllSettings[] = "Software\\Hexmoor";
constexpr std::string_view kLogEnd = ".log";
constexpr std::uint64_t kMostSmallFile = 256 * 1024;
constexpr std::size_t kMostReference = 40;
constexpr std::size_t kReadBlock = 256 * 1024;
// A log that is longer is not read through only to find its end.
constexpr std::uint64_t kMostReadThrough = 2ull * 1024 * 1024 * 1024;

std::string AboutText(const Environment& environment, const SupportInput& input) {
  const auto line = [](std::string_view name, std::string_view text) {
    return std::string(name) + ": " + std::string(text) + "\n";
  };
  return line("Program", "ZEB " ZEB_VERSION) +
         line("Made", Rfc3339(environment.loop.Now(), environment.loop.UtcOffset())) +
         line("Reference", input.reference) + line("Data folder", environment.dataFolder) +
         line("Settings", environment.settingsRoot) +
         line("Status", input.status.empty() ? "nothing runs" : "status.txt") + "\nReason:\n" + input.reason +
         "\n";
}

// Source files of pairs, wherever they are set.
void PlanTemplates(const Environment& environment, const SettingsTree& tree, SupportPlan& plan) {
  std::set<std::string> paths;
  for (const SettingsTreeKey& key : tree)
    for (const SettingsValue& value : key.values) {
      const auto* text = std::get_if<std::string>(&value.data);
      // With the output's number before it: "Output2.SourceFileName1".
      const std::string_view name = std::string_view(value.name).substr(value.name.rfind('.') + 1);
      if (text == nullptr || text->empty() || !StartsWithIgnoringCase(name, "SourceFileName")) continue;
      if (paths.size() < kMostSupportTemplates) paths.insert(JoinPath(environment.dataFolder, *text));
    }
  int number = 0;
  for (const std::string& path : paths)
    plan.files.push_back(
        {path, "templates/" + std::to_string(++number) + "-" + CleanForFileName(FileNamePart(path)),
         kMostSupportTemplate});
}

Result<std::string> ReadEnd(FileSystem& files, const SupportPlan::File& file) {
  const auto reader = files.OpenForReading(file.path);
  if (!reader) return reader.AsFailure();
  if (reader.Value()->Size() > kMostReadThrough) return Failure{"'" + file.path + "' is too long to be read"};
  std::string text;
  std::string block(kReadBlock, '\0');
  bool cut = false;
  for (std::uint64_t total = 0; total <= kMostReadThrough;) {
    const Result<std::size_t> got = reader.Value()->Read(block.data(), block.size());
    if (!got) return got.AsFailure();
    if (got.Value() == 0) break;
    total += got.Value();
    text.append(block, 0, got.Value());
    if (text.size() <= file.most + kReadBlock) continue;
    text.erase(0, text.size() - file.most);
    cut = true;
  }
  if (text.size() > file.most) {
    text.erase(0, text.size() - file.most);
    cut = true;
  }
  return cut ? "(only the end of the file)\n" + text : text;
}

// The newest ones.
void PlanLogs(FileSystem& files, SupportPlan& plan) {
  const auto listed = files.List(plan.logFolder);
  if (!listed) return;  // nothing has been logged
  struct Log {
    std::int64_t modified;
    std::string name;
  };
  std::vector<Log> logs;
  for (const std::string& name : listed.Value()) {
    if (name.size() <= kLogEnd.size() ||
        !EqualIgnoringAsciiCase(std::string_view(name).substr(name.size() - kLogEnd.size()), kLogEnd))
      continue;
    const auto info = files.Stat(JoinPath(plan.logFolder, name));
    if (info && info->isRegular) logs.push_back({info->modified, name});
  }
  std::sort(logs.begin(), logs.end(), [](const Log& a, const Log& b) {
    return a.modified != b.modified ? a.modified > b.modified : a.name > b.name;
  });
  if (logs.size() > kMostSupportLogs) logs.resize(kMostSupportLogs);
  for (const Log& log : logs)
    plan.files.push_back(
        {JoinPath(plan.logFolder, log.name), "logs/" + CleanForFileName(log.name), kMostSupportLog});
}

}  // namespace

void AddStatus(SupportInput& input, const EventLoop& loop, const std::vector<StationState>& states) {
  boost::json::object all = ListHeadJson(loop);
  boost::json::array services;
  for (const StationState& state : states) services.push_back(JsonOf(state, loop.UtcOffset()));
  all["services"] = std::move(services);
  input.statusJson = boost::json::serialize(all) + "\n";
  input.status = StatusTable(all);
}

void AddJournal(SupportInput& input, const JournalTail& journal) {
  for (const JournalTail::Line& line : journal.Lines())
    input.journal += FormatDateTime(line.moment, "yyyy-mm-dd hh:nn:ss") + " " + line.text + "\n";
}

SupportPlan PlanSupport(const Environment& environment, const SupportInput& input) {
  SupportPlan plan;
  plan.entries.push_back({"about.txt", AboutText(environment, input)});
  plan.logFolder = JoinPath(environment.dataFolder, "DebugFiles");
  try {
    const SettingsTree tree = ReadSettingsTree(environment.hive, kAllSettings);
    plan.entries.push_back({"settings.reg", RegFileText(kAllSettings, MaskSecrets(tree, plan.words))});
    plan.logFolder = DebugLog::StartUpFolder(environment.hive, environment.dataFolder);
    if (input.withTemplates) PlanTemplates(environment, tree, plan);
  } catch (const std::exception& error) {
    plan.entries.push_back(
        {"settings.reg", std::string("The settings cannot be read: ") + error.what() + "\n"});
  }
  if (!input.status.empty()) plan.entries.push_back({"status.txt", input.status});
  if (!input.statusJson.empty()) plan.entries.push_back({"status.json", input.statusJson});
  if (!input.journal.empty()) plan.entries.push_back({"journal.txt", input.journal});
  plan.files.push_back({JoinPath(environment.dataFolder, "Generic.ini"), "Generic.ini", kMostSmallFile});
  plan.files.push_back({"/etc/os-release", "system.txt", kMostSmallFile});
  return plan;
}

std::vector<ZipEntry> CollectSupport(FileSystem& files, SupportPlan plan) {
  PlanLogs(files, plan);
  for (const SupportPlan::File& file : plan.files) {
    if (!files.Stat(file.path) && !file.name.starts_with("templates/")) continue;
    Result<std::string> text = ReadEnd(files, file);
    plan.entries.push_back({file.name, text ? std::move(text.Value()) : text.Reason() + "\n"});
  }
  // A template may be in an encoding in which the words are not to be found; it is shown as it is otherwise.
  for (ZipEntry& entry : plan.entries) {
    if (!IsValidUtf8(entry.bytes)) entry.bytes = DecodeFile(entry.bytes, DetectFileEncoding(entry.bytes));
    if (entry.name != "settings.reg") entry.bytes = WithoutSecrets(entry.bytes);
    entry.bytes = HideWords(std::move(entry.bytes), plan.words);
  }
  return std::move(plan.entries);
}

std::string SupportFileName(const std::string& reference, WallTime now) {
  const std::string clean = CleanForFileName(FirstCharacters(reference, kMostReference));
  return "ZEB-support-" + (clean.empty() ? "" : clean + "-") + FormatDateTime(now, "yyyymmdd") + "-" +
         FormatDateTime(now, "hhnn") + ".zip";
}

Outcome WriteSupport(FileSystem& files, const ZipFiles& zips, const std::string& path,
                     const std::vector<ZipEntry>& entries, WallTime now) {
  const Result<std::string> zip = zips.Make(entries, now);
  if (!zip) return zip;
  const auto target = files.FindTarget(path, {});
  if (!target) return target;
  return target.Value()->ReplacePrivately(zip.Value());
}

}  // namespace zeb
