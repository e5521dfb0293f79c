#include "status/Alarms.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/http/HttpFetch.h"
#include "platform/Operator.h"
#include "platform/SettingsHive.h"
#include "text/OneLine.h"
#include "text/Paths.h"
#include "text/SharedTime.h"
#include "text/ValueEscapes.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr SettingRow<AlarmSettings> kSettings[] = {
    {.name = "AlarmAfterSeconds",
     .member = &AlarmSettings::AlarmAfterSeconds,
     .storedAs = StoredAs::kNumber,
     .least = 0,
     .most = 86400},
    {"AlarmCommand", &AlarmSettings::AlarmCommand},
    {"AlarmURL", &AlarmSettings::AlarmURL},
};
constexpr std::size_t kMostAnswer = 64u * 1024;
// What the worker is given beyond the program's own time.
constexpr Duration kWorkerGrace = 5s;

std::string_view WordOf(bool begins) {
  return begins ? "begin" : "end";
}

void AppendMember(std::string& to, std::string_view name, std::string_view value) {
  to.append(to.empty() ? "{\"" : ",\"").append(name).append("\":\"");
  AppendEscaped(to, value, ValueEscape::kJson);
  to += '"';
}

}  // namespace

SettingTable<AlarmSettings> AlarmSettingTable() {
  return kSettings;
}

void Alarms::ReadSettings() {
  zeb::ReadSettings(environment_.hive, environment_.settingsRoot, "", AlarmSettingTable(), settings_);
  noted_.clear();
  if (settings_.AlarmURL.empty()) return;
  if (const auto address = ParseHttpAddress(settings_.AlarmURL); !address)
    environment_.person.Note("AlarmURL: " + address.Reason());
}

// Another reason of the same output is the same trouble; its words are those of the end.
void Alarms::Look(const std::vector<Trouble>& troubles) {
  const MonotonicTime now = environment_.loop.Monotonic();
  std::map<Key, Known> before = std::exchange(known_, {});
  std::vector<const Known*> beginning;
  for (const Trouble& trouble : troubles) {
    Key key{trouble.service, trouble.output, 0};
    while (known_.contains(key)) ++std::get<int>(key);
    const auto found = before.find(key);
    Known& known = known_[key];
    if (found != before.end()) {
      known = std::move(found->second);
      before.erase(found);
    } else {
      known.since = now;
      known.sinceMoment = environment_.loop.Now();
    }
    known.trouble = trouble;
    if (known.told || now - known.since < std::chrono::seconds(settings_.AlarmAfterSeconds)) continue;
    known.told = true;
    beginning.push_back(&known);
  }
  for (const auto& [key, known] : before)
    if (known.told) Tell(false, known);
  for (const Known* known : beginning) Tell(true, *known);
}

void Alarms::Tell(bool begins, const Known& known) {
  if (!Wanted()) return;
  if (waiting_.size() >= kMostWaiting) {
    Note("Alarms", Failure{"more than " + std::to_string(kMostWaiting) + " wait to be told; some are not"});
    return;
  }
  waiting_.push_back({begins, known.trouble, known.sinceMoment});
  if (delivering_) return;
  delivering_ = true;
  environment_.loop.Start("alarms", [this, mark = epoch_.Now()] {
    while (mark.Holds() && !waiting_.empty()) Deliver();
    if (mark.Holds()) delivering_ = false;
  });
}

void Alarms::Deliver() {
  const Epoch::Mark mark = epoch_.Now();
  const Alarm alarm = std::move(waiting_.front());
  waiting_.pop_front();
  try {
    if (!settings_.AlarmCommand.empty()) Run(alarm);
    if (mark.Holds() && !settings_.AlarmURL.empty()) Post(alarm);
  } catch (const std::exception&) {
    ReportException("telling an alarm", Report::kQuietly);
  }
}

void Alarms::Run(const Alarm& alarm) {
  if (!environment_.processes) return Note("AlarmCommand", Failure{"this program runs no other programs"});
  ProcessOrder order;
  order.program = JoinPath(environment_.dataFolder, settings_.AlarmCommand);
  order.variables = {{"ZEB_ALARM", std::string(WordOf(alarm.begins))},
                     {"ZEB_SERVICE", OneLine(alarm.trouble.service)},
                     {"ZEB_OUTPUT", OneLine(alarm.trouble.output)},
                     {"ZEB_PROBLEM", OneLine(alarm.trouble.problem)}};
  order.limit = kCommandLimit;
  const Epoch::Mark mark = epoch_.Now();
  const std::shared_ptr<WorkLane> lane = lane_;
  const std::optional<Outcome> done =
      lane->Run([order, processes = environment_.processes] { return processes->Run(order); },
                kCommandLimit + kWorkerGrace);
  if (!mark.Holds()) return;
  Note("AlarmCommand", done ? *done : Failure{"'" + order.program + "' could not be ended"});
}

void Alarms::Post(const Alarm& alarm) {
  HttpOrder order;
  order.url = settings_.AlarmURL;
  order.limit = kPostLimit;
  order.mostBytes = kMostAnswer;
  AppendMember(order.json, "alarm", WordOf(alarm.begins));
  AppendMember(order.json, "service", alarm.trouble.service);
  AppendMember(order.json, "output", alarm.trouble.output);
  AppendMember(order.json, "problem", alarm.trouble.problem);
  AppendMember(order.json, "since", Rfc3339(alarm.since, environment_.loop.UtcOffset()));
  order.json += '}';
  const Epoch::Mark mark = epoch_.Now();
  const Result<HttpAnswer> answer = Fetch(environment_, order, mark);
  if (!mark.Holds()) return;
  if (!answer) return Note("AlarmURL", answer);
  const int status = answer.Value().Status();
  Note("AlarmURL", status >= 200 && status < 300 ? Outcome()
                                                 : Failure{"'" + order.url + "' answers '" +
                                                           OneLine(answer.Value().StatusLine()) + "'"});
}

// A failure once, until there is another one or it works again.
void Alarms::Note(const std::string& way, const Outcome& outcome) {
  std::string& noted = noted_[way];
  if (noted == outcome.Reason()) return;
  noted = outcome.Reason();
  if (!noted.empty()) environment_.person.Note(way + ": an alarm was not told: " + noted);
}

}  // namespace zeb
