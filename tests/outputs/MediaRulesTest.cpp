#include <gtest/gtest.h>

#include "outputs/file/CopyNotes.h"
#include "outputs/file/MediaNames.h"
#include "outputs/file/MediaRules.h"
#include "outputs/file/NumberedVersions.h"
#include "outputs/file/PublishedNames.h"
#include "platform/simulated/SimulatedFiles.h"
#include "text/Paths.h"

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
            (std::vector<std::string>{"/pics", JoinPath("/data", "shared/x")}));
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
  // Windows' folders have no such modes.
#ifdef _WIN32
  const char* const kClosed = "";
#else
  const char* const kClosed = "may not enter the folder '/home/me'";
#endif
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

}  // namespace
}  // namespace zeb
