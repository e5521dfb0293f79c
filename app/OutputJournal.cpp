#include "app/OutputJournal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <utility>

#include "platform/Operator.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

using Problem = clsZEBTemplate::Problem;

constexpr std::size_t kMaxReasonCharacters = 500;
constexpr std::size_t kUsualLine = 128;  // bytes

std::vector<Problem> ProblemsOf(clsZEBTemplate& output) {
  std::vector<Problem> problems = output.Problems();
  if (!problems.empty() || output.Status() != kStatusError) return problems;
  std::uint32_t colour = 0;
  return {{"", output.GetStatusString(colour)}};
}

const Problem* FindThing(const std::vector<Problem>& problems, const std::string& thing) {
  const auto found =
      std::find_if(problems.begin(), problems.end(), [&](const Problem& one) { return one.thing == thing; });
  return found == problems.end() ? nullptr : &*found;
}

std::string PlaceText(OutputType type, int index) {
  return std::string(NameOf(type)) + " " + std::to_string(index);
}

void AppendTime(std::string& to, Duration took) {
  const bool isShort = took < std::chrono::seconds(10);
  const double number = isShort ? std::chrono::duration<double, std::milli>(took).count()
                                : std::chrono::duration<double>(took).count();
  std::array<char, 32> text;
  const auto written =
      std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, 1);
  to.append(text.data(), written.ptr).append(isShort ? " ms" : " s");
}

void AppendItem(std::string& to, const ServiceSnapshot& snapshot) {
  const ItemFields& item = snapshot.currentItem.Fields();
  to.append("'").append(OneLine(item.ItemName)).append("' by '").append(OneLine(item.Artists)).append("'");
}

// "updated 19 files, 1 web page, 1 failing".
std::string CountsText(const UpdateRecord& record) {
  std::string text;
  text.reserve(kUsualLine);
  int failing = 0, givenUp = 0;
  for (std::int32_t code = 1; code <= kNumberOutputTypes; ++code) {
    const OutputTypeInfo* info = FindOutputType(code);
    if (!info) continue;
    int published = 0;
    for (const UpdateRun& run : record.runs) {
      if (run.type != info->type) continue;
      published += run.tally.published;
      failing += run.tally.failed;
      givenUp += run.tally.givenUp;
    }
    if (published == 0) continue;
    text.append(text.empty() ? "updated " : ", ").append(std::to_string(published)).append(" ");
    text += published == 1 ? info->one : info->many;
  }
  if (text.empty()) text = record.runs.empty() ? "no outputs to update" : "updated nothing";
  if (record.runs.empty() && record.postponed + record.delayed > 0) text = "updated nothing yet";
  if (failing > 0) text += ", " + std::to_string(failing) + " failing";
  if (givenUp > 0) text += ", " + std::to_string(givenUp) + " given up for something newer";
  if (record.postponed > 0) text += ", " + std::to_string(record.postponed) + " still busy";
  if (record.delayed > 0) text += ", " + std::to_string(record.delayed) + " delayed";
  return text;
}

}  // namespace

void OutputJournal::Note(const std::string& text) const {
  service_.environment().person.Note(OneLine(service_.settings.ServiceName) + ": " + text);
}

void OutputJournal::Check(OutputType type, int index) {
  const OutputPtr output = service_.Output(type, index);
  if (!output) return;
  std::erase_if(known_, [](const auto& entry) { return entry.second.output.expired(); });
  const auto known = known_.find(output.get());
  std::vector<Problem> now = ProblemsOf(*output);
  if (known == known_.end() && now.empty()) return;
  NoteChanges(PlaceText(type, index), known == known_.end() ? std::vector<Problem>() : known->second.problems,
              now);
  if (now.empty())
    known_.erase(known);
  else
    known_[output.get()] = {output, std::move(now)};
}

void OutputJournal::NoteChanges(const std::string& name, const std::vector<Problem>& before,
                                const std::vector<Problem>& now) const {
  for (const Problem& problem : now) {
    const Problem* known = FindThing(before, problem.thing);
    if (!known || known->reason != problem.reason)
      Note(name + ": " + OneLine(problem.reason, kMaxReasonCharacters));
  }
  if (now.empty()) return Note(name + " works again");
  for (const Problem& problem : before)
    if (!problem.thing.empty() && !FindThing(now, problem.thing))
      Note(name + ": '" + OneLine(problem.thing) + "' works again");
}

void OutputJournal::NoteUpdate(const UpdateRecord& record) {
  const Duration took = service_.environment().loop.Monotonic() - record.began;
  std::string text = CountsText(record);
  text += " in ";
  AppendTime(text, took);
  text += ": ";
  AppendItem(text, *record.snapshot);
  Note(text);
}

void OutputJournal::NoteWaiting(const UpdateRecord& record) const {
  std::string outputs;
  for (const UpdateRun& run : record.runs)
    if (!run.ended) outputs += (outputs.empty() ? "" : ", ") + PlaceText(run.type, run.index);
  std::string text;
  AppendItem(text, *record.snapshot);
  Note(text + " still waits for " + outputs);
}

}  // namespace zeb
