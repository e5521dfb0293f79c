#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "dashboard/StationJson.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

constexpr WallTime kMoment{std::chrono::sys_days(std::chrono::year(2026) / 3 / 2).time_since_epoch()};

std::string Text(const boost::json::value& value) {
  return boost::json::serialize(value);
}

TEST(StationJson, AnOutputThatHasPublishedSaysWhatAndWhen) {
  OutputState output;
  output.type = OutputType::kWeb;
  output.number = 2;
  output.severity = Severity::kFailing;
  output.problem = "\"quoted\" \xC3\xAB";
  output.published = kMoment;
  output.latency = 1800500us;
  output.onAir = 3s;
  output.stale = true;
  output.staleSince = output.failingSince = kMoment + 1ms;
  output.progress = 40;
  output.waiting = 2;
  output.shown.pages.push_back({"/w/now.html", 12, "<p>", std::string("abc")});
  const boost::json::object json = JsonOf(output, 1h);
  EXPECT_EQ(Text(json.at("name")), R"("Web2")");
  EXPECT_EQ(Text(json.at("type")), R"("Web")");
  EXPECT_EQ(Text(json.at("severity")), R"("failing")");
  EXPECT_EQ(json.at("problem").as_string(), output.problem);
  EXPECT_EQ(Text(json.at("published")), R"("2026-03-02T00:00:00.000+01:00")");
  EXPECT_EQ(Text(json.at("failingSince")), R"("2026-03-02T00:00:00.001+01:00")");
  EXPECT_EQ(json.at("latencyMs").as_double(), 1800.5);
  EXPECT_EQ(json.at("onAirMs").as_double(), 3000);
  EXPECT_EQ(Text(json.at("progress")), "40");
  EXPECT_EQ(Text(json.at("waiting")), "2");
  EXPECT_EQ(Text(json.at("pages")),
            R"([{"name":"/w/now.html","bytes":12,"firstLines":"<p>","sha256":"abc"}])");
}

TEST(StationJson, WhatIsNotKnownIsNull) {
  const boost::json::object json = JsonOf(OutputState(), 0s);
  for (const char* name : {"published", "latencyMs", "onAirMs", "staleSince", "failingSince", "progress"})
    EXPECT_TRUE(json.at(name).is_null()) << name;
  EXPECT_FALSE(json.at("stale").as_bool());
}

TEST(StationJson, AStationHasAllThatTheBoardHas) {
  StationState state;
  state.number = 3;
  state.name = "Demo FM";
  state.source = {SourceState::Kind::kFile, false, "'/x' cannot be read", "", 0};
  state.current.Edit().ItemName = "Rain";
  state.current.Edit().ItemType = 7;
  state.next.resize(2);
  state.outputs.resize(1);
  const boost::json::object json = JsonOf(state, 0s);
  EXPECT_EQ(
      Text(json.at("source")),
      R"({"kind":"file","state":"failing","text":"'/x' cannot be read","controller":"","connections":0})");
  EXPECT_EQ(json.at("severity").as_string(), "failing");
  EXPECT_EQ(json.at("current").at("title").as_string(), "Rain");
  EXPECT_EQ(json.at("current").at("type").as_string(), "Song");
  EXPECT_EQ(json.at("next").as_array().size(), 2U);
  EXPECT_EQ(json.at("outputs").as_array().size(), 1U);
}

}  // namespace
}  // namespace zeb
