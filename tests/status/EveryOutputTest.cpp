// Each type of output, as it really works, tells the board what it shows.
#include "outputs/dab/clsZEBDABOutput.h"
#include "outputs/encoder/clsZEBEncoderOutput.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/http/clsZEBHTTPOutput.h"
#include "outputs/labels/LabelServer.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "outputs/web/clsZEBWebOutput.h"
#include "tests/outputs/NetworkFixture.h"
#include "tests/status/BoardFixture.h"
#include "text/Sha256.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

class EveryOutputTest : public BoardTest {
 protected:
  struct Case {
    std::function<void()> add;
    std::function<void(bool broken)> breakPeer;
    std::string shows;  // with "*" for the title
    Duration latency;   // of an update for information that came 1.5 s before it
  };

  void AddFile() {
    const auto output = Make<clsZEBFileOutput>(OutputType::kFile);
    output->AddUpdateFile(Pair("/w/now.txt"));
    Add(OutputType::kFile, output);
  }
  void AddWeb() {
    const auto output = Make<clsZEBWebOutput>(OutputType::kWeb);
    output->settings.FTPServerName = "www";
    output->AddUpdateFile(Pair("/w/now.txt"));
    Add(OutputType::kWeb, output);
  }
  void AddHTTP() {
    const auto output = Make<clsZEBHTTPOutput>(OutputType::kHTTP);
    output->settings.ServerName = "web";
    output->settings.ServerPort = 8080;
    output->settings.SimpleTextFormat = "?t=<ZEB_NOW_ITEMNAME>";
    Add(OutputType::kHTTP, output);
  }
  void AddEncoder() {
    const auto output = Make<clsZEBEncoderOutput>(OutputType::kEncoder);
    output->settings.EncoderType = kShoutcast;
    output->settings.SHOUTCastServerName = "web";
    output->settings.SHOUTCastServerPort = 8080;
    output->settings.SimpleTextFormat = "####TEXT:Now <ZEB_NOW_ITEMNAME>####URL:x";
    Add(OutputType::kEncoder, output);
  }
  void AddSerial() {
    const auto output = Make<clsZEBSerialOutput>(OutputType::kSerial);
    output->settings.simpleText = "RT=<ZEB_NOW_ITEMNAME>";
    output->settings.append = "{0D}{0A}";
    Add(OutputType::kSerial, output);
  }
  void AddDAB() {
    const auto output = Make<clsZEBDABOutput>(OutputType::kDAB);
    output->settings.ServerName = "mux";
    output->settings.ServerPort = "4000";
    output->settings.ServiceName = "Demo FM";
    output->settings.ServicePassword = "s3";
    output->settings.simpleText = "<ZEB_NOW_ITEMNAME>";
    Add(OutputType::kDAB, output);
  }
  void Refuse(const std::string& host, bool broken) {
    using Behaviour = SimulatedNetwork::HostBehaviour;
    t.network.SetHost(host, broken ? Behaviour::kRefuses : Behaviour::kNormal);
  }
  void FailFiles(bool broken) {
    t.files.fail = nullptr;
    if (broken)
      t.files.fail = [](const std::string&, const std::string& path) {
        return path.rfind("/w", 0) == 0 ? "disk on fire" : "";
      };
  }
  void Close(bool broken) {
    if (broken) return labels.Close();
    EXPECT_TRUE(labels.Listen("", 4000));
  }
  std::vector<Case> Cases() {
    return {
        {[this] { AddFile(); }, [this](bool broken) { FailFiles(broken); }, "*\n-", 1500ms},
        {[this] { AddWeb(); },
         [this](bool broken) {
           ftp.fail = nullptr;
           if (broken) ftp.fail = [](const std::string&, const std::string&) { return "550 no"; };
         },
         "*\n-", 1500ms},
        {[this] { AddHTTP(); }, [this](bool broken) { Refuse("web", broken); }, "?t=*", 2500ms},
        {[this] { AddEncoder(); }, [this](bool broken) { Refuse("web", broken); }, "Now *\nx", 4000ms},
        {[this] { AddSerial(); },
         [this](bool broken) {
           if (broken) return ports.made.front()->Unplug();
           ports.made.front()->PlugIn();
         },
         "RT=*", 1500ms},
        {[this] { AddDAB(); }, [this](bool broken) { Close(broken); }, "*", 1500ms},
    };
  }
  // Time passes, and at each moment the output shows what is on or counts as stale.
  void RunAndLook(Duration time, const std::string& wanted) {
    const MonotonicTime end = t.loop.Monotonic() + time;
    while (t.loop.Monotonic() < end) {
      t.loop.RunFor(100ms);
      ASSERT_TRUE(Output().stale || TextOf(Output()) == wanted) << TextOf(Output());
    }
  }

  ScriptedServer web{t, 8080};
  LabelServer labels{t.loop, t.network, t.files, t.person, {{"Demo FM", "s3", "/l/demo.txt"}}};
};

TEST_F(EveryOutputTest, ShowsThePresentItemOrIsStale) {
  EXPECT_TRUE(t.files.CreateFolders("/l"));
  EXPECT_TRUE(labels.Listen("", 4000));
  for (const Case& one : Cases()) {
    one.add();
    const std::string name = Output().Name();
    SCOPED_TRACE(name);
    const auto showing = [&](const std::string& title) {
      std::string text = one.shows;
      return text.replace(text.find('*'), 1, title);
    };
    EXPECT_EQ(TextOf(Output()), "");
    Publish("One");
    RunAndLook(5s, showing("One"));
    EXPECT_EQ(TextOf(Output()), showing("One"));
    if (!Output().shown.text.empty()) {
      ASSERT_TRUE(Output().shown.source.templateText);
      EXPECT_NE(Output().shown.source.templateText->find("<ZEB_NOW_ITEMNAME>"), std::string::npos);
    }
    EXPECT_EQ(Output().latency, one.latency);
    EXPECT_EQ(Output().severity, Severity::kOk) << Output().problem;
    EXPECT_TRUE(board.Troubles().empty());

    one.breakPeer(true);
    Publish("Two");
    RunAndLook(4s, showing("Two"));
    EXPECT_EQ(TextOf(Output()), showing("One"));
    EXPECT_TRUE(Output().stale);
    EXPECT_TRUE(Output().failingSince);
    EXPECT_EQ(Output().severity, Severity::kFailing);
    ASSERT_EQ(board.Troubles().size(), 1U);
    EXPECT_EQ(board.Troubles()[0].output, name);
    EXPECT_NE(board.Troubles()[0].problem, "");

    one.breakPeer(false);
    RunAndLook(70s, showing("Two"));
    EXPECT_EQ(TextOf(Output()), showing("Two"));
    EXPECT_FALSE(Output().stale);
    EXPECT_FALSE(Output().failingSince);
    EXPECT_EQ(Output().severity, Severity::kOk) << Output().problem;
    EXPECT_GT(Output().latency, 5s);
    for (const OutputTypeInfo& info : kOutputTypes)
      if (service.Output(info.type, 1)) service.RemoveOutput(info.type, 1);
    t.loop.RunFor(1min);
  }
}

TEST_F(EveryOutputTest, PagesAreNamedWithSizeAndDigest) {
  AddFile();
  Publish("One");
  t.loop.RunFor(1s);
  const Shown shown = Output().shown;
  ASSERT_EQ(shown.pages.size(), 1U);
  EXPECT_EQ(shown.pages[0].name, "/w/now.txt");
  EXPECT_EQ(shown.pages[0].bytes, t.files.Contents("/w/now.txt").size());
  EXPECT_EQ(shown.pages[0].snapshot, service.LastSnapshot());
  ASSERT_TRUE(shown.pages[0].source.templateText);
  EXPECT_EQ(*shown.pages[0].source.templateText, t.files.Contents("/t/now"));
  EXPECT_EQ(shown.pages[0].source.simpleText, kDefaultSimpleTextFormat);
  EXPECT_EQ(shown.pages[0].digest.Text(), "71467ea354dc0f51d4b57fd06f594d0013802f7dab9e843783eb787dcb37f4d3");
  EXPECT_EQ(t.files.Contents("/w/now.txt"), "One\n-\n");
}

// Nobody has looked at the page before: the next one's digest is worked out when somebody asks, and that of
// the one after it by the worker again.
TEST_F(EveryOutputTest, ADigestIsThatOfTheLastPageWhoeverAsked) {
  AddFile();
  for (const char* title : {"One", "Two", "Three", "Four"}) {
    Publish(title);
    t.loop.RunFor(1s);
    if (std::string_view(title) == "One") continue;
    EXPECT_EQ(Output().shown.pages[0].digest.Text(), Sha256Text(t.files.Contents("/w/now.txt"))) << title;
  }
}

TEST(PageDigest, IsTheSameWhenItIsWorkedOutLater) {
  using When = PageDigest::When;
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{5}, PageDigest::kMostKept, PageDigest::kMostKept + 1}) {
    const std::string bytes(size, 'x');
    const PageDigest later(bytes, When::kWhenAsked);
    const PageDigest copy = later;
    EXPECT_FALSE(copy.Asked());
    EXPECT_EQ(later.Text(), Sha256Text(bytes));
    EXPECT_TRUE(copy.Asked());
    EXPECT_EQ(copy.Text(), PageDigest(bytes, When::kNow).Text());
  }
  EXPECT_EQ(PageDigest().Text(), "");
}

struct TextCase {
  std::string given, text, firstLines;
};

TEST(Shown, TextIsMadeFitToBeShown) {
  const std::string longLine(5000, 'x');
  const auto notes = [](int count) {  // characters of the most bytes
    std::string text;
    while (count-- > 0) text += "\U0001F3B5";
    return text;
  };
  const TextCase cases[] = {
      {"RT=One\r\n", "RT=One", "RT=One"},
      {"a\n\n\r\nb\x01z", "a\nb z", "a\nb z"},
      {"1\n2\n3\n4\n5\n6\n7", "1\n2\n3\n4\n5\n6\n7", "1\n2\n3\n4\n5"},
      {longLine, longLine.substr(0, 2000), longLine.substr(0, 300)},
      {notes(2500), notes(2000), notes(300)},
      {"", "", ""},
  };
  for (const TextCase& one : cases) {
    EXPECT_EQ(FirstLines(one.given.substr(0, kMostFirstBytes)), one.firstLines);
    EXPECT_EQ(ShownText(one.given), one.text);
    EXPECT_EQ(FirstLines(one.given), one.firstLines);
  }
}

}  // namespace
}  // namespace zeb
