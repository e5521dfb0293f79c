#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "outputs/file/CopyNotes.h"
#include "outputs/file/MediaNames.h"
#include "outputs/file/MediaRules.h"
#include "outputs/file/NumberedVersions.h"
#include "outputs/file/PublishedNames.h"
#include "platform/posix/PosixFiles.h"
#include "platform/simulated/SimulatedFiles.h"

namespace zeb {
namespace {

using namespace std::string_literals;

const std::string kJpeg = "\xFF\xD8\xFF\xE0 a picture";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// ---- Names

TEST(MediaNamesTest, NamesThatAreNeverUsed) {
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"no name", {""}},
      {"dot", {".htaccess", "..", "%2Ehtaccess", "..\\index.html"}},
      {"ends in", {"cover.jpg.", "cover.jpg ", "index.html%20", "index.html+%2e"}},
      {"holds",
       {"a\\index.html", "a/b.jpg", "a%2fb.jpg", "a%5Cb.jpg", "index.html::$DATA", "a\r\nDELE b.jpg",
        "a\x7F.jpg", "a.php%00.jpg", "a.php\0.jpg"s}},
      {"settings", {"Web.Config"}},
      {"short form", {"INDEX~1.HTM", "htacce~1", "SE~12.db"}},
      {".tmp", {"ZEB00001.TMP", "now.html%2etmp"}}};
  for (const auto& [why, names] : cases)
    for (const std::string& name : names) EXPECT_TRUE(Contains(WhyNoMediaName(name), why)) << name;
  for (const char* name :
       {"cover.jpg", "Zoë & Co.png", "100%.jpg", "50%25 off.jpg", "a..b.jpg", " a.jpg", "a~b.jpg",
        "a long name~1.jpg", "style.css", "tmp", "a.tmp.jpg", "a+b.jpg", "noending"})
    EXPECT_EQ(WhyNoMediaName(name), "") << name;
}

TEST(MediaNamesTest, NamesOfPagesAndOfPictures) {
  for (const char* name :
       {"index.html", "INDEX.HTM", "a.php", "a.php5", "a.phtml", "a.asp", "a.AspX", "a.jsp", "a.js", "a.css",
        "a.shtml", "a.xhtml", "a.cgi", "index.html.en", "a.php.jpg", "a%2ephp", ".css"}) {
    EXPECT_TRUE(IsPageName(name)) << name;
    EXPECT_FALSE(IsPictureName(name)) << name;
  }
  for (const char* name : {"html", "a.jpg", "a.txt", "js.png", "a.jsx.jpg", "a.cssx", "", "settings.db"})
    EXPECT_FALSE(IsPageName(name)) << name;
  for (const char* name :
       {"a.jpg", "a.JPEG", "a.b.png", "a.gif", "a.webp", "a.bmp", "a.ico", "a.tiff", "a.avif"})
    EXPECT_TRUE(IsPictureName(name)) << name;
  for (const char* name :
       {"jpg", "a.svg", "settings.db", "settings.db-journal", "a.jpg.txt", "template1", ""})
    EXPECT_FALSE(IsPictureName(name)) << name;
}

TEST(MediaNamesTest, PagesOfNumberedVersions) {
  struct Case {
    const char *name, *page;
  };
  for (const Case& c :
       {Case{"now.000001.html", "now.html"}, Case{"now.1234567.html", "now.html"},
        Case{"a.b.000012.txt", "a.b.txt"}, Case{"now.000003", "now"}, Case{"now.00001.html", ""},
        Case{"now.html", ""}, Case{"now.000000.html", ""}, Case{"000001.html", ""}, Case{"", ""}})
    EXPECT_EQ(PageOfVersion(c.name), c.page) << c.name;
}

TEST(PublishedNamesTest, AllOutputsNamesCountWhileTheyLive) {
  const auto pair = [](const char* source, const char* destination) {
    clsFileParameters made;
    made.SetSourceFileName(source);
    made.SetDestinationFileName(destination);
    return made;
  };
  const auto names = std::make_shared<PublishedNames>();
  PublishedNames::Entry file(names);
  file.Add(pair("templates/now.tpl", "/srv/www/Now.html"));
  {
    PublishedNames::Entry web(names);
    web.Set({pair("/t/now.tpl", "/www/now.html"), pair("/t/z", "list.txt"), pair("", "")});
    for (const char* name : {"now.html", "NOW.HTML", "now.tpl", "list.txt", "z", "now.000004.html",
                             "List.000001.txt", "now%2ehtml", "%6eow.html"})
      EXPECT_TRUE(names->Contains(name)) << name;
    for (const char* name : {"", "now", "www", "now.htm", "list.000001.html"})
      EXPECT_FALSE(names->Contains(name)) << name;
  }
  EXPECT_FALSE(names->Contains("list.txt"));
  EXPECT_TRUE(names->Contains("now.html") && names->Contains("now.tpl"));
  file.Set({});
  EXPECT_FALSE(names->Contains("now.html"));

  FileInfo info;
  info.size = 3;
  info.modified = 7;
  EXPECT_FALSE(names->IsCopy("/w/a.css", info));
  names->NoteCopy("/w/a.css", info);
  EXPECT_TRUE(names->IsCopy("/w/a.css", info));
  EXPECT_FALSE(names->IsCopy("/w2/a.css", info));
  info.modified = 8;
  EXPECT_FALSE(names->IsCopy("/w/a.css", info)) << "somebody has changed it";
}

TEST(CopyNotesTest, EachReasonOnceAndNotAFlood) {
  CopyNotes copies;
  std::vector<std::string> lines;
  const auto take = [&](const std::map<std::string, std::string>& tried, bool ofAll = true) {
    lines.clear();
    copies.Take(tried, ofAll, [&](const std::string& line) { lines.push_back(line); });
    return lines;
  };
  using Lines = std::vector<std::string>;
  EXPECT_EQ(take({{"/a", "gone"}, {"/b", "gone"}, {"/c", ""}}), (Lines{"gone"}));
  EXPECT_EQ(take({{"/a", "gone"}, {"/b", "closed"}}), (Lines{"closed"}));
  EXPECT_EQ(take({{"/c", "gone"}}, false), Lines{});
  EXPECT_EQ(take({{"/a", "gone"}}), Lines{}) << "it was not of all";
  EXPECT_EQ(take({}), Lines{});
  EXPECT_EQ(take({{"/a", "gone"}}), (Lines{"gone"}));
  std::map<std::string, std::string> many;
  for (int i = 0; i < 300; ++i) many["/" + std::to_string(i)] = "reason " + std::to_string(i);
  EXPECT_EQ(take(many).size(), 11u);
  EXPECT_EQ(lines.back(), "290 more files could not be published, for other reasons");
  EXPECT_EQ(take(many), Lines{});
}

// ---- Pictures

TEST(MediaRulesTest, PicturesByTheirFirstBytes) {
  const std::string bitmap = "BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0"s;
  const std::string icon = "\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\x68\4\0\0\x16\0\0\0"s;
  const std::string pictures[] = {kJpeg,
                                  "\x89PNG\r\n\x1A\n....",
                                  "GIF89a...",
                                  "GIF87a...",
                                  "RIFF\1\2\3\4WEBPVP8 ",
                                  "\0\0\0\x1C"
                                  "ftypavif...."s,
                                  "\0\0\0\x1C"
                                  "ftypavis...."s,
                                  "II*\0...."s,
                                  "MM\0*...."s,
                                  bitmap,
                                  icon};
  for (const std::string& head : pictures) {
    EXPECT_TRUE(IsPicture(head)) << head;
    EXPECT_TRUE(IsPicture(head + std::string(kPictureHeadBytes, 'x')));
    for (std::size_t length = 0; length < 3; ++length)
      EXPECT_FALSE(IsPicture(head.substr(0, length))) << head;
  }
  const std::string others[] = {"",
                                "SQLite format 3\0................"s,
                                "<svg xmlns=\"http://www.w3.org/2000/svg\">",
                                "<?xml version=\"1.0\"?><svg/>",
                                "BM means something else in this text, surely",
                                bitmap.substr(0, 17),
                                icon.substr(0, 21),
                                "RIFF\1\2\3\4WAVEfmt ",
                                "\0\0\0\x1C"
                                "ftypmp42"s,
                                "GIF88a",
                                "REGEDIT4\r\n",
                                "II*",
                                " \xFF\xD8\xFF"};
  for (const std::string& head : others) EXPECT_FALSE(IsPicture(head)) << head;
}

TEST(MediaRulesTest, WhatLiesInAFolder) {
  struct Case {
    const char *path, *folder;
    bool lies;
  };
  for (const Case& c :
       {Case{"/a/b", "/a", true}, Case{"/a", "/a", true}, Case{"/a/b", "/a/", true}, Case{"/ab", "/a", false},
        Case{"/a", "/a/b", false}, Case{"/x", "/", true}, Case{"/", "/", true}, Case{"/x", "", false}})
    EXPECT_EQ(LiesIn(c.path, c.folder), c.lies) << c.path << " in " << c.folder;
}

TEST(MediaRulesTest, TheFoldersOfTheSetting) {
  EXPECT_EQ(MakeMediaRules("/data", " /pics ; shared/x;; ;").folders,
            (std::vector<std::string>{"/pics", "/data/shared/x"}));
  EXPECT_TRUE(MakeMediaRules("/data", "").folders.empty());
}

TEST(MediaRulesTest, WhatIsTaken) {
  SimulatedFiles files;
  files.Put("/data/settings.db", "SQLite format 3 secret");
  files.Put("/data/logo.svg", "<svg/>");
  files.Put("/data/export.reg", "secret");
  files.Put("/data/pictures/a.jpg", kJpeg);
  files.Put("/data/pictures/closed.jpg", kJpeg);
  files.Put("/data/pictures/settings.jpg", "secret");
  files.Put("/pics/a.jpg", kJpeg);
  files.Put("/pics/info.pdf", "info");
  files.Put("/pics/link.jpg", "secret");
  files.Put("/home/me/notes.txt", "secret");
  files.Put("/database", "beside the data folder, and not in it");
  files.PutSpecial("/pics/pipe.jpg");
  files.realPaths["/pics/link.jpg"] = "/data/settings.db";
  files.SetOpenToAll("/data", false);
  files.SetOpenToAll("/data/pictures", false);
  files.SetOpenToAll("/data/settings.db", false);
  files.SetOpenToAll("/data/pictures/closed.jpg", false);
  files.SetOpenToAll("/home/me", false);
  struct Case {
    const char *path, *folders, *why;  // "": it is taken
  };
  const char* const kNotOpen = "'chmod o+r'";
  const char* const kNoPicture = "it lies in the data folder and is no picture";
  const char* const kNotNamed = "none of the folders that MediaFolders names";
  const char* const kClosed = "may not enter the folder '/home/me'";
  const Case cases[] = {{"/pics/a.jpg", "", ""},
                        {"/pics/info.pdf", "", ""},
                        {"/database", "", ""},
                        {"/data/pictures/a.jpg", "", ""},
                        {"/data/settings.db", "", kNotOpen},
                        {"/data/pictures/closed.jpg", "", kNotOpen},
                        {"/data/export.reg", "", kNoPicture},
                        {"/data/logo.svg", "", kNoPicture},
                        {"/data/pictures/settings.jpg", "", kNoPicture},
                        {"/pics/link.jpg", "", kNoPicture},
                        {"/home/me/notes.txt", "", kClosed},
                        {"/home/me/notes.txt", "/home/me", ""},
                        {"/home/me/notes.txt", "/pics;/home/me/", ""},
                        {"/pics/a.jpg", "/home/me;none", kNotNamed},
                        {"/database", "/data", kNotNamed},
                        {"/data/pictures/a.jpg", "pictures", ""},
                        {"/data/pictures/a.jpg", "/pics", kNotNamed},
                        {"/data/export.reg", ".", kNoPicture},
                        {"/data/pictures/closed.jpg", "pictures", kNotOpen},
                        {"/pics/link.jpg", "/pics", kNoPicture},
                        {"/pics/pipe.jpg", "", "not a regular file"},
                        {"/pics", "", "Is a directory"},
                        {"/pics/none.jpg", "", "No such file"}};
  for (const Case& c : cases) {
    const OpenedMedia opened = OpenMedia(files, MakeMediaRules("/data", c.folders), c.path);
    const std::string what = c.path + " from "s + c.folders;
    EXPECT_EQ(opened.file != nullptr, *c.why == '\0') << what << opened.reason;
    EXPECT_EQ(opened.reason.empty(), *c.why == '\0') << what << opened.reason;
    EXPECT_TRUE(Contains(opened.reason, c.why)) << what << ": " << opened.reason;
    EXPECT_EQ(opened.refused, Contains(opened.reason, "' is not published: ")) << opened.reason;
  }
}

// ---- Tricks with links

// Puts another file in the place of one that has just been opened.
class SwappedAfterOpening : public PosixFiles {
 public:
  Result<std::unique_ptr<FileReader>> OpenForReading(const std::string& path) override {
    auto opened = PosixFiles::OpenForReading(path);
    if (!replacement.empty()) std::filesystem::rename(std::exchange(replacement, {}), path);
    return opened;
  }
  std::string replacement;
};

class MediaLinksTest : public testing::Test {
 protected:
  MediaLinksTest() {
    std::string pattern = testing::TempDir() + "zeb-media-XXXXXX";
    folder = std::filesystem::canonical(::mkdtemp(pattern.data()));
    std::filesystem::create_directories(folder / "data/pictures");
    std::filesystem::create_directories(folder / "pics");
    Open(folder, 0755);
    Open(folder / "data", 0750);
    Open(folder / "data/pictures", 0750);
    Write("data/settings.db", "SQLite format 3 secret", 0600);
    Write("data/open.db", "SQLite format 3 secret", 0644);
    Write("pics/a.jpg", kJpeg, 0644);
  }
  ~MediaLinksTest() override { std::filesystem::remove_all(folder); }

  static void Open(const std::filesystem::path& path, mode_t mode) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
  }
  void Write(const std::string& name, const std::string& bytes, mode_t mode) {
    ASSERT_TRUE(files.Write((folder / name).string(), bytes));
    Open(folder / name, mode);
  }
  OpenedMedia OpenOne(const std::string& name, const std::string& folders = "") {
    return OpenMedia(files, MakeMediaRules((folder / "data").string(), folders), (folder / name).string());
  }
  static std::string Bytes(FileReader& file) {
    std::string bytes(1000, '\0');
    const Result<std::size_t> got = file.Read(bytes.data(), bytes.size());
    return got ? bytes.substr(0, got.Value()) : got.Reason();
  }

  SwappedAfterOpening files;
  std::filesystem::path folder;
};

TEST_F(MediaLinksTest, NoLinkGetsTheSettingsOut) {
  std::filesystem::create_symlink("../data/settings.db", folder / "pics/soft.jpg");
  std::filesystem::create_symlink(folder / "data/open.db", folder / "pics/soft-open.jpg");
  std::filesystem::create_directory_symlink("../data", folder / "pics/way");
  std::filesystem::create_symlink("way/open.db", folder / "pics/twice.jpg");
  std::filesystem::create_hard_link(folder / "data/settings.db", folder / "pics/hard.jpg");
  std::filesystem::create_symlink("loop.jpg", folder / "pics/loop.jpg");
  for (const char* name :
       {"data/settings.db", "data/open.db", "pics/../data/open.db", "pics/soft.jpg", "pics/soft-open.jpg",
        "pics/way/open.db", "pics/twice.jpg", "pics/hard.jpg", "pics/loop.jpg"})
    for (const std::string& folders : {std::string(), (folder / "pics").string(), folder.string()}) {
      const OpenedMedia opened = OpenOne(name, folders);
      EXPECT_EQ(opened.file, nullptr) << name << " from " << folders;
      EXPECT_FALSE(opened.reason.empty());
    }
}

TEST_F(MediaLinksTest, AFolderThatIsClosedToOthersClosesWhatIsBelow) {
  ASSERT_TRUE(OpenOne("pics/a.jpg").file);
  Open(folder / "pics", 0750);
  EXPECT_TRUE(Contains(OpenOne("pics/a.jpg").reason, "'chmod o+x'"));
  EXPECT_TRUE(OpenOne("pics/a.jpg", (folder / "pics").string()).file);
}

// Whatever takes its name afterwards: what was looked at is what is given, or nothing.
TEST_F(MediaLinksTest, ASwapGainsNothing) {
  for (int i = 0; i < 2; ++i) {
    std::filesystem::create_symlink(folder / "data/settings.db", folder / "trap");
    files.replacement = (folder / "trap").string();
    const OpenedMedia opened = OpenOne("pics/a.jpg");
    EXPECT_EQ(opened.file, nullptr);
    EXPECT_TRUE(opened.refused) << "it was opened once more, and that was the trap: " << opened.reason;
    std::filesystem::remove(folder / "pics/a.jpg");
    Write("pics/a.jpg", kJpeg, 0644);
  }
  const OpenedMedia opened = OpenOne("pics/a.jpg");
  ASSERT_TRUE(opened.file);
  std::filesystem::create_symlink(folder / "data/settings.db", folder / "trap");
  std::filesystem::rename(folder / "trap", folder / "pics/a.jpg");
  ASSERT_TRUE(opened.file->Rewind());
  const auto copy = files.FindTarget((folder / "copy.jpg").string(), {});
  ASSERT_TRUE(copy) << copy.Reason();
  ASSERT_TRUE(copy.Value()->ReplaceByCopy(*opened.file, 0));
  EXPECT_EQ(files.Read((folder / "copy.jpg").string(), 1000).Value(), kJpeg);
  EXPECT_EQ(Bytes(*opened.file), "") << "it was read to its end";
}

TEST_F(MediaLinksTest, APictureThatIsJustBeingReplacedIsTaken) {
  Write("new", kJpeg + " 2", 0644);
  files.replacement = (folder / "new").string();
  const OpenedMedia opened = OpenOne("pics/a.jpg");
  ASSERT_TRUE(opened.file) << opened.reason;
  EXPECT_EQ(Bytes(*opened.file), kJpeg + " 2");
}

}  // namespace
}  // namespace zeb
