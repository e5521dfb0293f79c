#include "app/StatusTable.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <chrono>
#include <optional>
#include <string_view>
#include <vector>

#include "text/MomentText.h"
#include "text/OneLine.h"
#include "text/Utf8.h"

namespace zeb {

namespace {

using boost::json::object;
using boost::json::value;
using Moment = std::optional<WallTime>;  // at UTC

// What another version does not give is empty, not a reason to show nothing. Texts from stations must not
// steer the terminal.
std::string Text(const object& of, std::string_view name) {
  const value* found = of.if_contains({name.data(), name.size()});
  return found && found->is_string() ? OneLine(std::string_view(found->as_string()), 120) : std::string();
}

const object& Part(const object& of, std::string_view name) {
  static const object none;
  const value* found = of.if_contains({name.data(), name.size()});
  return found && found->is_object() ? found->as_object() : none;
}

const boost::json::array& List(const object& of, std::string_view name) {
  static const boost::json::array none;
  const value* found = of.if_contains({name.data(), name.size()});
  return found && found->is_array() ? found->as_array() : none;
}

long long Number(const object& of, std::string_view name) {
  const value* found = of.if_contains({name.data(), name.size()});
  return found && found->is_int64() ? found->as_int64() : 0;
}

bool Is(const object& of, std::string_view name) {
  const value* found = of.if_contains({name.data(), name.size()});
  return found && found->is_bool() && found->as_bool();
}

Moment MomentOf(const object& of, std::string_view name) {
  const auto written = ReadMomentText(Text(of, name));
  if (!written) return std::nullopt;
  return written->wall - written->utcOffset.value_or(std::chrono::seconds(0));
}

// "4 s", "3 min", "2 h", "5 days".
std::string AgeText(Moment since, Moment now) {
  if (!since || !now) return "";
  const auto seconds =
      std::max<long long>(0, std::chrono::floor<std::chrono::seconds>(*now - *since).count());
  if (seconds < 120) return std::to_string(seconds) + " s";
  if (seconds < 7200) return std::to_string(seconds / 60) + " min";
  if (seconds < 172800) return std::to_string(seconds / 3600) + " h";
  return std::to_string(seconds / 86400) + " days";
}

std::string Padded(std::string text, std::size_t width) {
  const std::size_t characters = CountCharacters(text);
  if (characters < width) text.append(width - characters, ' ');
  return text;
}

std::string Row(const std::string& name, const std::string& mark, const std::string& age,
                const std::string& text) {
  std::string row = "  " + Padded(name, 10) + " " + Padded(mark, 5) + " " + Padded(age, 12) + " " + text;
  row.erase(row.find_last_not_of(' ') + 1);
  return row + "\n";
}

std::string MarkOf(const std::string& severity, bool stale) {
  if (severity == "failing") return "FAIL";
  return stale && severity != "off" ? "old" : severity;
}

std::string ItemText(const object& item) {
  const std::string title = Text(item, "title"), artists = Text(item, "artists");
  if (title.empty() && artists.empty()) return "(nothing yet)";
  return artists.empty() ? title : title + " - " + artists;
}

std::string ShownText(const object& output) {
  std::string text = Text(output, "text");
  if (!text.empty()) return text;
  for (const value& page : List(output, "pages"))
    if (page.is_object()) text += (text.empty() ? "" : ", ") + Text(page.as_object(), "name");
  return text.empty() ? Text(output, "info") : text;
}

std::string OutputRow(const object& output, Moment now) {
  const std::string severity = Text(output, "severity");
  const bool fails = severity == "failing", stale = Is(output, "stale");
  const std::string age = AgeText(MomentOf(output, "published"), now);
  std::string text = ShownText(output);
  if (fails) {
    const std::string since = AgeText(MomentOf(output, "failingSince"), now);
    text = (since.empty() ? "" : "for " + since + ": ") +
           (Text(output, "problem").empty() ? Text(output, "status") : Text(output, "problem"));
  } else if (stale) {
    text = "shows an older item since " + AgeText(MomentOf(output, "staleSince"), now) + ": " + text;
  } else if (severity == "off" || severity == "busy") {
    text = Text(output, "status") + (text.empty() ? "" : ": " + text);
  }
  return Row(Text(output, "name"), MarkOf(severity, stale), age.empty() ? "never" : age + " ago", text);
}

std::string StationRows(const object& station, Moment now) {
  std::string rows = std::to_string(Number(station, "number")) + "  " + Text(station, "name") +
                     (Text(station, "severity") == "failing" ? "  FAILS" : "") + "\n";
  const object& source = Part(station, "source");
  std::string heard = Text(source, "text");
  if (const std::string controller = Text(source, "controller"); !controller.empty())
    heard += ", " + controller + " has control";
  rows += Row("source", MarkOf(Text(source, "state"), false), "", heard);
  rows += Row("on air", "", "", ItemText(Part(station, "current")));
  for (const value& output : List(station, "outputs"))
    if (output.is_object()) rows += OutputRow(output.as_object(), now);
  return rows;
}

bool Fails(const value& station) {
  return station.is_object() && Text(station.as_object(), "severity") == "failing";
}

}  // namespace

bool SomethingFails(const value& list) {
  const auto& stations = List(list.as_object(), "services");
  return std::any_of(stations.begin(), stations.end(), Fails);
}

std::string StatusTable(const value& list) {
  const object& all = list.as_object();
  const Moment now = MomentOf(all, "time");
  std::vector<const value*> stations;
  for (const value& station : List(all, "services"))
    if (station.is_object()) stations.push_back(&station);
  const auto failing = std::stable_partition(stations.begin(), stations.end(),
                                             [](const value* station) { return !Fails(*station); });
  const auto bad = stations.end() - failing;
  std::string table = "ZEB " + Text(all, "version") + ", " + Text(all, "time").substr(0, 19) + ": " +
                      std::to_string(stations.size()) + (stations.size() == 1 ? " station" : " stations") +
                      (bad == 0 ? ", all well" : ", " + std::to_string(bad) + " with a failure") + "\n";
  for (const value* station : stations) table += "\n" + StationRows(station->as_object(), now);
  return table;
}

}  // namespace zeb
