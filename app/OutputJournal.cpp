#include "app/OutputJournal.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "platform/Operator.h"
#include "text/OneLine.h"

namespace zeb {

namespace {

struct Counted {
  OutputType type;
  std::string_view one, many;
};
constexpr std::array<Counted, 7> kCounted = {{
    {OutputType::kDAB, "DAB label", "DAB labels"},
    {OutputType::kEncoder, "encoder", "encoders"},
    {OutputType::kFile, "file output", "file outputs"},
    {OutputType::kRDS, "RDS output", "RDS outputs"},
    {OutputType::kSerial, "serial output", "serial outputs"},
    {OutputType::kHTTP, "HTTP request", "HTTP requests"},
    {OutputType::kWeb, "web output", "web outputs"},
}};

// "" while nothing fails.
std::string ProblemOf(clsZEBTemplate& output) {
  std::string problem = output.ProblemText();
  if (!problem.empty() || output.Status() != kStatusError) return problem;
  std::uint32_t colour = 0;
  return output.GetStatusString(colour);
}

std::string Milliseconds(Duration took) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f ms", std::chrono::duration<double, std::milli>(took).count());
  return text;
}

}  // namespace

void OutputJournal::Note(const std::string& text) const {
  service_.environment().person.Note(OneLine(service_.settings.ServiceName) + ": " + text);
}

void OutputJournal::Check(OutputType type, int index) {
  const OutputPtr output = service_.Output(type, index);
  if (!output) return;
  std::erase_if(problems_, [](const auto& entry) { return entry.second.output.expired(); });
  std::string problem = ProblemOf(*output);
  const auto known = problems_.find(output.get());
  const std::string before = known == problems_.end() ? std::string() : known->second.text;
  if (problem == before) return;
  const std::string name =
      std::string(FindOutputType(static_cast<std::int32_t>(type))->name) + " " + std::to_string(index);
  if (problem.empty()) {
    problems_.erase(known);
    Note(name + " works again");
  } else {
    Note(name + ": " + OneLine(problem, 500));
    problems_[output.get()] = {output, std::move(problem)};
  }
}

std::string OutputJournal::CountsText() const {
  std::string text;
  int failing = 0;
  for (const Counted& kind : kCounted) {
    int working = 0;
    const int count = service_.OutputCount(static_cast<std::int32_t>(kind.type));
    for (int i = 1; i <= count; ++i)
      ++(problems_.contains(service_.Output(kind.type, i).get()) ? failing : working);
    if (working == 0) continue;
    text += (text.empty() ? "updated " : ", ") + std::to_string(working) + " ";
    text += working == 1 ? kind.one : kind.many;
  }
  if (text.empty()) text = failing == 0 ? "no outputs to update" : "updated nothing";
  if (failing > 0) text += ", " + std::to_string(failing) + " failing";
  return text;
}

void OutputJournal::NoteUpdate(Duration took) {
  const clsZEBItemInfo& item = service_.CurrentItem();
  Note(CountsText() + " in " + Milliseconds(took) + ": '" + OneLine(item->ItemName) + "' by '" +
       OneLine(item->Artists) + "'");
}

}  // namespace zeb
