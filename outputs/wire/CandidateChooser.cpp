#include "outputs/wire/CandidateChooser.h"

#include <algorithm>
#include <random>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "platform/WorkLane.h"
#include "templates/ZEB_Class_Functions.h"
#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {

namespace {

constexpr std::string_view kFilePrefix = "FILE:";

std::vector<std::string_view> Split(std::string_view alternates) {
  std::vector<std::string_view> parts;
  while (!alternates.empty()) {
    const std::size_t bar = alternates.find('|');
    parts.push_back(alternates.substr(0, bar));
    if (bar == std::string_view::npos) break;
    alternates.remove_prefix(bar + 1);
  }
  return parts;
}

std::string LineNumbers(const std::vector<int>& lines) {
  std::string text = lines.size() == 1 ? "line " : "lines ";
  for (std::size_t i = 0; i < lines.size(); ++i) text += (i == 0 ? "" : ", ") + std::to_string(lines[i]);
  return text;
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

CandidateChooser::Schedules CandidateChooser::ReadSchedules(const std::vector<std::string_view>& alternates) {
  Schedules schedules;
  for (const std::string_view alternate : alternates)
    if (std::string path = PathOf(alternate); !path.empty()) schedules[std::move(path)] = {};
  if (schedules.empty()) return schedules;

  struct Read {
    Schedules schedules;
    std::map<std::string, std::string> problems;
  };
  auto done = environment_.loop.RunBlocking(
      [read = Read{schedules, {}}, &files = environment_.files]() mutable {
        for (auto& [path, schedule] : read.schedules) {
          if (!files.Stat(path)) continue;
          const Result<std::string> bytes = files.Read(path, kMaxScheduleBytes);
          if (bytes)
            schedule = ScheduleFile::Parse(bytes.Value());
          else
            read.problems[path] = bytes.Reason();
        }
        return std::move(read);
      },
      kFileWorkLimit);
  if (!done) return {};
  schedules = std::move(done->schedules);
  auto& problems = done->problems;
  for (const auto& [path, schedule] : schedules) {
    std::string problem = problems[path];
    if (problem.empty() && !schedule.malformedLines.empty())
      problem = "'" + path + "': skipping " + LineNumbers(schedule.malformedLines) +
                ", which should read days|hours|template";
    NoteOnce(path, problem);
  }
  return schedules;
}

std::vector<std::string> CandidateChooser::Candidates(const WireFormats& formats,
                                                      const ServiceSnapshot& snapshot, bool oneLine) {
  std::vector<std::string> candidates;
  const auto expand = [&](std::string_view format) {
    UploadFileList unused;
    std::string text = ExpandTemplate(format, snapshot, formats.simpleText, unused);
    return oneLine ? WithoutLineBreaks(std::move(text)) : text;
  };
  const auto add = [&](std::string text) {
    if (!text.empty()) candidates.push_back(std::move(text));
  };

  add(expand(formats.simpleText));
  if (!candidates.empty() && formats.alternatesWhenEmpty) return candidates;
  const std::string alternatesText = formats.alternates;  // settings may change during the wait
  const std::vector<std::string_view> alternates = Split(alternatesText);
  const Schedules schedules = ReadSchedules(alternates);
  // The items may have changed meanwhile; all candidates show one moment.
  candidates.clear();
  add(expand(formats.simpleText));
  if (!candidates.empty() && formats.alternatesWhenEmpty) return candidates;
  const WallTime now = environment_.loop.Now();
  for (const std::string_view alternate : alternates) {
    const auto schedule = schedules.find(PathOf(alternate));
    if (schedule == schedules.end()) {
      add(expand(alternate));
      continue;
    }
    for (const ScheduleEntry& entry : schedule->second.entries)
      if (entry.Matches(now)) add(expand(entry.templateText));
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
