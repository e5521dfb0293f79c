// From the recorder through a real file to what people read.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "history/HistoryListing.h"
#include "history/HistoryRecord.h"
#include "history/HistoryRecorder.h"
#include "history/HistoryReplay.h"
#include "history/HistoryRequest.h"
#include "history/HistoryWhy.h"
#include "platform/common/SqliteHistory.h"
#include "platform/common/SqliteHistoryReader.h"
#include "platform/simulated/TestEnvironment.h"
#include "templates/ZEB_Class_Functions.h"
#include "tests/history/OwnFolder.h"
#include "text/MomentText.h"
#include "text/Sha256.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

clsZEBItemInfo Song(const std::string& title, const std::string& artist) {
  clsZEBItemInfo item;
  item.Edit().ItemName = title;
  item.Edit().Artists = artist;
  item.Edit().ItemType = 7;
  return item;
}

zeb::Shown::Page PageOf(const std::string& bytes) {
  return {"", bytes.size(), bytes, Sha256Text(bytes)};
}

// Monday 2 March 2026, 12:00:00, an hour ahead of UTC.
class HistoryQueriesTest : public testing::Test {
 protected:
  void SetUp() override {
    folder = MakeOwnFolder();
    path = folder + "/history.db";
    recorder = std::make_unique<HistoryRecorder>(test.environment, std::make_shared<SqliteHistory>(path),
                                                 HistoryLimits());
    snapshot.serviceNumber = 1;
    snapshot.ServiceName = "Demo FM";
    snapshot.nextItems.resize(2);
    snapshot.previousItems.resize(2);
  }
  void TearDown() override {
    recorder.reset();
    std::filesystem::remove_all(folder);
  }

  // A new current item, as the service and its intake would have it.
  void OnAir(const clsZEBItemInfo& item, const std::string& source = "port 6901, Studio 1") {
    snapshot.previousItems[1] = snapshot.previousItems[0];
    snapshot.previousItems[0] = snapshot.currentItem;
    snapshot.currentItem = item;
    recorder->ItemSet(1, "Demo FM", kHistoryCurrent, source, item);
    Update();
  }
  void Update() {
    snapshot.moment = test.loop.Now();
    update = std::make_shared<ServiceSnapshot>(snapshot);
    recorder->Updating(update, UpdateCause::kInformation);
  }
  HistoryShown Shown(const std::string& text, const std::string& problem = "") const {
    HistoryShown shown;
    shown.snapshot = update;
    shown.type = OutputType::kEncoder;
    shown.number = 1;
    shown.text = text;
    shown.problem = problem;
    shown.source.templateText = std::make_shared<std::string>("<ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>");
    shown.latency = 12345us;
    return shown;
  }
  // What the command prints; its reason when it fails.
  template <class Work>
  std::string Read(Work work) {
    test.loop.RunFor(2s);
    auto reader = SqliteHistoryReader::Open(path);
    if (!reader) return reader.Reason();
    std::ostringstream out;
    const Outcome outcome = work(*reader.Value(), out);
    return outcome ? out.str() : outcome.Reason();
  }
  std::string List(HistoryForm form, HistoryFilter filter = {}) {
    return Read([&](HistoryReader& r, std::ostream& out) { return WriteHistory(r, filter, form, out); });
  }
  std::string Songs(HistoryForm form, HistoryFilter filter = {}) {
    return Read([&](HistoryReader& r, std::ostream& out) { return WriteSongs(r, filter, form, out); });
  }
  std::string Why(const std::string& output, std::string_view at) {
    const HistoryMoment moment(ReadMomentText(at)->wall, 1h);
    return Read([&](HistoryReader& r, std::ostream& out) -> Outcome {
      const Result<WhyAnswer> answer = AskWhy(r, 1, output, moment.utc);
      if (!answer) return answer;
      WriteWhy(answer.Value(), 1, output, moment, out);
      return {};
    });
  }
  std::string Replay(const ReplayedTemplate& replayed, HistoryFilter filter = {}) {
    filter.service = 1;
    return Read([&](HistoryReader& r, std::ostream& out) { return WriteReplay(r, filter, replayed, out); });
  }
  static std::int64_t Utc(std::string_view local) {
    return HistoryMoment(ReadMomentText(local)->wall, 1h).utc;
  }

  TestEnvironment test;
  std::string folder, path;
  std::unique_ptr<HistoryRecorder> recorder;
  ServiceSnapshot snapshot;
  SnapshotPtr update;
};

TEST_F(HistoryQueriesTest, ListsWhatWasOnAirAndShown) {
  OnAir(Song("Paper \"Moons\"", "Ada, Quill"));
  test.loop.RunFor(1500ms);
  recorder->Shown(Shown("Paper \"Moons\" by Ada, Quill"));
  test.loop.RunFor(1s);
  HistoryShown page = Shown("", "");
  page.type = OutputType::kFile;
  page.number = 2;
  page.part = "/www/now.html";
  page.page = PageOf("<p>\r\nPaper");
  recorder->Shown(page);
  page.problem = "cannot open '/www/now.html': No space left on device";
  recorder->Shown(page);

  EXPECT_EQ(List(HistoryForm::kTable),
            "MOMENT               SERVICE  WHAT          SHOWN\n"
            "2026-03-02 12:00:00  1        current       Paper \"Moons\" - Ada, Quill (port 6901, Studio 1)\n"
            "2026-03-02 12:00:01  1        Encoder1      \"Paper \"Moons\" by Ada, Quill\"\n"
            "2026-03-02 12:00:02  1        File2         /www/now.html: 10 bytes, begins \"<p> Paper\"\n"
            "2026-03-02 12:00:02  1        File2         /www/now.html: FAILED: cannot open '/www/now.html': "
            "No space left on device\n");
  EXPECT_EQ(
      List(HistoryForm::kCsv),
      "moment,service,station,kind,what,part,title,artists,type,source,result,problem,text,bytes,digest,"
      "latencyMs\r\n"
      "2026-03-02 12:00:00,1,Demo FM,item,current,,\"Paper \"\"Moons\"\"\",\"Ada, Quill\",Song,"
      "\"port 6901, Studio 1\",,,,,,\r\n"
      "2026-03-02 12:00:01,1,,publication,Encoder1,,,,,,published,,\"Paper \"\"Moons\"\" by Ada, Quill\","
      "27,,12.3\r\n"
      "2026-03-02 12:00:02,1,,publication,File2,/www/now.html,,,,,published,,\"<p>\nPaper\",10," +
          PageOf("<p>\r\nPaper").digest.Text() +
          ",12.3\r\n"
          "2026-03-02 12:00:02,1,,publication,File2,/www/now.html,,,,,failed,cannot open "
          "'/www/now.html': No space left on device,\"<p>\nPaper\",," +
          PageOf("<p>\r\nPaper").digest.Text() + ",12.3\r\n");
  HistoryFilter encoder;
  encoder.output = "Encoder1";
  EXPECT_EQ(List(HistoryForm::kJson, encoder),
            "[\n{\"moment\":\"2026-03-02T12:00:01.500+01:00\",\"service\":1,\"kind\":\"publication\","
            "\"what\":\"Encoder1\",\"result\":\"published\",\"text\":\"Paper \\\"Moons\\\" by Ada, Quill\","
            "\"bytes\":27,\"latencyMs\":12.3}\n]\n");
  HistoryFilter nobody;
  nobody.service = 9;
  EXPECT_EQ(List(HistoryForm::kJson, nobody), "[]\n");
  HistoryFilter span;
  span.from = Utc("2026-03-02 12:00:01");
  span.to = Utc("2026-03-02 12:00:02");
  EXPECT_EQ(List(HistoryForm::kTable, span),
            "MOMENT               SERVICE  WHAT          SHOWN\n"
            "2026-03-02 12:00:01  1        Encoder1      \"Paper \"Moons\" by Ada, Quill\"\n");
}

TEST_F(HistoryQueriesTest, ListsMoreThanOnePiece) {
  for (int i = 0; i < 1203; ++i) {
    OnAir(Song(std::to_string(i), ""));
    recorder->Shown(Shown(std::to_string(i)));
    test.loop.RunFor(100ms);
  }
  const std::string list = List(HistoryForm::kTable);
  EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 2 * 1203 + 1);
  EXPECT_NE(list.find("1202 (port"), std::string::npos);
}

TEST_F(HistoryQueriesTest, AnswersRequestsWithTheFirstRows) {
  for (int i = 0; i < 5; ++i) {
    OnAir(Song("Song " + std::to_string(i), ""));
    test.loop.RunFor(60s);
  }
  const auto rows = [this](bool songs, int most) {
    return Read([&](HistoryReader& r, std::ostream& out) -> Outcome {
      HistoryRequest request;
      request.songs = songs;
      request.most = most;
      const Result<std::string> json = HistoryJson(r, request);
      if (!json) return json;
      out << std::count(json.Value().begin(), json.Value().end(), '{') << json.Value().substr(0, 40);
      return {};
    });
  };
  const std::string last = Read(
      [](HistoryReader& r, std::ostream& out) { return WriteLastItems(r, 1, HistoryForm::kCsv, out, 2); });
  EXPECT_LT(last.find("Song 4"), last.find("Song 3")) << last;
  EXPECT_NE(last.find("Song 3"), std::string::npos);
  EXPECT_EQ(last.find("Song 2"), std::string::npos);
  EXPECT_EQ(rows(false, 3), "3[\n{\"moment\":\"2026-03-02T12:00:00.000+01:");
  EXPECT_EQ(rows(false, 1000).substr(0, 1), "5");
  EXPECT_EQ(rows(true, 2), "2[\n{\"start\":\"2026-03-02T12:00:00.000+01:0");
  EXPECT_EQ(rows(true, 1000).substr(0, 1), "5");
}

TEST_F(HistoryQueriesTest, ReportsTheSongsThatWerePlayed) {
  clsZEBItemInfo full = Song("Paper Moons (radio edit)", "Quill");
  full.Edit().CopyrightMusicTitle = "Paper Moons";
  full.Edit().CopyrightPerformer = "Ada Quill";
  full.Edit().CopyrightRecordLabel = "Tidal, Ltd";
  full.Edit().CopyrightComposer = "A. Quill";
  full.Edit().CopyrightRecordNumber = "TD 17";
  full.Edit().CopyrightMusicDuration = 185;
  full.Edit().CopyrightTotalDuration = 200;
  OnAir(full);
  test.loop.RunFor(60s);
  full.Edit().Notes = "sent again, with notes";
  OnAir(full);
  test.loop.RunFor(100s);
  clsZEBItemInfo advert = Song("Buy", "");
  advert.Edit().ItemType = 4;
  OnAir(advert);
  test.loop.RunFor(30s);
  OnAir(Song("Second", "Band"));
  test.loop.RunFor(204s);
  OnAir(Song("Third", "Band"));

  EXPECT_EQ(Songs(HistoryForm::kCsv),
            "start,length,service,title,artists,label,composer,recordNumber\r\n"
            "2026-03-02 12:00:00,00:03:05,1,Paper Moons,Ada Quill,\"Tidal, Ltd\",A. Quill,TD 17\r\n"
            "2026-03-02 12:03:10,00:03:24,1,Second,Band,,,\r\n"
            "2026-03-02 12:06:34,,1,Third,Band,,,\r\n");
  // A song that begins in the span and ends behind it.
  HistoryFilter span;
  span.from = Utc("2026-03-02 12:01");
  span.to = Utc("2026-03-02 12:05");
  EXPECT_EQ(Songs(HistoryForm::kCsv, span),
            "start,length,service,title,artists,label,composer,recordNumber\r\n"
            "2026-03-02 12:01:00,00:03:05,1,Paper Moons,Ada Quill,\"Tidal, Ltd\",A. Quill,TD 17\r\n"
            "2026-03-02 12:03:10,00:03:24,1,Second,Band,,,\r\n");
}

TEST_F(HistoryQueriesTest, TellsWhatWasShownAndWhy) {
  OnAir(Song("First", "Ada"));
  recorder->Shown(Shown("First by Ada"));
  test.loop.RunFor(180s);
  OnAir(Song("Second", "Band"), "file");
  recorder->Shown(Shown("", "cannot connect to stream:8000: Connection refused"));
  test.loop.RunFor(5s);
  recorder->Shown(Shown("", "cannot connect to stream:8000: timed out"));
  test.loop.RunFor(10s);
  recorder->Shown(Shown("Second by Band"));
  test.loop.RunFor(165s);
  OnAir(Song("Third", "Ada"));
  recorder->Shown(Shown("", "mount '/live' is gone"));

  EXPECT_EQ(Why("Encoder1", "2026-03-02 12:04"),
            "Service 1 (Demo FM), Encoder1, at 2026-03-02 12:04:00\n"
            "  shown     Second by Band\n"
            "  since     2026-03-02 12:03:15, 12.3 ms after the information\n"
            "  until     now, as far as the history goes\n"
            "  item      Second - Band (Song)\n"
            "  arrived   2026-03-02 12:03:00, from file\n"
            "  left      2026-03-02 12:06:00\n"
            "  template  <ZEB_NOW_ITEMNAME> by <ZEB_NOW_ARTISTS>\n"
            "  expanded  Second by Band\n"
            "  before    2026-03-02 12:03:00: cannot connect to stream:8000: Connection refused\n"
            "  before    2026-03-02 12:03:05: cannot connect to stream:8000: timed out\n");
  // While the new one fails, the old one stands.
  const std::string stale = Why("Encoder1", "2026-03-02 12:03:10");
  EXPECT_NE(stale.find("  shown     First by Ada\n"), std::string::npos) << stale;
  EXPECT_NE(stale.find("  until     2026-03-02 12:03:15\n"), std::string::npos) << stale;
  EXPECT_NE(stale.find("  left      2026-03-02 12:03:00\n"), std::string::npos) << stale;
  EXPECT_NE(
      stale.find("  failing   2026-03-02 12:03:00: cannot connect to stream:8000: Connection refused\n"),
      std::string::npos)
      << stale;
  EXPECT_NE(Why("Encoder1", "2026-03-02 12:06:01").find("  failing   2026-03-02 12:06:00: mount"),
            std::string::npos);
  EXPECT_EQ(Why("Encoder1", "2026-03-02 11:00"),
            "Service 1, Encoder1, at 2026-03-02 11:00:00\n  shown     nothing had been published\n");
  EXPECT_EQ(Why("File7", "2026-03-02 12:04"),
            "the history knows no output File7 of service 1; it knows Encoder1");
}

TEST_F(HistoryQueriesTest, TellsEachPageOfAnOutput) {
  OnAir(Song("First", "Ada"));
  HistoryShown page = Shown("");
  page.type = OutputType::kFile;
  page.source.templateText =
      std::make_shared<std::string>("<h1>&lt;ZEB_NOW_ITEMNAME&gt;</h1>\r\n<ZEB_SPECIAL_CURRENTDATETIMEXML>");
  for (const char* part : {"/www/a.html", "/www/b.html"}) {
    page.part = part;
    page.page = PageOf("<h1>First</h1>\r\n2026-03-02T12:00:00");
    recorder->Shown(page);
  }
  const std::string why = Why("File1", "2026-03-02 12:00");
  EXPECT_NE(why.find("File1 /www/a.html, at"), std::string::npos) << why;
  EXPECT_NE(why.find("File1 /www/b.html, at"), std::string::npos);
  EXPECT_NE(why.find("  shown     35 bytes, SHA-256 " + page.page->digest.Text() +
                     "\n  begins    <h1>First</h1>\n"
                     "            2026-03-02T12:00:00\n"),
            std::string::npos);
  EXPECT_NE(why.find("  expanded  <h1>First</h1>\n            2026-03-02T12:00:00\n"), std::string::npos);
}

TEST_F(HistoryQueriesTest, CutsLongTemplates) {
  for (const int lines : {15, 16, 17}) {
    OnAir(Song("Song " + std::to_string(lines), "Ada"));
    std::string text;
    for (int i = 1; i <= lines; ++i) text += "line " + std::to_string(i) + (i < lines ? "\n" : "");
    HistoryShown shown = Shown("x" + std::to_string(lines));
    shown.source.templateText = std::make_shared<std::string>(text);
    recorder->Shown(shown);
    const std::string why = Why("Encoder1", "2026-03-02 12:30");
    const std::string more = lines == 15   ? "            line 15\n  expanded"
                             : lines == 16 ? "            (1 more line: --full)\n  expanded"
                                           : "            (2 more lines: --full)\n  expanded";
    EXPECT_NE(why.find("            line 15\n"), std::string::npos) << why;
    EXPECT_NE(why.find(more), std::string::npos) << why;
  }
}

TEST_F(HistoryQueriesTest, ReplaysATemplateAgainstWhatWasKnown) {
  clsZEBItemInfo first = Song("First", "Ada");
  first.AddPictureFile("/p/a.jpg");
  snapshot.nextItems[1] = Song("Far", "");
  snapshot.PresenterFullName = "Zoë";
  OnAir(first);
  test.loop.RunFor(60s);
  Update();  // nothing new
  test.loop.RunFor(60s);
  OnAir(Song("Second", "Band"));
  test.loop.RunFor(60s);
  snapshot.ShowTitle = "Late";
  Update();

  EXPECT_EQ(Replay({"<ZEB_NOW_ITEMNAME>, then <ZEB_NEXT2_ITEMNAME>", ""}),
            "2026-03-02 12:00:00  First, then Far\n2026-03-02 12:02:00  Second, then Far\n");
  EXPECT_EQ(Replay({"<ZEB_SPECIAL_SHOWTITLE>/<ZEB_SPECIAL_PRESENTERFULLNAME>/<ZEB_SPECIAL_SERVICENAME>", ""}),
            "2026-03-02 12:00:00  /Zoë/Demo FM\n2026-03-02 12:03:00  Late/Zoë/Demo FM\n");
  EXPECT_EQ(Replay({"<ZEB_NOW_PICTUREFILENAME> <ZEB_PREV_ITEMNAME>"}),
            "2026-03-02 12:00:00  a.jpg \n2026-03-02 12:02:00   First\n");
  // A slot that the service does not have stays what it is, as in an output.
  EXPECT_EQ(Replay({"<ZEB_NEXT3_ITEMNAME>"}).substr(0, 21), "2026-03-02 12:00:00  ");
  EXPECT_EQ(Replay({"<p>\n&lt;ZEB_NOW_ITEMNAME&gt;\n", "", true}),
            "2026-03-02 12:00:00\n<p>\nFirst\n2026-03-02 12:02:00\n<p>\nSecond\n");
  EXPECT_EQ(
      Replay({"q=<ZEB_SIMPLETEXT>", "<ZEB_NOW_ITEMNAME> <ZEB_SPECIAL_PRESENTERFULLNAME>", false, {true}}),
      "2026-03-02 12:00:00  q=First Zo%C3%AB\n2026-03-02 12:02:00  q=Second Zo%C3%AB\n");
  HistoryFilter span;
  span.from = Utc("2026-03-02 12:01");
  EXPECT_EQ(Replay({"<ZEB_NOW_ITEMNAME>"}, span), "2026-03-02 12:02:00  Second\n");
  span.to = span.from;
  EXPECT_EQ(Replay({"<ZEB_NOW_ITEMNAME>"}, span), "the history has no update of service 1 in that span");
}

// Each entry must be the text that an output really got from the same snapshot.
TEST_F(HistoryQueriesTest, ReplaysAWholeStationExactly) {
  UploadFileList files;
  const std::string everything =
      "<ZEB_NOW_ITEMNAME>|<ZEB_NOW_ITEMTYPE>|<ZEB_NEXT1_ITEMNAME>|<ZEB_NEXT2_ARTISTS>|<ZEB_NEXT3_ITEMNAME>|"
      "<ZEB_PREVIOUS_ITEMNAME>|<ZEB_PREVIOUS2_ITEMNAME>|<ZEB_COMING_ARTISTS>|<ZEB_SPECIAL_NOW yyyy hh:nn>|"
      "[(<ZEB_COMING_ARTISTS>!=)soon]";
  snapshot.comingSoonItem = Song("Soon", "Later");
  std::string expected;
  for (int i = 0; i < 20; ++i) {
    snapshot.nextItems[static_cast<std::size_t>(i) % 2] =
        Song("N" + std::to_string(i), "A" + std::to_string(i));
    OnAir(Song("Song " + std::to_string(i), "Artist"));
    expected += "2026-03-02 12:" + std::string(i < 10 ? "0" : "") + std::to_string(i) + ":00  " +
                ExpandTemplate(everything, *update, "", files) + "\n";
    test.loop.RunFor(60s);
  }
  EXPECT_EQ(Replay({everything}), expected);
}

}  // namespace
}  // namespace zeb
