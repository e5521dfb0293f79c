// Whether the public sees what was published: on simulated sockets and time.
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "tests/outputs/NetworkFixture.h"
#include "tests/status/BoardFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

std::string Answer(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// A stream whose listeners are sent a title after each 8 bytes of sound.
std::string Stream(const std::string& title) {
  std::string block = "StreamTitle='" + title + "';";
  block.resize((block.size() + 15) / 16 * 16);
  return std::string("ICY 200 OK\r\nicy-metaint:8\r\n\r\n........") + static_cast<char>(block.size() / 16) +
         block + "........" + '\0' + "....";
}

class ProofOfAirTest : public BoardTest {
 protected:
  ProofOfAirTest() {
    www.answerTo = [this](const std::string& request) {
      requests.push_back(request);
      return page();
    };
  }
  // What the public gets is what lies in the folder, unless a test says otherwise.
  std::function<std::string()> page = [this] { return Answer(t.files.Contents("/w/now.txt")); };

  std::shared_ptr<clsZEBFileOutput> AddFile() {
    const auto output = Make<clsZEBFileOutput>(OutputType::kFile);
    clsFileParameters pair = Pair("/w/now.txt");
    pair.VerifyURL = "http://www.station.fm/now.txt";
    output->AddUpdateFile(pair);
    Add(OutputType::kFile, output);
    return output;
  }
  std::vector<std::string> Notes() { return std::exchange(t.person.notes, {}); }

  ScriptedServer www{t, 80};
  std::vector<std::string> requests;
};

TEST_F(ProofOfAirTest, APageThatThePublicSeesIsOnAir) {
  AddFile();
  Publish("One");
  t.loop.RunFor(900ms);
  EXPECT_TRUE(requests.empty());  // an update is never held up, and a server gets its moment
  t.loop.RunFor(10s);
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_EQ(requests[0].substr(0, 46), "GET /now.txt HTTP/1.1\r\nHost: www.station.fm\r\nU");
  EXPECT_EQ(Output().onAir, 2500ms);
  EXPECT_EQ(Output().severity, Severity::kOk);
  Publish("One");  // the same bytes are not asked for again
  t.loop.RunFor(1min);
  EXPECT_EQ(requests.size(), 1U);
  Publish("Two");
  t.loop.RunFor(500ms);
  EXPECT_FALSE(Output().onAir);
  t.loop.RunFor(10s);
  EXPECT_EQ(Output().onAir, 2500ms);
}

TEST_F(ProofOfAirTest, AMismatchIsAProblemOnceItHasLastedWithBothTexts) {
  AddFile();
  page = [] { return Answer("Yesterday\n"); };
  Publish("One");
  t.loop.RunFor(29s);
  EXPECT_EQ(Output().problem, "");
  EXPECT_EQ(Output().severity, Severity::kOk);
  Notes();
  t.loop.RunFor(4s);
  const std::string why = "'http://www.station.fm/now.txt' shows 'Yesterday', published was 'One -'";
  EXPECT_EQ(Output().problem, why);
  EXPECT_EQ(Output().severity, Severity::kFailing);
  EXPECT_FALSE(Output().stale);
  EXPECT_EQ(t.loop.Now() - Output().failingSince.value(), 32s);
  EXPECT_EQ(Notes(), std::vector<std::string>{"Demo FM: File 1: " + why});
  ASSERT_EQ(board.Troubles().size(), 1U);
  EXPECT_EQ(board.Troubles()[0].problem, why);
  // New items do not end it: what the public sees does.
  Publish("Two");
  t.loop.RunFor(2s);
  EXPECT_EQ(Output().severity, Severity::kFailing);
  page = [this] { return Answer(t.files.Contents("/w/now.txt")); };
  t.loop.RunFor(1min);
  EXPECT_EQ(Output().problem, "");
  EXPECT_EQ(Output().severity, Severity::kOk);
  EXPECT_TRUE(Output().onAir);
  EXPECT_EQ(Notes(), std::vector<std::string>{"Demo FM: File 1 is seen by the public again"});
}

TEST_F(ProofOfAirTest, NeverASecondConnectionWhileOneRuns) {
  AddFile();
  page = [] { return std::string(); };  // it takes the request and says nothing
  Publish("One");
  for (int i = 0; i < 100; ++i) {
    t.loop.RunFor(700ms);
    Publish("Item " + std::to_string(i));
    EXPECT_LE(www.connectedAt.size(), www.closedAt.size() + 1);
    t.loop.RunFor(10ms);
    EXPECT_EQ(t.files.Contents("/w/now.txt").substr(0, 5), "Item ");  // at once, whatever hangs
  }
  EXPECT_GT(www.connectedAt.size(), 5U);
  EXPECT_NE(Output().problem.find("does not answer in time"), std::string::npos) << Output().problem;
}

TEST_F(ProofOfAirTest, AnOutputThatIsGoneIsNotLookedAt) {
  AddFile();
  page = [] { return Answer("Yesterday\n"); };
  Publish("One");
  t.loop.RunFor(10s);
  const std::size_t before = requests.size();
  EXPECT_GT(before, 1U);
  service.RemoveOutput(OutputType::kFile, 1);
  board.Changed();
  t.loop.RunFor(10min);
  EXPECT_EQ(requests.size(), before);
}

// A busy hour is no excuse: what is never right is a problem, however often something new is published.
TEST_F(ProofOfAirTest, NewerItemsDoNotHideWhatIsNeverRight) {
  AddFile();
  page = [] { return Answer("Yesterday\n"); };
  for (int i = 0; i < 8; ++i) {
    Publish("Item " + std::to_string(i));
    t.loop.RunFor(5s);
  }
  EXPECT_EQ(Output().problem, "'http://www.station.fm/now.txt' shows 'Yesterday', published was 'Item 7 -'");
}

struct PublicCase {
  std::string answer, problem;
};

TEST_F(ProofOfAirTest, WhateverAServerDoesIsToldInWords) {
  const std::string url = "'http://www.station.fm/now.txt'";
  const PublicCase cases[] = {
      {"HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n", url + " answers 'HTTP/1.1 404 Not Found'"},
      {"SSH-2.0-x\r\n\r\n", url + ": the server did not answer in HTTP, but with 'SSH-2.0-x'"},
      {"HTTP/1.1 200 OK\r\nContent-Length: 2000000\r\n\r\nx",
       url + ": the server sends more than 1048576 bytes"},
      {"HTTP/1.1 302 Found\r\nLocation: /now.txt\r\nContent-Length: 0\r\n\r\n",
       url + ": the server redirects again and again"},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n",
       url + ": the server announces a part of 'zz' bytes"},
  };
  AddFile();
  for (const PublicCase& one : cases) {
    page = [&one] { return one.answer; };
    Publish("Item " + std::to_string(&one - cases));
    t.loop.RunFor(90s);
    EXPECT_EQ(Output().problem, one.problem);
  }
  // In chunks, in pieces of a byte; then the address leads elsewhere.
  page = [] {
    return "HTTP/1.1 200 OK\r\ntransfer-encoding: chunked\r\n\r\n3\r\nOne\r\n3;x=y\r\n\n-\n\r\n0\r\n\r\n";
  };
  Publish("One");
  t.loop.RunFor(90s);
  EXPECT_EQ(Output().problem, "");
  EXPECT_TRUE(Output().onAir);
  t.network.SetHost("www.station.fm", SimulatedNetwork::HostBehaviour::kUnknownName);
  Publish("Two");
  t.loop.RunFor(90s);
  EXPECT_EQ(Output().problem.substr(0, url.size()), url);
}

TEST_F(ProofOfAirTest, APageOfTheStationMustHoldTheItemsTitle) {
  const auto output = Make<clsZEBHTTPOutput>(OutputType::kHTTP);
  output->settings.ServerName = "api";
  output->settings.VerifyURL = "http://www.station.fm/";
  Add(OutputType::kHTTP, output);
  page = [] { return Answer("<html><p>Now: Rock &amp; Roll \"x\"</p>"); };
  Publish("Rock & Roll");
  t.loop.RunFor(10s);
  EXPECT_TRUE(Output().onAir);
  Publish("Ballad");
  t.loop.RunFor(40s);
  EXPECT_EQ(Output().problem,
            "'http://www.station.fm/' does not show the title 'Ballad', but begins with '<html><p>Now: Rock "
            "&amp; Roll "
            "\"x\"</p>'");
}

class StreamProofTest : public ProofOfAirTest {
 protected:
  void AddEncoder(CharacterSet set, const std::string& mount) {
    const auto output = Make<clsZEBEncoderOutput>(OutputType::kEncoder);
    output->settings.EncoderType = kShoutcast;
    output->settings.SHOUTCastServerName = "admin";
    output->settings.SHOUTCastServerPort = 8000;
    output->settings.SimpleTextFormat = "####TEXT:<ZEB_NOW_ITEMNAME>";
    output->settings.characterSet = set;
    output->settings.IcecastMount = mount;
    output->settings.IcecastCheckSeconds = 0;
    output->settings.VerifyStreamURL = "http://listen.station.fm/live";
    Add(OutputType::kEncoder, output);
  }
  ScriptedServer admin{t, 8000};
};

TEST_F(StreamProofTest, ListensAsAPlayerDoesUntilTheTitleChanges) {
  AddEncoder(CharacterSet::kUtf8, "");
  page = [] { return Stream("Old"); };
  Publish("Zo\xC3\xAB");
  t.loop.RunFor(5s);
  ASSERT_EQ(requests.size(), 1U);
  EXPECT_NE(requests[0].find("\r\nIcy-MetaData: 1\r\n"), std::string::npos);
  EXPECT_FALSE(Output().onAir);
  EXPECT_TRUE(www.closedAt.empty());  // still listening
  t.loop.RunFor(28s);
  EXPECT_EQ(www.closedAt.size(), 1U);
  EXPECT_EQ(Output().problem,
            "'http://listen.station.fm/live' sends its listeners 'Old', published was 'Zo\xC3\xAB'");
  page = [] { return Stream("Zo\xC3\xAB"); };
  t.loop.RunFor(10s);
  EXPECT_EQ(Output().problem, "");
  EXPECT_TRUE(Output().onAir);
}

TEST_F(StreamProofTest, LettersInAnotherCharacterSetAreToldWithTheOneThatWouldBeRight) {
  AddEncoder(CharacterSet::kUtf8, "");
  page = [] { return Stream("Zo\xC3\x83\xC2\xAB"); };
  Publish("Zo\xC3\xAB");
  t.loop.RunFor(40s);
  EXPECT_EQ(Output().problem,
            "'http://listen.station.fm/live' sends its listeners 'Zo\xC3\x83\xC2\xAB', published was "
            "'Zo\xC3\xAB': the "
            "server takes UTF-8 for ISO-8859-1; set the output's CharacterSet to ISO-8859-1");
}

}  // namespace
}  // namespace zeb
