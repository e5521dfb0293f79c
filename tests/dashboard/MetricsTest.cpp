#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

#include "dashboard/Metrics.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr WallTime kNow{std::chrono::sys_days(std::chrono::year(2026) / 3 / 2).time_since_epoch()};

StationState Station() {
  StationState state;
  state.number = 2;
  state.name = "Demo \"FM\" \\ x";
  state.source = {SourceState::Kind::kControlLink, true, "port 6901", "playout", 3};
  OutputState& output = state.outputs.emplace_back();
  output.type = OutputType::kFile;
  output.number = 1;
  output.severity = Severity::kFailing;
  output.stale = true;
  output.staleSince = kNow - 90500ms;
  output.publications = 7;
  output.failures = 2;
  output.waiting = 4;
  for (const Duration time : {Duration(5ms), Duration(10ms), Duration(1501ms), Duration(40s)})
    output.latencies.Add(time);
  return state;
}

TEST(Metrics, SayWhatTheBoardsSay) {
  const std::string text = MetricsText({Station()}, kNow);
  const std::string station = R"(service="Demo \"FM\" \\ x",number="2")";
  const std::string output = station + R"(,output="File1")";
  for (const std::string& line :
       {"zeb_source_healthy{" + station + "} 1", "zeb_controller_connected{" + station + "} 1",
        "zeb_connections{" + station + "} 3", "zeb_output_publications_total{" + output + "} 7",
        "zeb_output_failures_total{" + output + "} 2", "zeb_output_failing{" + output + "} 1",
        "zeb_output_stale_seconds{" + output + "} 90.5", "zeb_output_queue_length{" + output + "} 4",
        "zeb_output_latency_seconds_bucket{" + output + R"(,le="0.01"} 2)",
        "zeb_output_latency_seconds_bucket{" + output + R"(,le="1.5"} 2)",
        "zeb_output_latency_seconds_bucket{" + output + R"(,le="2"} 3)",
        "zeb_output_latency_seconds_bucket{" + output + R"(,le="+Inf"} 4)",
        "zeb_output_latency_seconds_count{" + output + "} 4",
        "zeb_output_latency_seconds_sum{" + output + "} 41.516"})
    EXPECT_NE(("\n" + text).find("\n" + line + "\n"), std::string::npos) << line << "\n" << text;
  EXPECT_EQ(text.find("zeb_output_on_air_seconds{"), std::string::npos);  // it is not looked at
}

// Each family once, its type before its figures, and all lines with an end.
TEST(Metrics, AreWellFormed) {
  StationState second = Station();
  second.name = "Two\nlines";
  second.outputs[0].onAir = 1400ms;
  const std::string text = MetricsText({Station(), second}, kNow);
  EXPECT_EQ(text.back(), '\n');
  std::vector<std::string> families;
  std::string family;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    if (line.rfind("# TYPE ", 0) == 0) {
      family = line.substr(7, line.find(' ', 7) - 7);
      EXPECT_EQ(std::count(families.begin(), families.end(), family), 0) << family;
      families.push_back(family);
    } else if (line.front() != '#') {
      EXPECT_EQ(line.rfind(family, 0), 0U) << line;
      EXPECT_NE(line.find("} "), std::string::npos) << line;
    }
  }
  EXPECT_NE(text.find(R"(service="Two\nlines")"), std::string::npos);
  EXPECT_NE(text.find("} 1.4\n"), std::string::npos);
}

std::set<std::string> NamesIn(const std::string& text) {
  std::set<std::string> names;
  for (std::size_t at = 0; (at = text.find("zeb_", at)) != std::string::npos;) {
    const std::size_t end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz_", at);
    std::string name = text.substr(at, end - at);
    for (const std::string_view part : {"_bucket", "_sum", "_count"})
      if (name.ends_with(part)) name = name.substr(0, name.size() - part.size());
    names.insert(name);
    at = end;
  }
  return names;
}

std::string SourceFile(const std::string& name) {
  std::ifstream file(std::string(ZEB_SOURCE_DIR "/").append(name));
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Metrics, AreThoseOfTheManualAndTheExamples) {
  StationState state = Station();
  state.outputs[0].onAir = 1s;
  const std::set<std::string> names = NamesIn(MetricsText({state}, kNow));
  EXPECT_EQ(NamesIn(SourceFile("docs/manual/metrics.md")), names);
  for (const char* example : {"examples/prometheus-alerts.yml", "examples/grafana-dashboard.json"})
    for (const std::string& name : NamesIn(SourceFile(example)))
      EXPECT_EQ(names.count(name), 1U) << example << ": " << name;
}

TEST(Metrics, WithoutServicesThereIsTheProgram) {
  EXPECT_NE(MetricsText({}, kNow).find("zeb_info{version=\"" ZEB_VERSION "\"} 1\n"), std::string::npos);
}

}  // namespace
}  // namespace zeb
