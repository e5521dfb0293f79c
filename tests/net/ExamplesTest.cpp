// Each shipped example as a station would use it: its settings imported, its templates put where they say,
// items that are hard on pages sent to a running zebd, and what comes out read by the programs that will read
// it.

#include <libxml/parser.h>
#include <libxml/xpath.h>

#include <boost/json.hpp>

#include "dialogs/TemplateLint.h"
#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

const std::string kExamples = ZEB_SOURCE_DIR "/examples/";
constexpr char kTitle[] = "A & B <i>\"x\"</i> [live] ]]> Ærø";  // as it is to arrive

std::string Song(const std::string& title, const std::string& artist) {
  const std::string escaped = [&] {
    std::string text;
    for (const char c : title) text += c == '"' ? "{22}" : std::string(1, c);
    return text;
  }();
  return "SET_CURRENT_ITEM IType=7 ITitle=\"" + escaped + "\" AName1=\"" + artist + "\"";
}

class ExamplesTest : public Station {
 protected:
  // `more`: replacements in the settings, besides those of the folders.
  void Import(const std::string& file, std::vector<std::pair<std::string, std::string>> more = {}) {
    fs::create_directories(folder / "www");
    fs::copy(kExamples, folder / "templates", fs::copy_options::recursive);
    more.insert(more.end(), {{"/var/lib/zeb/templates/", Path("templates/")},
                             {"/var/www/html/", Path("www/")},
                             {"/srv/obs/", Path("www/")}});
    std::string settings = ReadFile(kExamples + file);
    for (const auto& [what, by] : more) {
      std::size_t found = 0;
      for (std::size_t at = 0; (at = settings.find(what, at)) != std::string::npos; at += by.size(), ++found)
        settings.replace(at, what.size(), by);
      const bool folders = what.starts_with("/");
      EXPECT_TRUE(folders || found > 0) << what;
    }
    WriteFile(Path("station.reg"), settings);
    Zeb({"settings", "import", Path("station.reg")});
    Zeb({"settings", "set", "", "DashboardPort", "0", "--number"});
    Zeb({"settings", "set", "Service1", "TolvanTCPControlPort", std::to_string(control), "--number"});
  }
  void Zeb(const std::vector<std::string>& words) {
    const Finished done = Zebctl(words);
    ASSERT_EQ(done.status, 0) << done.error;
  }
  void Play(const std::string& message) {
    const Finished sent = Send({message});
    ASSERT_EQ(sent.status, 0) << sent.error;
  }
  // Two songs, an advert without an artist, and the hard one; then `more`.
  void PlayAll(const std::string& file, const std::string& more = "") {
    Play(Song("First", "Abba"));
    Play(Song("Second \\ \"q\"", "Zoë"));
    Play("SET_CURRENT_ITEM IType=4 ITitle=\"Buy it\"");
    Play(Song(kTitle, "Ada"));
    if (!more.empty()) Play(more);
    AwaitPage(file, "live");
    // The other pages of the update are written after it.
    for (const fs::directory_entry& page : fs::directory_iterator(folder / "www"))
      if (page.path().extension() != ".png") AwaitPage("www/" + page.path().filename().string(), "live");
  }
};

using Document = std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)>;

std::string XPath(const std::string& xml, const std::string& path) {
  const Document document(xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "page", nullptr,
                                        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
                          &xmlFreeDoc);
  if (!document) return "(not well-formed)";
  xmlXPathContext* context = xmlXPathNewContext(document.get());
  xmlXPathObject* found =
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(("string(" + path + ")").c_str()), context);
  const std::string text = reinterpret_cast<const char*>(found->stringval);
  xmlXPathFreeObject(found);
  xmlXPathFreeContext(context);
  return text;
}

TEST_F(ExamplesTest, NoTemplateHasAnythingThatLintWouldName) {
  int templates = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kExamples)) {
    const std::string ending = entry.path().extension();
    if (ending != ".html" && ending != ".json" && ending != ".xml" && ending != ".rss" && ending != ".txt")
      continue;
    const std::string bytes = ReadFile(entry.path());
    if (bytes.find("<ZEB_") == std::string::npos) continue;
    ++templates;
    for (const LintFinding& found : LintTemplate(bytes, entry.path().string(), "auto"))
      ADD_FAILURE() << entry.path() << ':' << found.line << ':' << found.column << ": " << found.text;
  }
  EXPECT_GE(templates, 10);
}

TEST_F(ExamplesTest, ThePageAndItsFeedsHoldWhateverIsPlayed) {
  Import("now-playing-page/station.reg");
  WriteFile(Path("cover.png"), "\x89PNG\r\n\x1a\n picture");
  fs::permissions(Path("cover.png"), fs::perms(0644));
  Start();
  PlayAll("www/now.html");
  const json::object feed = json::parse(ReadFile(Path("www/now.json"))).as_object();
  EXPECT_EQ(feed.at("now").at("title").as_string(), kTitle);
  EXPECT_EQ(feed.at("now").at("artist").as_string(), "Ada");
  EXPECT_EQ(feed.at("now").at("type").as_string(), "Song");
  EXPECT_EQ(feed.at("station").as_string(), "Demo FM");
  EXPECT_EQ(feed.at("previous").at("1").at("title").as_string(), "Buy it");
  EXPECT_EQ(feed.at("previous").at("1").at("artist").as_string(), "");
  EXPECT_EQ(feed.at("previous").at("2").at("title").as_string(), "Second \\ \"q\"");
  EXPECT_EQ(feed.at("previous").at("6").at("title").as_string(), "");
  const std::string xml = ReadFile(Path("www/now.xml"));
  EXPECT_EQ(XPath(xml, "/nowplaying/item[@slot='now']/title"), kTitle);
  EXPECT_EQ(XPath(xml, "count(/nowplaying/item[@slot='previous'])"), "3");
  EXPECT_EQ(XPath(xml, "/nowplaying/item[@slot='previous'][3]/title"), "First");
  const std::string page = ReadFile(Path("www/now.html"));
  EXPECT_NE(page.find("<h2 id=\"title\">A &amp; B &lt;i&gt;&quot;x&quot;&lt;/i&gt; [live] ]]&gt; Ærø</h2>"),
            std::string::npos);
  EXPECT_EQ(page.find("<ZEB"), std::string::npos);
  EXPECT_NE(page.find("items).filter((item)"), std::string::npos) << "its script is as it was written";
  Play("SET_CURRENT_ITEM IType=7 ITitle=\"With a picture\" PicFName=\"" + Path("cover.png") + "\"");
  AwaitPage("www/now.json", "cover.png");
  EXPECT_EQ(ReadFile(Path("www/cover.png")), ReadFile(Path("cover.png")));
}

TEST_F(ExamplesTest, TheSongListIsAFeedOfSongsOnly) {
  Import("song-list/station.reg");
  Start();
  PlayAll("www/songs.rss", Song("Last", "Abba"));
  const std::string feed = ReadFile(Path("www/songs.rss"));
  EXPECT_EQ(XPath(feed, "/rss/@version"), "2.0");
  EXPECT_EQ(XPath(feed, "count(/rss/channel/item)"), "3") << "not what is on air, nor the advert";
  EXPECT_EQ(XPath(feed, "/rss/channel/item[1]/title"), std::string(kTitle) + " - Ada");
  EXPECT_EQ(XPath(feed, "count(/rss/channel/item/guid[. = preceding::guid])"), "0");
}

TEST_F(ExamplesTest, TheDisplayAndTheTextForObsShowTheTitle) {
  Import("signage/station.reg");
  Start();
  PlayAll("www/signage.html");
  EXPECT_NE(ReadFile(Path("www/signage.html")).find("<h1 id=\"title\">A &amp; B &lt;i&gt;"),
            std::string::npos);
  EXPECT_EQ(json::parse(ReadFile(Path("www/now.json"))).at("now").at("title").as_string(), kTitle);
}

TEST_F(ExamplesTest, TheTextForObsIsOneLine) {
  Import("obs/station.reg");
  Start();
  PlayAll("www/nowplaying.txt");
  EXPECT_EQ(ReadFile(Path("www/nowplaying.txt")), "Ada – " + std::string(kTitle) + "\n");
  Play("SET_CURRENT_ITEM IType=4 ITitle=\"Buy it\"");
  EXPECT_EQ(AwaitPage("www/nowplaying.txt", "Demo FM"), "Demo FM\n");
}

TEST_F(ExamplesTest, TheSecondSitePublishesWhatTheFirstHears) {
  class Second : public ExamplesTest {
   public:
    void TestBody() override {}
    using ExamplesTest::Import;
    using Station::AwaitPage;
    using Station::control;
    using Station::Start;
  } second;
  second.Import("two-sites/second.reg");
  second.Start();
  Import("two-sites/first.reg", {{"second-site.example", "127.0.0.1"}});
  Zeb({"settings", "set", "Service1", "BouncePort", std::to_string(second.control), "--number"});
  Start();
  ASSERT_TRUE(zebd->WaitForError("relays to 127.0.0.1"));
  Play(Song(kTitle, "Ada"));
  EXPECT_EQ(second.AwaitPage("www/now.txt", "live"), "Ada – " + std::string(kTitle) + "\n");
}

TEST_F(ExamplesTest, StreamRdsAndDabSayTheSame) {
  const Socket stream = Socket::Listen(), encoder = Socket::Listen();
  std::string port = "0";
  WriteFile(Path("labels.ini"), "[Demo FM]\nPassword=change-me\nFileName=" + Path("label.txt") + "\n");
  Process labels({Program("zeb-labelserver"), "--config", Path("labels.ini"), "--port", port});
  ASSERT_TRUE(labels.WaitForError(" for 1 service")) << labels.error;
  const std::size_t at = labels.error.find("on port ") + 8;
  port = labels.error.substr(at, labels.error.find(' ', at) - at);
  Import("stream-rds-dab/station.reg");
  Zeb({"settings", "set", "Service1\\DAB", "ServerPort1", port, "--number"});
  Zeb({"settings", "set", "Service1\\Encoder", "SHOUTCastServerPort1", std::to_string(stream.Port()),
       "--number"});
  Zeb({"settings", "set", "Service1\\Encoder", "IcecastCheckSeconds1", "0", "--number"});
  Zeb({"settings", "set", "", "CommPortDevice1", "tcp:127.0.0.1:" + std::to_string(encoder.Port())});
  Start();
  const Socket line = encoder.Accept();
  Play(Song("Tom & Jerry + 50 %", "Zoë"));
  const Socket server = stream.Accept();
  ASSERT_TRUE(server.Valid());
  std::string request, sent;
  EXPECT_TRUE(server.ReceiveUntil(request, "\r\n\r\n"));
  EXPECT_NE(request.find("mount=%2Flive.mp3"), std::string::npos) << request;
  EXPECT_NE(request.find("song=Zo%C3%AB%20-%20Tom%20%26%20Jerry%20%2B%2050%20%25"), std::string::npos)
      << request;
  EXPECT_TRUE(line.ReceiveUntil(sent, "\r\n"));
  EXPECT_EQ(sent, "TEXT=Zo\x93 - Tom & Jerry + 50 %\r\n");
  for (int tries = 0; tries < 200 && ReadFile(Path("label.txt")).empty(); ++tries)
    zebd->WaitForError("\n", Seconds(0.1));
  EXPECT_EQ(ReadFile(Path("label.txt")), "Tom & Jerry + 50 % by Zoë");
}

TEST_F(ExamplesTest, ReportsCarryTheFieldsThatTheDirectoriesName) {
  const Socket first = Socket::Listen(), second = Socket::Listen();
  Import("reports/station.reg", {{"air.radiotime.com", "127.0.0.1"}, {"spinitron.com", "127.0.0.1"}});
  Zeb({"settings", "set", "Service1\\HTTPRequest", "ServerPort1", std::to_string(first.Port()), "--number"});
  Zeb({"settings", "set", "Service1\\HTTPRequest", "ServerPort2", std::to_string(second.Port()), "--number"});
  Zeb({"settings", "set", "Service1\\HTTPRequest", "UseTLS2", "0", "--number"});
  Start();
  Play("SET_CURRENT_ITEM IType=7 ITitle=\"Tom & Jerry\" AName1=\"Zoë\" Album=\"A=B\"");
  const Socket get = first.Accept(), post = second.Accept();
  std::string request, body;
  ASSERT_TRUE(get.ReceiveUntil(request, "\r\n\r\n"));
  EXPECT_TRUE(
      request.starts_with("GET /Playing.ashx?partnerId=YOUR-PARTNER-ID&partnerKey=YOUR-PARTNER-KEY"
                          "&id=YOUR-STATION-ID&title=Tom+%26+Jerry&artist=Zo%C3%AB&album="))
      << request;
  ASSERT_TRUE(post.ReceiveUntil(body, "&composer="));
  EXPECT_TRUE(body.starts_with("POST /api/spins?access-token=YOUR-API-KEY HTTP/1.1\r\n")) << body;
  EXPECT_NE(body.find("\r\n\r\nlive=1&song=Tom+%26+Jerry&artist=Zo%C3%AB&release="), std::string::npos)
      << body;
}

}  // namespace
}  // namespace zeb
