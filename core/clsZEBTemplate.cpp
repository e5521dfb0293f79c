#include "core/clsZEBTemplate.h"

#include <string_view>
#include <utility>

#include "platform/Operator.h"
#include "platform/SettingsHive.h"
#include "text/ValueEscapes.h"

namespace zeb {

namespace {

struct StatusLook {
  std::string_view text;
  std::uint32_t colour;
};

StatusLook LookOf(std::int32_t status) {
  switch (status) {
    case kStatusOff:
      return {"Off", kColourYellow};
    case kStatusConnecting:
      return {"Connecting", kColourBlack};
    case kStatusConnected:
      return {"Connected", kColourBlack};
    case kStatusLoggingOn:
      return {"Logging On", kColourBlack};
    case kStatusOK:
      return {"OK", kColourBlack};
    case kStatusError:
      return {"Error", kColourRed};
    default:
      return {"Unknown", kColourRed};
  }
}

constexpr const char* kSettingsKey = "\\Template";
constexpr const char* kSimpleTextFormat = "SimpleTextFormat";

}  // namespace

bool clsZEBTemplate::StartOutput(std::shared_ptr<Control> control) {
  control_ = std::move(control);
  return true;
}

bool clsZEBTemplate::StopOutput() {
  control_.reset();
  return true;
}

bool clsZEBTemplate::PrepareOutput(const SnapshotPtr&) {
  return false;
}

bool clsZEBTemplate::UpdateOutput(const SnapshotPtr&) {
  SetStatus(kStatusOK);
  return false;
}

bool clsZEBTemplate::FinishOutput(const SnapshotPtr&) {
  return false;
}

void clsZEBTemplate::StoreOutputInformation(int serviceNumber, int outputIndex) {
  environment_.hive.WriteText(environment_.ServiceKey(serviceNumber) + kSettingsKey,
                              kSimpleTextFormat + std::to_string(outputIndex), simpleTextFormat_);
}

void clsZEBTemplate::GetOutputInformation(int serviceNumber, int outputIndex) {
  simpleTextFormat_ = environment_.hive.ReadText(environment_.ServiceKey(serviceNumber) + kSettingsKey,
                                                 kSimpleTextFormat + std::to_string(outputIndex),
                                                 std::string(kDefaultSimpleTextFormat));
  SetStatus(kStatusOK);
}

std::vector<clsZEBTemplate::Problem> clsZEBTemplate::Problems() const {
  if (problem_.empty()) return {};
  return {{"", problem_}};
}

std::string clsZEBTemplate::ProblemText() const {
  const std::vector<Problem> problems = Problems();
  if (problems.empty()) return {};
  std::string text = problems.front().reason;
  const std::size_t more = problems.size() - 1;
  if (more > 0) text += " (and " + std::to_string(more) + " more)";
  return text;
}

bool clsZEBTemplate::Fails() {
  return !Problems().empty() || Status() == kStatusError;
}

void clsZEBTemplate::CountRun(bool published) {
  if (std::exchange(counted_, false)) return;
  const bool fails = !Problems().empty();
  tally_ = {published && !fails ? 1 : 0, fails ? 1 : 0};
}

void clsZEBTemplate::NoteFault(const std::string& what) {
  problem_ = what;
  SetStatus(kStatusError);
}

std::string clsZEBTemplate::GetStatusString(std::uint32_t& colour) {
  const StatusLook look = LookOf(Status());
  colour = look.colour;
  return std::string(look.text);
}

void clsZEBTemplate::NoteShown(std::string_view text, const std::string& templateText,
                               const std::string& simpleText, ValueEscape escape, bool urlEncode) {
  shown_.text = ShownText(text);
  shown_.source = {templateText.empty() ? nullptr : std::make_shared<const std::string>(templateText),
                   simpleText, escape, urlEncode};
}

void clsZEBTemplate::CheckEscapeWord(const std::string& where, const std::string& word) {
  if (const std::string wrong = WrongEscapeWord(word); !wrong.empty())
    environment_.person.Note(where + ": EscapeValues: " + wrong);
}

}  // namespace zeb
