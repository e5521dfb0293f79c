#include "outputs/wire/CandidateChooser.h"

#include <algorithm>
#include <random>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/WorkLane.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {

namespace {

constexpr std::string_view kFilePrefix = "FILE:";

std::string LineNumbers(const std::vector<int>& lines) {
  std::string text = lines.size() == 1 ? "line " : "lines ";
  for (std::size_t i = 0; i < lines.size(); ++i) text += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
  return text;
}

// What a worker finds in a schedule file. One that is not there has no entries.
struct FoundSchedule {
  ScheduleFile schedule;
  std::string problem;
};

FoundSchedule ReadSchedule(FileSystem& files, const std::string& path) {
  if (!files.Stat(path)) return {};
  const Result<std::string> bytes = files.Read(path, kMaxScheduleBytes);
  if (!bytes) return {{}, bytes.Reason()};
  FoundSchedule found{ScheduleFile::Parse(bytes.Value()), {}};
  if (const std::vector<int>& bad = found.schedule.malformedLines; !bad.empty())
    found.problem =
        "'" + path + "': skipping " + LineNumbers(bad) + ", which should read days|hours|template";
  return found;
}

}  // namespace

std::string WithoutLineBreaks(std::string text) {
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  return text;
}

std::string CandidateChooser::PathOf(std::string_view alternate) const {
  if (!StartsWithIgnoringCase(alternate, kFilePrefix)) return {};
  return JoinPath(environment_.dataFolder, TrimBlanks(alternate.substr(kFilePrefix.size())));
}

// A file that stays wrong is worth one line, not one an update.
void CandidateChooser::NoteOnce(const std::string& path, const std::string& problem) {
  std::string& last = noted_[path];
  if (last == problem) return;
  last = problem;
  if (problem.empty()) return;
  DebugLine(problem);
  environment_.person.Note(problem);
}

Result<CandidateChooser::Schedules> CandidateChooser::ReadSchedules(
    const std::vector<std::string_view>& alternates) {
  Schedules schedules;
  for (const std::string_view alternate : alternates) {
    const std::string path = PathOf(alternate);
    if (path.empty() || schedules.contains(path)) continue;
    auto found =
        lane_.Run([path, &files = environment_.files] { return ReadSchedule(files, path); }, kFileWorkLimit);
    if (!found)
      return Failure{"the schedule file '" + path + "' does not answer; check the share it lies on"};
    NoteOnce(path, found->problem);
    schedules[path] = std::move(found->schedule);
  }
  return schedules;
}

Result<std::vector<std::string>> CandidateChooser::Candidates(const WireFormats& formats,
                                                              const ServiceSnapshot& snapshot,
                                                              LineBreaks breaks) {
  std::vector<std::string> candidates;
  const WireFormats asked = formats;  // settings may change during the wait
  const auto add = [&](std::string_view format) {
    UploadFileList unused;
    std::string text = ExpandTemplate(format, snapshot, asked.simpleText, unused, asked.Values(format));
    if (breaks == LineBreaks::kTakenOut) text = WithoutLineBreaks(std::move(text));
    if (!text.empty()) candidates.push_back(std::move(text));
  };

  add(asked.simpleText);
  if (!candidates.empty() && asked.alternatesWhenEmpty) return candidates;
  const std::vector<std::string_view> alternates = SplitAt(asked.alternates, "|");
  const Result<Schedules> schedules = ReadSchedules(alternates);
  if (!schedules) return schedules.AsFailure();
  const WallTime now = environment_.loop.Now();
  for (const std::string_view alternate : alternates) {
    const auto schedule = schedules.Value().find(PathOf(alternate));
    if (schedule == schedules.Value().end()) {
      add(alternate);
      continue;
    }
    for (const ScheduleEntry& entry : schedule->second.entries)
      if (entry.Matches(now)) add(entry.templateText);
  }
  return candidates;
}

std::string CandidateChooser::Pick(const std::vector<std::string>& candidates) {
  if (candidates.empty()) return {};
  std::seed_seq seed{static_cast<std::uint64_t>(environment_.loop.Monotonic().count()), ++picks_};
  std::mt19937 random(seed);
  const double fraction = std::generate_canonical<double, 32>(random);
  const auto count = candidates.size();
  return candidates[std::min(count - 1, static_cast<std::size_t>(fraction * static_cast<double>(count)))];
}

}  // namespace zeb
