// What is written down about the requests, against the program.
#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <fstream>
#include <set>
#include <sstream>

#include "dashboard/Dashboard.h"
#include "dashboard/HistoryRoute.h"
#include "dashboard/PageRoutes.h"
#include "dashboard/PictureRoute.h"
#include "dashboard/StationEvents.h"
#include "dashboard/StationJson.h"
#include "dashboard/StationList.h"
#include "dashboard/StationRoutes.h"
#include "dashboard/TestRoute.h"
#include "platform/simulated/SimulatedSecrets.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

namespace json = boost::json;

json::object ReadDocument() {
  std::ifstream file(ZEB_SOURCE_DIR "/docs/openapi.json");
  std::stringstream text;
  text << file.rdbuf();
  return json::parse(text.str()).as_object();
}

// Nobody is there.
struct NoStations : Stations {
  TestEnvironment& ports;
  explicit NoStations(TestEnvironment& given) : ports(given) {}
  ServiceSettings settings;
  int Count() const override { return 0; }
  StationState State(int) const override { return {}; }
  SnapshotPtr Present(int) const override { return nullptr; }
  const ServiceSettings& Settings(int) const override { return settings; }
  CartStore& Carts() override { return ports.carts; }
  void Take(int, const std::string&) override {}
  void Update(int) override {}
  void Reload() override {}
  std::optional<Result<std::vector<TestStep>>> Test(int, const OutputName&) override { return std::nullopt; }
  Outcome Remove(int) override { return {}; }
};

TEST(OpenApiTest, HasThePathsAndMethodsOfTheProgram) {
  TestEnvironment ports;
  NoStations stations(ports);
  JournalTail journal(ports.person, ports.loop);
  StationRoutes routes(ports.loop, stations);
  StationEvents events(ports.loop, stations, journal);
  Dashboard dashboard(ports.environment, ports.network, std::make_shared<SimulatedSecrets>());
  routes.AddTo(dashboard.Routes());
  PictureRoute pictures(ports.environment, stations);
  pictures.AddTo(dashboard.Routes());
  HistoryRoute history(ports.loop, nullptr, nullptr);
  history.AddTo(dashboard.Routes());
  AddTestRoute(dashboard.Routes(), stations);
  dashboard.AddEvents("/api/v1/events", events.Hub());
  std::set<std::string> served, written;
  for (const Router::Route& route : dashboard.Routes().All()) {
    std::string path = route.method + " ";
    for (const std::string& part : route.pattern) path += "/" + part;
    served.insert(path);
  }
  const json::object document = ReadDocument();
  for (const auto& [path, item] : document.at("paths").as_object())
    for (const auto& [method, operation] : item.as_object()) {
      if (method == "parameters") continue;
      std::string upper(method);
      for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      written.insert(upper + " " + std::string(path));
      EXPECT_TRUE(operation.at("responses").is_object());
    }
  EXPECT_EQ(served, written);
}

std::set<std::string> Names(const json::object& object) {
  std::set<std::string> names;
  for (const auto& member : object) names.insert(std::string(member.key()));
  return names;
}

std::set<std::string> Properties(const json::object& document, const std::string& schema) {
  return Names(document.at("components").at("schemas").at(schema).at("properties").as_object());
}

TEST(OpenApiTest, HasTheNamesOfWhatIsGiven) {
  const json::object document = ReadDocument();
  StationState state;
  state.outputs.emplace_back().shown.pages.emplace_back();
  const json::object service = JsonOf(state, std::chrono::hours(1));
  EXPECT_EQ(Names(service), Properties(document, "Service"));
  EXPECT_EQ(Names(service.at("current").as_object()), Properties(document, "Item"));
  const json::value& output = service.at("outputs").at(0);
  EXPECT_EQ(Names(output.as_object()), Properties(document, "Output"));
  EXPECT_EQ(Names(output.at("pages").at(0).as_object()), Properties(document, "Page"));
  for (const char* part : {"source", "panels", "presenter", "show"})
    EXPECT_EQ(Names(service.at(part).as_object()), Names(document.at("components")
                                                             .at("schemas")
                                                             .at("Service")
                                                             .at("properties")
                                                             .at(part)
                                                             .at("properties")
                                                             .as_object()))
        << part;
}

}  // namespace
}  // namespace zeb
