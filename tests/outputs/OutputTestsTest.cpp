// The tests of outputs against servers, files and ports that do what can go wrong.
#include <gtest/gtest.h>

#include "outputs/OutputTable.h"
#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/FileTest.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/web/clsZEBWebOutput.h"
#include "platform/simulated/SimulatedFtp.h"
#include "platform/simulated/SimulatedSerialPort.h"
#include "tests/outputs/NetworkFixture.h"

namespace zeb {
namespace {

using Behaviour = SimulatedNetwork::HostBehaviour;
using Lines = std::vector<std::string>;

class OutputTestsTest : public testing::Test {
 protected:
  OutputTestsTest() {
    t.environment.ftp = &ftp;
    t.environment.serialPorts = &ports;
  }
  // Each step as "ok " or "no " and its text.
  Lines Test(OutputType type, const clsZEBTemplate& output) {
    Lines lines;
    EXPECT_TRUE(t.loop.RunTask([&] {
      const std::unique_ptr<OutputTest> test = MakeOutputTest(t.environment, type, output);
      ASSERT_TRUE(test);
      const MonotonicTime begun = t.loop.Monotonic();
      for (const TestStep& step : StepsOf(t.loop, *test))
        lines.push_back((step.ok ? "ok " : "no ") + step.Text());
      seconds = std::chrono::duration<double>(t.loop.Monotonic() - begun).count();
    }));
    return lines;
  }
  template <class Output>
  std::shared_ptr<Output> Make(OutputType type) {
    return std::dynamic_pointer_cast<Output>(MakeOutputFactory(t.environment)(type));
  }
  static clsFileParameters Pair(const std::string& source, const std::string& destination) {
    clsFileParameters pair;
    pair.SetSourceFileName(source);
    pair.SetDestinationFileName(destination);
    return pair;
  }

  TestEnvironment t;
  SimulatedFtp ftp;
  SimulatedSerialPorts ports{t.loop};
  double seconds = 0;
};

TEST_F(OutputTestsTest, AServerIsFoundReachedAndCheckedStepByStep) {
  ScriptedServer server(t, 80);
  ScriptedServer secure(t, 443);
  const struct {
    Behaviour behaviour;
    int port;
    bool tls;
    Lines steps;
    double most;
  } cases[] = {
      {Behaviour::kNormal, 80, false, {"ok look-up of www", "ok connection to www:80"}, 0},
      {Behaviour::kNormal,
       80,
       true,
       {"ok look-up of www", "ok connection to www:443", "ok TLS with www:443"},
       0},
      {Behaviour::kUnknownName, 80, false, {"no look-up of www: cannot find the host 'www'"}, 0},
      {Behaviour::kRefuses,
       80,
       false,
       {"ok look-up of www", "no connection to www:80: cannot connect to www:80: connection refused"},
       0},
      {Behaviour::kHangs,
       80,
       false,
       {"ok look-up of www", "no connection to www:80: no answer within 10 seconds"},
       10},
      {Behaviour::kWrongCertificate,
       80,
       true,
       {"ok look-up of www", "ok connection to www:443",
        "no TLS with www:443: cannot connect to www:443: wrong certificate"},
       0},
      {Behaviour::kNormal, 0, false, {"no connection to www:0: a port is a number from 1 to 65535"}, 0},
  };
  for (const auto& c : cases) {
    t.network.SetHost("www", c.behaviour);
    const auto output = Make<clsZEBHTTPOutput>(OutputType::kHTTP);
    output->settings.ServerName = "www";
    output->settings.ServerPort = c.port;
    output->settings.UseTLS = c.tls;
    EXPECT_EQ(Test(OutputType::kHTTP, *output), c.steps);
    EXPECT_LE(seconds, c.most) << c.steps.back();
  }
  for (const std::string& request : server.requests) EXPECT_EQ(request, "");  // nothing that could be a title
}

TEST_F(OutputTestsTest, AnIcecastIsAskedForItsMount) {
  const struct {
    std::string answer;
    std::string step;
  } cases[] = {
      {"HTTP/1.0 200 "
       "OK\r\n\r\n{\"source\":{\"listenurl\":\"http://x:8000/live\",\"stream_start_iso8601\":\"2026-11-"
       "25T08:00:00Z\"}}",
       "ok source of the mount /live: since 2026-11-25T08:00:00Z"},
      {"HTTP/1.0 200 OK\r\n\r\n{\"icestats\":{}}",
       "no source of the mount /live: there is none, so titles are not taken"},
      {"HTTP/1.0 404 Not Found\r\n\r\n", "ok status page of the server: 'HTTP/1.0 404 Not Found'"},
      {"", "ok status page of the server: no answer within a second"},
  };
  ScriptedServer server(t, 8000);
  const auto output = Make<clsZEBEncoderOutput>(OutputType::kEncoder);
  output->settings.EncoderType = kShoutcast;
  output->settings.SHOUTCastServerName = "ice";
  output->settings.IcecastMount = "/live";
  output->settings.SHOUTCastServerPassword = "secret";
  for (const auto& c : cases) {
    server.answer = c.answer;
    const Lines expected = {"ok look-up of ice", "ok connection to ice:8000", c.step};
    EXPECT_EQ(Test(OutputType::kEncoder, *output), expected);
  }
  for (const std::string& request : server.requests) EXPECT_EQ(request.find("secret"), std::string::npos);
  output->settings.IcecastMount.clear();
  EXPECT_EQ(Test(OutputType::kEncoder, *output).size(), 2U);
  output->settings.EncoderType = kAsfEncoder;
  EXPECT_EQ(Test(OutputType::kEncoder, *output),
            Lines{"no encoder: encoders of this kind are not available on this platform"});
}

TEST_F(OutputTestsTest, OfAFileOutputEachPairIsTried) {
  t.files.Put("/data/a.html", "a");
  t.files.Put("/srv/old.html", "old");
  t.files.Put("/closed/x", "");
  t.files.fail = [](const std::string&, const std::string& path) {
    return path.starts_with("/closed/") ? "Permission denied" : "";
  };
  const auto output = Make<clsZEBFileOutput>(OutputType::kFile);
  EXPECT_EQ(Test(OutputType::kFile, *output),
            Lines{"no files: the output has no pair of a template and a file"});
  for (const auto& [source, place] :
       std::initializer_list<std::pair<const char*, const char*>>{{"a.html", "/srv/old.html"},
                                                                  {"a.html", "/srv/new.html"},
                                                                  {"gone.html", "/srv/b"},
                                                                  {"a.html", "/closed/page"},
                                                                  {"a.html", "/nowhere/page"},
                                                                  {"a.html", ""}})
    output->AddUpdateFile(Pair(source, place));
  const Lines lines = Test(OutputType::kFile, *output);
  ASSERT_EQ(lines.size(), 12U);
  const char* const begins[] = {"ok template '/data/a.html'",
                                "ok writing beside '/srv/old.html'",
                                "ok template",
                                "ok writing beside '/srv/new.html'",
                                "no template '/data/gone.html': ",
                                "ok writing beside '/srv/b'",
                                "ok template",
                                "no writing beside '/closed/page': cannot write ",
                                "ok template",
                                "no writing beside '/nowhere/page': ",
                                "ok template",
                                "no page: no file is set for the template '/data/a.html'"};
  for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_TRUE(lines[i].starts_with(begins[i])) << lines[i];
  EXPECT_EQ(t.files.Contents("/srv/old.html"), "old");
  EXPECT_EQ(t.files.List("/srv").Value(), Lines{"old.html"});
}

TEST_F(OutputTestsTest, AShareThatHangsEndsTheTestInTime) {
  t.files.Put("/data/a.html", "a");
  t.files.fail = [this](const std::string& operation, const std::string&) {
    if (operation == "Read") t.loop.Wait(std::chrono::hours(1));
    return "";
  };
  const auto output = Make<clsZEBFileOutput>(OutputType::kFile);
  for (int i = 0; i < 5; ++i) output->AddUpdateFile(Pair("a.html", "/srv/a"));
  EXPECT_EQ(
      Test(OutputType::kFile, *output),
      Lines{"no template '/data/a.html': '/data/a.html' has not answered for 10 seconds; check the disk or "
            "share"});
  EXPECT_EQ(seconds, 10);
}

TEST_F(OutputTestsTest, AnFtpServerIsTriedUpToTheRights) {
  ScriptedServer server(t, 21);
  const auto output = Make<clsZEBWebOutput>(OutputType::kWeb);
  output->settings.FTPServerName = "ftp";
  output->settings.FTPUsername = "radio";
  for (const char* page : {"/www/now.htm", "/www/next.htm", "/w/now.htm"})
    output->AddUpdateFile(Pair("a", page));
  ftp.files["/www/now.htm"] = "on air";
  const Lines begin = {"ok look-up of ftp", "ok connection to ftp:21"};
  const auto expect = [&](Lines steps) {
    steps.insert(steps.begin(), begin.begin(), begin.end());
    EXPECT_EQ(Test(OutputType::kWeb, *output), steps);
    EXPECT_EQ(ftp.files.size(), 1U);  // nothing stays there
  };
  expect({"ok log-on as 'radio'", "ok looking for '/w/now.htm': not there yet",
          "ok storing '/w/now.htm.zebtest'", "ok deleting '/w/now.htm.zebtest'",
          "ok looking for '/www/now.htm'", "ok storing '/www/now.htm.zebtest'",
          "ok deleting '/www/now.htm.zebtest'"});
  ftp.fail = [](const std::string& operation, const std::string&) {
    return operation == "Connect" ? "530 Login incorrect." : "";
  };
  expect({"no log-on as 'radio': 530 Login incorrect."});
  ftp.fail = [](const std::string& operation, const std::string& path) {
    return operation == "Upload" && path.starts_with("/w/") ? "553 Could not create file." : "";
  };
  expect({"ok log-on as 'radio'", "ok looking for '/w/now.htm': not there yet",
          "no storing '/w/now.htm.zebtest': 553 Could not create file.", "ok looking for '/www/now.htm'",
          "ok storing '/www/now.htm.zebtest'", "ok deleting '/www/now.htm.zebtest'"});
  ftp.fail = [this](const std::string& operation, const std::string&) {
    if (operation == "Connect") t.loop.Wait(std::chrono::hours(1));
    return "";
  };
  EXPECT_EQ(Test(OutputType::kWeb, *output).back(),
            "no log-on as 'radio': logging on: 'ftp' has not answered for 15 s");
  EXPECT_LE(seconds, 30);
}

TEST_F(OutputTestsTest, ASerialPortIsOpenedUnlessTheOutputHasIt) {
  const std::string port = "port 1, '/dev/rds'";
  t.hive.WriteText(t.environment.settingsRoot, "CommPortDevice1", "/dev/rds");
  const auto output = Make<clsZEBSerialOutput>(OutputType::kSerial);
  const Lines missing = {"ok line settings '9600,n,8,1'", "no " + port + ": there is no such device"};
  EXPECT_EQ(Test(OutputType::kSerial, *output), missing);
  t.files.PutSpecial("/dev/rds");
  const Lines good = {"ok line settings '9600,n,8,1'", "ok " + port, "ok opening " + port};
  EXPECT_EQ(Test(OutputType::kSerial, *output), good);
  EXPECT_FALSE(ports.made.back()->PortOpen());
  EXPECT_EQ(ports.made.back()->all, "");
  output->settings.Settings = "9600,x";
  EXPECT_EQ(Test(OutputType::kSerial, *output).size(), 1U);
  output->settings.Settings = "9600,n,8,1";
  const auto running = ports.MakePort();
  ASSERT_TRUE(output->StartOutput(running));
  EXPECT_EQ(Test(OutputType::kSerial, *output),
            Lines{"ok " + port + ": the running output has it open; it is not opened a second time"});
  EXPECT_EQ(ports.made.size(), 2U);
  t.environment.serialPorts = nullptr;
  output->StopOutput();
  EXPECT_EQ(Test(OutputType::kSerial, *output).back(),
            "no opening " + port + ": this program has no serial ports");
}

TEST_F(OutputTestsTest, ALabelServerIsLoggedOnTo) {
  const struct {
    std::string answer, step;
  } cases[] = {
      {"OK\r\n", "ok log-on as 'Demo FM'"},
      {"ERROR no such service\r\n", "no log-on as 'Demo FM': dab refused the log-on: no such service"},
      {"220 ready\r\n", "no log-on as 'Demo FM': dab does not speak the label protocol: '220 ready'"},
      {"", "no log-on as 'Demo FM': dab does not answer"},
  };
  ScriptedServer server(t, 4000);
  const auto output = Make<clsZEBDABOutput>(OutputType::kDAB);
  output->settings.ServerName = "dab";
  output->settings.ServiceName = "Demo FM";
  for (const auto& c : cases) {
    server.answer = c.answer;
    EXPECT_EQ(Test(OutputType::kDAB, *output).back(), c.step);
  }
  for (const std::string& request : server.requests) EXPECT_EQ(request.find("LABEL"), std::string::npos);
  output->settings.ServerName.clear();
  EXPECT_EQ(Test(OutputType::kDAB, *output), Lines{"no connection: no server is set"});
}

TEST_F(OutputTestsTest, ManyPairsDoNotTakeForEver) {
  t.files.Put("/data/a.html", "a");
  t.files.fail = [this](const std::string& operation, const std::string&) {
    if (operation == "Read") t.loop.Wait(std::chrono::seconds(3));
    return "";
  };
  const auto output = Make<clsZEBFileOutput>(OutputType::kFile);
  for (int i = 0; i < 1000; ++i) output->AddUpdateFile(Pair("a.html", "/data/page"));
  const Lines lines = Test(OutputType::kFile, *output);
  EXPECT_EQ(lines.back(), "no the rest: not tried, for the test took too long");
  EXPECT_LE(seconds, 30);
}

}  // namespace
}  // namespace zeb
