#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

#include "outputs/file/NumberedVersions.h"
#include "tests/outputs/FileFixture.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

TEST_F(FileOutputTest, PublishesEveryPairAndLeavesNothingElse) {
  t.files.Put("/data/rel", "&lt;ZEB_NOW_ITEMNAME&gt; &lt;b&gt; %3cZEB_NOW_ITEMNAME%3e");
  EXPECT_EQ(output->GetInformationString(), "No files to update");
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  EXPECT_EQ(output->GetInformationString(), "Update 1 file");
  output->AddUpdateFile(Pair("rel", "out"));
  EXPECT_EQ(output->GetInformationString(), "Update 2 files");
  Update();
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  EXPECT_EQ(t.files.Contents("/data/out"), "One &lt;b&gt; One");
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{"a"}));
  EXPECT_EQ(Names("/data"), (std::vector<std::string>{"out", "rel"}));
  EXPECT_TRUE(Names("/tmp").empty());
  EXPECT_EQ(StatusText(), "OK");
  EXPECT_EQ(output->ProblemText(), "");
  EXPECT_EQ(output->GetShortTypeDescription(), "File");
}

TEST_F(FileOutputTest, AnEditedTemplateIsSeenAtOnce) {
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  for (int i = 0; i < 3; ++i, t.files.now += 2s) Update();
  FailOn("Read", "/t/a");  // it is not read any more
  service.SetCurrentItem(Song("Two"));
  Update();
  EXPECT_EQ(t.files.Contents("/w/a"), "Two!");
  t.files.fail = nullptr;
  t.files.Put("/t/a", "<ZEB_NOW_ITEMNAME>?");
  service.SetCurrentItem(Song("Three"));
  Update();
  EXPECT_EQ(t.files.Contents("/w/a"), "Three?");
}

TEST_F(FileOutputTest, APageThatIsTooLargeIsRefusedAlone) {
  t.files.Put("/w/a", "old");
  std::string tags;
  for (int i = 0; i < 17; ++i) tags += "<ZEB_NOW_ITEMNAME>";
  t.files.Put("/t/large", tags);
  output->AddUpdateFile(Pair("/t/large", "/w/a"));
  output->AddUpdateFile(Pair("/t/a", "/w/b"));
  service.SetCurrentItem(Song(std::string(1 << 20, 'x')));
  Update();
  EXPECT_EQ(t.files.Contents("/w/a"), "old");
  EXPECT_EQ(t.files.Contents("/w/b").size(), (1u << 20) + 1);
  EXPECT_EQ(
      output->ProblemText(),
      "the page of '/t/large' would be larger than 16777216 bytes; shorten the template or what its tags "
      "stand for");
  service.SetCurrentItem(Song("One"));
  Update();
  EXPECT_EQ(t.files.Contents("/w/a").size(), 17u * 3);
  EXPECT_EQ(output->ProblemText(), "");
}

// Whatever moment another program chooses to look at.
TEST_F(FileOutputTest, AReaderFindsTheOldPageOrTheNewOne) {
  clsFileParameters pair = Pair("/t/a", "/w/a.html");
  pair.UseMultipleVersions = true;
  output->AddUpdateFile(pair);
  Update();
  ASSERT_EQ(t.files.Contents("/w/a.html"), "One!");
  service.SetCurrentItem(Song("Two"));
  std::map<std::string, int> seen;
  t.files.observe = [&](const std::string&, const std::string&) {
    ASSERT_TRUE(t.files.Exists("/w/a.html"));
    ++seen[t.files.Contents("/w/a.html")];
    if (t.files.Exists("/w/a.000002.html")) {
      EXPECT_EQ(t.files.Contents("/w/a.000002.html"), "Two!");
    }
  };
  Update();
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_GT(seen["One!"], 0);
  EXPECT_GT(seen["Two!"], 0);
}

TEST_F(FileOutputTest, EachFailureHasItsStatusAndTheOthersGoOn) {
  struct Case {
    std::string operation, path;
    std::int32_t status;
    std::string text, page;
  };
  const Case cases[] = {
      {"Read", "/t/a", 6, "Source File Prob.", "old"},
      {"MakeTempFile", "TMP", 6, "Source File Prob.", "old"},
      {"Write", "/tmp/TMP", 6, "Source File Prob.", "old"},
      {"Write", "/w/a.tmp", 7, "Dest. File Prob.", "old"},
      {"Rename", "/w/a", 7, "Dest. File Prob.", "old"},
  };
  for (const Case& c : cases) {
    output = MakeOutput();
    t.files.fail = nullptr;
    t.files.Put("/w/a", "old");
    t.files.Put("/t/b", "<ZEB_NOW_ITEMNAME>?");
    ASSERT_TRUE(t.files.Delete("/w/b"));
    output->AddUpdateFile(Pair("/t/b", "/w/b"));
    output->AddUpdateFile(Pair("/t/a", "/w/a"));
    FailOn(c.operation, c.path);
    t.environment.preserveTempFiles = c.operation == "MakeTempFile" || c.path.rfind("/tmp", 0) == 0;
    Update();
    EXPECT_EQ(output->Status(), c.status) << c.operation;
    EXPECT_EQ(StatusText(), c.text) << c.operation;
    EXPECT_EQ(t.files.Contents("/w/a"), c.page) << c.operation;
    if (c.path[0] != 'T' && c.path[1] != 't') {
      EXPECT_EQ(t.files.Contents("/w/b"), "One?") << c.operation;
    }
    EXPECT_NE(output->ProblemText().find("disk on fire; check"), std::string::npos) << output->ProblemText();
    EXPECT_EQ(Names("/w").size(), t.files.Exists("/w/b") ? 2u : 1u) << c.operation;
    // Over with the cause.
    t.files.fail = nullptr;
    Update();
    EXPECT_EQ(StatusText(), "OK") << c.operation;
    EXPECT_EQ(output->ProblemText(), "") << c.operation;
    EXPECT_EQ(t.files.Contents("/w/a"), "One!") << c.operation;
  }
}

TEST_F(FileOutputTest, TheLastPairGivesTheStatusAndTheFirstFailureIsNamed) {
  output->AddUpdateFile(Pair("/t/none", "/w/1"));
  output->AddUpdateFile(Pair("/t/a", "/none/2"));
  output->AddUpdateFile(Pair("", "/w/3"));
  output->AddUpdateFile(Pair("/t/a", ""));
  output->AddUpdateFile(Pair("/t/a", "/t/a"));
  t.files.PutSpecial("/t/pipe");
  output->AddUpdateFile(Pair("/t/pipe", "/w/6"));
  output->AddUpdateFile(Pair("/t/a", "/w/ok"));
  Update();
  EXPECT_EQ(output->Status(), kStatusOK);
  EXPECT_EQ(output->ProblemText(),
            "cannot read '/t/none': No such file or directory; check the template's name and rights (and 5 "
            "more)");
  EXPECT_EQ(t.files.Contents("/t/a"), "<ZEB_NOW_ITEMNAME>!");
  EXPECT_EQ(t.files.Contents("/w/ok"), "One!");
  output->RemoveUpdateFile(7);
  Update();
  EXPECT_EQ(output->Status(), kStatusSourceFileProblem);
  t.files.Put("/t/none", "x");
  Update();
  EXPECT_NE(output->ProblemText().find("'/none/2'"), std::string::npos);
}

TEST_F(FileOutputTest, AnUpdateWithoutDuePairsChangesNothing) {
  output->AddUpdateFile(SongsOnly(Pair("/t/a", "/w/a")));
  Update();
  service.SetCurrentItem(Advert());
  t.files.operations = 0;
  Update();
  EXPECT_EQ(t.files.operations, 0);
  EXPECT_EQ(output->Status(), kStatusOK);
  EXPECT_EQ(output->LastTally().published, 0);
}

// A page that its rules keep for songs shows the song that it failed to show, not what plays when the disk
// works again; and it fails until it is really there.
TEST_F(FileOutputTest, APageThatFailedIsOwedWithTheItemsThatAskedForIt) {
  output->AddUpdateFile(SongsOnly(Pair("/t/a", "/w/a")));
  FailOn("Rename", "/w/a");
  Update();
  const std::string problem = output->ProblemText();
  EXPECT_NE(problem, "");
  service.SetCurrentItem(Advert());
  Update();
  EXPECT_EQ(output->ProblemText(), problem);
  EXPECT_EQ(output->LastTally().failed, 1);
  t.files.fail = nullptr;
  Update();
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  EXPECT_EQ(output->ProblemText(), "");
  t.files.operations = 0;
  Update();
  EXPECT_EQ(t.files.operations, 0);
}

// The share is slow, and the programme goes on meanwhile.
TEST_F(FileOutputTest, PagesOfOneUpdateShowTheMomentThatItBeganWith) {
  t.loop.SetBlockingTime(5s);
  output->AddUpdateFile(Pair("/t/a", "/w/1"));
  output->AddUpdateFile(Pair("/t/a", "/w/2"));
  output->AddUpdateFile(SongsOnly(Pair("/t/a", "/w/songs")));
  t.loop.Start("update", [&] { output->UpdateOutput(service.TakeSnapshot()); });
  t.loop.RunFor(4s);
  service.SetCurrentItem(Advert());
  output->RemoveUpdateFile(1);
  t.loop.RunFor(999ms);
  EXPECT_FALSE(t.files.Exists("/w/1"));
  t.loop.RunFor(1ms);
  for (const char* page : {"/w/1", "/w/2", "/w/songs"}) EXPECT_EQ(t.files.Contents(page), "One!") << page;
}

TEST_F(FileOutputTest, APairMayUseAnEarlierPairsPage) {
  t.files.Put("/t/frame", "<ZEB_NOW_ITEMNAME> (<<ZEB_NOW_ITEMNAME>)");
  output->AddUpdateFile(Pair("/t/frame", "/t/made"));
  output->AddUpdateFile(Pair("/t/made", "/w/page"));
  Update();
  service.SetCurrentItem(Song("Two"));
  Update();
  EXPECT_EQ(t.files.Contents("/w/page"), "Two (<<ZEB_NOW_ITEMNAME>)");
}

TEST_F(FileOutputTest, TwoOutputsTakeTurnsAtOneDestination) {
  auto other = MakeOutput();
  t.files.Put("/t/b", "other");
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  other->AddUpdateFile(Pair("/t/b", "/w//./a"));
  t.loop.SetBlockingTime(1s);
  t.loop.Start("1", [&] { output->UpdateOutput(service.TakeSnapshot()); });
  t.loop.Start("2", [&] { other->UpdateOutput(service.TakeSnapshot()); });
  t.loop.RunFor(1s);
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  t.loop.RunFor(999ms);
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  t.loop.RunFor(1ms);
  EXPECT_EQ(t.files.Contents("/w/a"), "other");
  EXPECT_EQ(other->Status(), kStatusOK);
}

TEST_F(FileOutputTest, AFaultIsReportedAndReleasesTheDestination) {
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  t.files.fail = [](const std::string& operation, const std::string&) -> std::string {
    if (operation == "Write") throw std::runtime_error("out of luck");
    return {};
  };
  Update();
  EXPECT_EQ(StatusText(), "Error");
  EXPECT_NE(output->ProblemText().find("out of luck"), std::string::npos);
  t.files.fail = nullptr;
  auto other = MakeOutput();
  other->AddUpdateFile(Pair("/t/a", "/w/a"));
  MonotonicTime before = t.loop.Monotonic();
  Update(*other);
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  EXPECT_EQ(t.loop.Monotonic(), before);
  Update();
  EXPECT_EQ(output->ProblemText(), "");
}

TEST_F(FileOutputTest, NumberedVersionsGoOnFromTheHighest) {
  t.files.Put("/w/now.000007.html", "seven");
  t.files.Put("/w/now.12.html", "no version");
  t.files.Put("/w/now.0000x9.html", "no version");
  t.files.Put("/w/other.000099.html", "another file's");
  clsFileParameters pair = Pair("/t/a", "/w/now.html");
  pair.UseMultipleVersions = true;
  output->AddUpdateFile(pair);
  auto other = MakeOutput();
  other->AddUpdateFile(pair);
  Update();
  t.files.Put("/w/now.000100.html", "not looked for again");
  Update(*other);
  FailOn("Rename", "/w/now.000010");
  Update();
  EXPECT_EQ(output->Status(), kStatusDestinationFileProblem);
  t.files.fail = nullptr;
  Update();
  for (const char* name : {"/w/now.000008.html", "/w/now.000009.html", "/w/now.000010.html", "/w/now.html"})
    EXPECT_EQ(t.files.Contents(name), "One!") << name;
  EXPECT_FALSE(t.files.Exists("/w/now.000011.html"));
  EXPECT_FALSE(t.files.Exists("/w/now.000010.html.tmp"));
  EXPECT_EQ(t.files.Contents("/w/now.000007.html"), "seven");
}

TEST(NumberedVersionsTest, Names) {
  EXPECT_EQ(NumberedVersion("/w.d/now", 3), "/w.d/now.000003");
  EXPECT_EQ(NumberedVersion("/w/.htaccess", 3), "/w/.htaccess.000003");
  EXPECT_EQ(NumberedVersion("a.tar.gz", 1'234'567), "a.tar.1234567.gz");
  EXPECT_EQ(HighestVersion("now", {"now.000003", "now.1234567", "now", "now.000004.html"}), 1'234'567);
  EXPECT_EQ(HighestVersion("a.b", {"a.000001", "a.000002.b.b", "a.9999999999999999999.b", "a..b"}), 0);
}

TEST_F(FileOutputTest, PagesKeepTheirTemplatesEncoding) {
  service.SetCurrentItem(Song("Caf\u00E9 \u017Bo\u0142w"));  // Café Żołw
  struct Case {
    std::string source, page;
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {"\xEF\xBB\xBF<ZEB_NOW_ITEMNAME>",
       "\xEF\xBB\xBF"
       "Caf\u00E9 \u017Bo\u0142w"},
      {"<meta charset=\"windows-1252\">\xE9<ZEB_NOW_ITEMNAME>",
       "<meta charset=\"windows-1252\">\xE9"
       "Caf\xE9 &#379;o&#322;w"},
      {"\xE9<ZEB_NOW_ITEMNAME>",
       "\xE9"
       "Caf\xE9 ?o?w"},
  };
  for (const Case& c : cases) {
    t.files.Put("/t/a", c.source);
    output = MakeOutput();
    output->AddUpdateFile(Pair("/t/a", "/w/a"));
    Update();
    EXPECT_EQ(t.files.Contents("/w/a"), c.page);
  }
  std::string wide = "\xFF\xFE"s;
  for (char c : std::string("<ZEB_NOW_ITEMNAME>")) wide += {c, '\0'};
  t.files.Put("/t/a", wide);
  Update();
  EXPECT_EQ(t.files.Contents("/w/a"),
            "\xFF\xFE"
            "C\0a\0f\0\xE9\0 \0\x7B\x01o\0\x42\x01w\0"s);
}

TEST_F(FileOutputTest, WebPagesGetTheirHeader) {
  t.files.Put("/t/a", "<html>\r\n<b><ZEB_NOW_ITEMNAME></b>");
  clsFileParameters pair = Pair("/t/a", "/w/a");
  pair.RefreshTagSeconds = 30;
  pair.AddNoCache = false;
  output->AddUpdateFile(pair);
  Update();
  EXPECT_EQ(
      t.files.Contents("/w/a"),
      "<html>\r\n<!-- ZEB last updated this file...12:00:00 02 March 2026 -->\r\n"
      "<meta content=\"Hexmoor ZEB " ZEB_VERSION
      "\" name=\"RE-GENERATOR\">\r\n"
      "<meta HTTP-EQUIV=\"REFRESH\" CONTENT=\"30\">\r\n<!-- End of ZEB modifications -->\r\n\r\n<b>One</b>");
}

TEST_F(FileOutputTest, AdditionalFilesGoBesideEveryPageBeforeIt) {
  t.files.Put("/pics/a.jpg", "picture a");
  t.files.Put("/pics/info.pdf", "info");
  ASSERT_TRUE(t.files.CreateFolders("/w2"));
  t.files.Put("/t/pic", "<ZEB_NOW_PICTUREFILENAME>");
  clsZEBItemInfo item = Song("One");
  item.AddPictureFile("/pics/a.jpg");
  item.AddAdditionalFile("/pics/info.pdf");
  item.AddAdditionalFile("/pics/missing.pdf");
  service.SetCurrentItem(item);
  output->AddUpdateFile(Pair("/t/pic", "/w/page"));
  output->AddUpdateFile(Pair("/t/a", "/w2/page"));
  Update();
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{"page"}));

  output->CopyAdditionalFiles = true;
  t.files.observe = [&](const std::string& operation, const std::string& path) {
    if (operation == "Rename" && path == "/w/page") {
      EXPECT_EQ(t.files.Contents("/w/a.jpg"), "picture a");
    }
  };
  Update();
  t.files.observe = nullptr;
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{"a.jpg", "info.pdf", "page"}));
  EXPECT_EQ(Names("/w2"), (std::vector<std::string>{"a.jpg", "info.pdf", "page"}));
  EXPECT_EQ(StatusText(), "OK");
  auto notes = t.person.notes;
  ASSERT_EQ(notes.size(), 1u);  // for both folders
  EXPECT_NE(notes[0].find("missing.pdf"), std::string::npos);

  // Equal files are left alone; changed ones, and all with AlwaysCopyFiles, are not.
  std::set<std::string> copied;
  t.files.observe = [&](const std::string& operation, const std::string& path) {
    if (operation == "Rename" && path.find("page") == std::string::npos) copied.insert(path);
  };
  Update();
  EXPECT_TRUE(copied.empty());
  EXPECT_EQ(t.person.notes.size(), 1u);
  t.files.Put("/pics/a.jpg", "picture b");
  Update();
  EXPECT_EQ(copied, (std::set<std::string>{"/w/a.jpg", "/w2/a.jpg"}));
  EXPECT_EQ(t.files.Contents("/w2/a.jpg"), "picture b");
  output->AlwaysCopyFiles = true;
  Update();
  EXPECT_EQ(copied.size(), 4u);
  // The list lives for one update.
  service.SetCurrentItem(Song("Two"));
  copied.clear();
  Update();
  EXPECT_TRUE(copied.empty());
  output->AddToUploadFilesList("/pics/a.jpg");
  output->AddToUploadFilesList("/pics/info.pdf");
  output->RemoveFromUploadFilesList("/PICS/INFO.pdf");
  Update();
  EXPECT_EQ(copied.size(), 2u);
}

TEST_F(FileOutputTest, APageThatCannotBePutInPlaceLeavesNothingBehind) {
  clsFileParameters pair = Pair("/t/a", "/w/a");
  pair.UseMultipleVersions = true;
  output->AddUpdateFile(pair);
  FailOn("Rename", "/w/a");
  Update();
  EXPECT_TRUE(Names("/w").empty());
  EXPECT_TRUE(Names("/tmp").empty());
  EXPECT_EQ(output->Status(), kStatusDestinationFileProblem);
}

TEST_F(FileOutputTest, KeepsACopyOfEachPageWhenAsked) {
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  t.environment.preserveTempFiles = true;
  Update();
  ASSERT_EQ(Names("/tmp").size(), 1u);
  EXPECT_EQ(Names("/tmp")[0].rfind("TMP", 0), 0u);
  EXPECT_EQ(t.files.Contents("/tmp/" + Names("/tmp")[0]), "One!");
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  // Also at the next start.
  t.files.Restart();
  EXPECT_EQ(t.files.DeleteLeftTempFiles("TMP"), 0u);
}

TEST_F(FileOutputTest, ADestinationThatIsNoFileIsRefusedByName) {
  struct Case {
    const char *name, *why;
  };
  t.files.PutSpecial("/w/pipe");
  ASSERT_TRUE(t.files.CreateFolders("/w/folder"));
  t.files.PutLink("/w/settings", "/data/settings.db");
  t.files.PutLink("/w/template", "/t/a");
  t.files.PutLink("/w/link", "template");
  const Case cases[] = {
      {"pipe", "it is a pipe, a socket or a device; choose the name of a file"},
      {"folder", "it is a folder; choose the name of a file"},
      {"settings",
       "it is a link to '/data/settings.db', and that is ZEB's data folder; let it lead to another file"},
      {"template", "it is a link to '/t/a', and that is the template itself; let it lead to another file"},
      {"link", "it is a link to 'template', and that is a link; let it lead to another file"},
  };
  const auto before = Names("/w");
  for (const Case& c : cases) {
    output = MakeOutput();
    output->AddUpdateFile(Pair("/t/a", std::string("/w/") + c.name));
    Update();
    EXPECT_EQ(output->Status(), kStatusDestinationFileProblem) << c.name;
    EXPECT_EQ(output->ProblemText(), std::string("cannot write '/w/") + c.name + "': " + c.why);
    EXPECT_EQ(output->LastTally().published, 0);
  }
  EXPECT_EQ(Names("/w"), before);
  EXPECT_FALSE(t.files.Exists("/data/settings.db"));
  EXPECT_EQ(t.files.Contents("/t/a"), "<ZEB_NOW_ITEMNAME>!");
}

TEST_F(FileOutputTest, ThePageBehindALinkIsReplacedAndItsVersionsStayBesideTheLink) {
  ASSERT_TRUE(t.files.CreateFolders("/share"));
  t.files.PutLink("/w/now.html", "/share/now.html");
  clsFileParameters pair = Pair("/t/a", "/w/now.html");
  pair.UseMultipleVersions = true;
  output->AddUpdateFile(pair);
  Update();
  service.SetCurrentItem(Song("Two"));
  Update();
  EXPECT_EQ(t.files.Contents("/share/now.html"), "Two!");
  EXPECT_EQ(Names("/share"), std::vector<std::string>{"now.html"});
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{"now.000001.html", "now.000002.html", "now.html"}));
}

// One of them knows the file by another name.
TEST_F(FileOutputTest, TwoOutputsTakeTurnsAtTheFileBehindALink) {
  t.files.Put("/t/b", "other");
  t.files.PutLink("/w/link", "a");
  output->AddUpdateFile(Pair("/t/a", "/w/a"));
  auto other = MakeOutput();
  other->AddUpdateFile(Pair("/t/b", "/w/link"));
  t.files.fail = [this](const std::string& operation, const std::string&) {
    if (operation == "Write") t.loop.Wait(1s);
    return std::string();
  };
  int writing = 0;
  t.files.observe = [&](const std::string& operation, const std::string& path) {
    if (operation == "Write" && path == "/w/a.tmp") ++writing;
  };
  t.loop.Start("1", [&] { output->UpdateOutput(service.TakeSnapshot()); });
  t.loop.Start("2", [&] { other->UpdateOutput(service.TakeSnapshot()); });
  t.loop.RunFor(1s);
  EXPECT_EQ(t.files.Contents("/w/a"), "One!");
  t.loop.RunFor(1s);
  EXPECT_EQ(t.files.Contents("/w/a"), "other");
  EXPECT_EQ(other->Status(), kStatusOK);
  EXPECT_EQ(other->Problems().size(), 0u);
  EXPECT_GT(writing, 0);
}

TEST_F(FileOutputTest, KeepsItsSettings) {
  clsFileParameters pair = Pair("/t/a", "/w/a");
  pair.RefreshTagSeconds = 15;
  output->AddUpdateFile(pair);
  output->AddUpdateFile(Pair("b", "c"));
  output->CopyAdditionalFiles = true;
  output->StoreOutputInformation(3, 2);
  const std::string key = t.environment.ServiceKey(3) + "\\File";
  EXPECT_EQ(t.hive.ReadText(key, "Output2.SourceFileName2", ""), "b");
  EXPECT_EQ(t.hive.ReadText(key, "CopyAdditionalFiles2", ""), "1");
  EXPECT_EQ(t.hive.ReadText(key, "AlwaysCopyFiles2", ""), "0");
  auto read = MakeOutput();
  read->AddUpdateFile(Pair("goes", "away"));
  read->GetOutputInformation(3, 2);
  ASSERT_EQ(read->UpdateFileCount(), 2);
  EXPECT_EQ(read->UpdateFile(1).RefreshTagSeconds, 15);
  EXPECT_EQ(read->UpdateFile(2).DestinationFileName(), "c");
  EXPECT_TRUE(read->CopyAdditionalFiles && !read->AlwaysCopyFiles);
  read->GetOutputInformation(3, 1);
  EXPECT_EQ(read->UpdateFileCount(), 0);
  EXPECT_FALSE(read->CopyAdditionalFiles);
}

TEST_F(FileOutputTest, StatusTexts) {
  const std::map<std::int32_t, std::string> texts = {
      {0, "Off"},   {1, "Connecting"},        {2, "Connected"},        {3, "Logging on"}, {4, "OK"},
      {5, "Error"}, {6, "Source File Prob."}, {7, "Dest. File Prob."}, {8, "Unknown"},    {-1, "Unknown"}};
  for (const auto& [status, text] : texts) {
    output->SetStatus(status);
    std::uint32_t colour = 0;
    EXPECT_EQ(output->GetStatusString(colour), text);
    EXPECT_EQ(colour, status == 0 ? kColourYellow : status >= 1 && status <= 4 ? kColourBlack : kColourRed);
  }
}

}  // namespace
}  // namespace zeb
