// Additional files whose names somebody else chose: what the file and the web output take, and where it goes.

#include "tests/outputs/FileFixture.h"
#include "tests/outputs/WebFixture.h"

namespace zeb {
namespace {

const std::string kJpeg = "\xFF\xD8\xFF\xE0 a picture";

using Notes = std::vector<std::string>;

// ---- Beside pages on a disk

class AdditionalFilesTest : public FileOutputTest {
 protected:
  AdditionalFilesTest() {
    t.files.Put("/data/settings.db", "SQLite format 3 secret");
    t.files.SetOpenToAll("/data/settings.db", false);
    t.files.Put("/w/index.html", "the station's own");
    t.files.Put("/w/.htaccess", "Require all denied");
    output->AddUpdateFile(Pair("/t/a", "/w/now.txt"));
    output->CopyAdditionalFiles = true;
  }
  // An update with these files to go beside the page; the journal's new lines.
  Notes Copy(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) output->AddToUploadFilesList(path);
    const auto before = static_cast<std::ptrdiff_t>(t.person.notes.size());
    Update();
    EXPECT_EQ(StatusText(), "OK");
    EXPECT_EQ(output->Problems().size(), 0u);
    EXPECT_EQ(output->LastTally().published, 1);
    return {t.person.notes.begin() + before, t.person.notes.end()};
  }
  std::string OnlyNote(const std::vector<std::string>& paths) {
    const Notes notes = Copy(paths);
    EXPECT_EQ(notes.size(), 1u) << paths.front();
    return notes.empty() ? "" : notes.front();
  }
};

TEST_F(AdditionalFilesTest, WhatIsRefusedHasOneLineAndChangesNothing) {
  t.files.Put("/x/.htaccess", "Require all granted");
  t.files.Put("/x/index.html", "defaced");
  t.files.Put("/x/INDEX.HTML", "defaced");
  t.files.Put("/x/NOW.TXT", "another page");
  t.files.Put("/x/now.000001.txt", "another version");
  t.files.Put("/x/a", "another template");
  t.files.Put("/x/now.txt.tmp", "on its way");
  struct Case {
    const char *path, *why;
  };
  const Case cases[] = {{"settings.db", "'chmod o+r'"},
                        {"/x/.htaccess", "begins with a dot"},
                        {"/x/index.html", "'/w/index.html' is there already"},
                        {"/x/INDEX.HTML", "'/w/INDEX.HTML' is there already"},
                        {"/x/NOW.TXT", "a page or a template has that name"},
                        {"/x/now.000001.txt", "a page or a template has that name"},
                        {"/x/a", "a page or a template has that name"},
                        {"/x/now.txt.tmp", "pages on their way"}};
  for (const bool always : {false, true})
    for (const Case& c : cases) {
      output->AlwaysCopyFiles = always;
      const std::string note = OnlyNote({c.path});
      EXPECT_EQ(note.rfind("File: '", 0), 0u) << note;
      EXPECT_NE(note.find(c.why), std::string::npos) << note;
      EXPECT_EQ(Copy({c.path}), Notes()) << "it is told already";
      EXPECT_EQ(Copy({}), Notes());
    }
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{".htaccess", "index.html", "now.txt"}));
  EXPECT_EQ(t.files.Contents("/w/.htaccess"), "Require all denied");
  EXPECT_EQ(t.files.Contents("/w/index.html"), "the station's own");
  EXPECT_EQ(t.files.Contents("/w/now.txt"), "One!");
}

// A station may send a style sheet with its pages, and edit it, but not lose its own to it.
TEST_F(AdditionalFilesTest, AFileNamedLikeAPageIsRenewedOnlyWhereZebPutIt) {
  t.files.Put("/x/style.css", "1");
  EXPECT_EQ(Copy({"/x/style.css"}), Notes());
  t.files.Put("/x/style.css", "2");
  EXPECT_EQ(Copy({"/x/style.css"}), Notes());
  EXPECT_EQ(t.files.Contents("/w/style.css"), "2");
  EXPECT_EQ(Copy({"/x/style.css"}), Notes()) << "it is there and equal";

  t.files.Put("/w/style.css", "edited beside the page");
  t.files.Put("/x/style.css", "3");
  EXPECT_NE(OnlyNote({"/x/style.css"}).find("is there already"), std::string::npos);
  EXPECT_EQ(t.files.Contents("/w/style.css"), "edited beside the page");

  // The same for what an earlier run of the program put there, unless it is as it was.
  t.files.Put("/w/style.css", "3");
  t.files.SetModified("/w/style.css", t.files.Stat("/x/style.css")->modified);
  EXPECT_EQ(Copy({"/x/style.css"}), Notes());
  output->AlwaysCopyFiles = true;
  EXPECT_EQ(Copy({"/x/style.css"}).size(), 1u);
  EXPECT_TRUE(t.files.Delete("/w/style.css"));
  EXPECT_EQ(Copy({"/x/style.css"}), Notes());
  EXPECT_EQ(t.files.Contents("/w/style.css"), "3");
}

TEST_F(AdditionalFilesTest, WhereItCannotBeToldWhatIsThereNothingNamedLikeAPageIsPut) {
  t.files.Put("/x/style.css", "1");
  FailOn("List", "/w");
  EXPECT_NE(OnlyNote({"/x/style.css"}).find("cannot be told: cannot list '/w/'"), std::string::npos);
  t.files.Put("/x/a.jpg", kJpeg);
  EXPECT_EQ(Copy({"/x/a.jpg"}), Notes());
  EXPECT_EQ(t.files.Contents("/w/a.jpg"), kJpeg);
}

TEST_F(AdditionalFilesTest, NamesOfOtherOutputsPagesAreTheirs) {
  t.files.Put("/x/list.xml", "not the list");
  t.files.Put("/x/shown.jpg", kJpeg);
  auto file = MakeOutput();
  file->AddUpdateFile(Pair("/t/a", "/elsewhere/List.xml"));
  auto web = std::dynamic_pointer_cast<clsZEBWebOutput>(makeOutput(OutputType::kWeb));
  web->AddUpdateFile(Pair("/t/b", "/www/shown.jpg"));
  EXPECT_EQ(Copy({"/x/list.xml", "/x/shown.jpg"}).size(), 2u);
  EXPECT_EQ(Names("/w"), (std::vector<std::string>{".htaccess", "index.html", "now.txt"}));
  file->SetUpdateFile(1, Pair("/t/a", "/elsewhere/other.xml"));
  web.reset();
  EXPECT_EQ(Copy({"/x/list.xml", "/x/shown.jpg"}), Notes());
  EXPECT_EQ(t.files.Contents("/w/list.xml"), "not the list");
}

// Pages may be published into the data folder; what lies there beside them is the program's.
TEST_F(AdditionalFilesTest, OnlyPicturesAreCopiedIntoTheDataFolder) {
  t.files.Put("/data/w/settings.db", "secret");
  t.files.Put("/data/w/plan.tpl", "a template of later");
  output->SetUpdateFile(1, Pair("/t/a", "/data/w/now.txt"));
  t.files.Put("/x/settings.db", "the attacker's");
  t.files.Put("/x/settings.db-journal", "the attacker's");
  t.files.Put("/x/plan.tpl", "the attacker's");
  t.files.Put("/x/false.jpg", "the attacker's");
  t.files.Put("/x/a.jpg", kJpeg);
  for (const char* path : {"/x/settings.db", "/x/settings.db-journal", "/x/plan.tpl", "/x/false.jpg"})
    EXPECT_NE(OnlyNote({path}).find(" put into the data folder"), std::string::npos);
  EXPECT_EQ(Copy({"/x/a.jpg"}), Notes());
  EXPECT_EQ(Names("/data/w"), (std::vector<std::string>{"a.jpg", "now.txt", "plan.tpl", "settings.db"}));
  EXPECT_EQ(t.files.Contents("/data/w/settings.db"), "secret");

  // Whatever way leads there.
  t.files.Put("/way/now.txt", "");
  t.files.realPaths["/way"] = "/data/w";
  output->SetUpdateFile(1, Pair("/t/a", "/way/now.txt"));
  EXPECT_NE(OnlyNote({"/x/settings.db"}).find(" put into the data folder"), std::string::npos);
  EXPECT_FALSE(t.files.Exists("/way/settings.db"));
}

// Between the look and the copy another file takes the name.
TEST_F(AdditionalFilesTest, WhatWasLookedAtIsWhatIsCopied) {
  t.files.Put("/x/a.jpg", kJpeg);
  t.files.fail = [this](const std::string& operation, const std::string& path) {
    if (operation == "Copy" && path.rfind("/w/a.jpg", 0) == 0) t.files.Put("/x/a.jpg", "secret");
    return std::string();
  };
  EXPECT_EQ(Copy({"/x/a.jpg"}), Notes());
  EXPECT_EQ(t.files.Contents("/w/a.jpg"), kJpeg);
}

TEST_F(AdditionalFilesTest, MediaFoldersIsReadWithTheSettingsAndAgainAtAReload) {
  t.files.Put("/x/a.jpg", kJpeg);
  t.files.Put("/data/pictures/b.jpg", kJpeg);
  output->StoreOutputInformation(3, 1);
  const std::string root = t.environment.settingsRoot;
  output->GetOutputInformation(3, 1);
  const std::string before = output->SettingsText();
  t.hive.WriteText(root, "MediaFolders", "pictures; /elsewhere");
  output->GetOutputInformation(3, 1);
  EXPECT_NE(output->SettingsText(), before) << "so a reload takes the new one";
  EXPECT_NE(OnlyNote({"/x/a.jpg", "/data/pictures/b.jpg"}).find("MediaFolders"), std::string::npos);
  EXPECT_FALSE(t.files.Exists("/w/a.jpg"));
  EXPECT_TRUE(t.files.Exists("/w/b.jpg"));

  // One that cannot be read must not open everything.
  EXPECT_TRUE(output->CopyAdditionalFiles);
  t.hive.failure = "the store is locked";
  EXPECT_THROW(output->GetOutputInformation(3, 1), std::exception);
  EXPECT_FALSE(output->CopyAdditionalFiles);
}

// ---- Beside pages on a server

class WebAdditionalFilesTest : public WebOutputTest {
 protected:
  WebAdditionalFilesTest() {
    t.files.Put("/data/settings.db", "SQLite format 3 secret");
    t.files.SetOpenToAll("/data/settings.db", false);
    ftp.files["/w/index.html"] = "the station's own";
    ftp.files["/w/.htaccess"] = "Require all denied";
    output->CopyAdditionalFiles = true;
  }
  Notes Send(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) output->AddToUploadFilesList(path);
    const auto before = static_cast<std::ptrdiff_t>(t.person.notes.size());
    const SnapshotPtr snapshot = service.TakeSnapshot();
    EXPECT_TRUE(Run(snapshot));
    EXPECT_EQ(StatusText(), "OK");
    EXPECT_TRUE(output->Problems().empty());
    ftp.log.clear();
    EXPECT_FALSE(Run(snapshot));
    EXPECT_TRUE(ftp.log.empty()) << "nothing failed, so nothing is tried again";
    return {t.person.notes.begin() + before, t.person.notes.end()};
  }
  std::string OnlyNote(const std::string& path) {
    const Notes notes = Send({path});
    EXPECT_EQ(notes.size(), 1u) << path;
    return notes.empty() ? "" : notes.front();
  }
};

TEST_F(WebAdditionalFilesTest, WhatIsRefusedHasOneLineAndChangesNothing) {
  t.files.Put("/x/.htaccess", "Require all granted");
  t.files.Put("/x/A.HTM", "another page");
  t.files.Put("/x/a.htm.tmp", "on its way");
  t.files.Put("/x/index.html", "defaced");
  struct Case {
    const char *path, *why;
    bool always;
  };
  const Case cases[] = {{"settings.db", "'chmod o+r'", false},
                        {"/x/.htaccess", "begins with a dot", false},
                        {"/x/A.HTM", "a page or a template has that name", false},
                        {"/x/a.htm.tmp", "pages on their way", false},
                        {"/x/.htaccess", "begins with a dot", true},
                        {"/x/index.html", "'/w/index.html' is on the server already", true}};
  const auto before = ftp.files;
  for (const Case& c : cases) {
    output->AlwaysCopyFiles = c.always;
    const std::string note = OnlyNote(c.path);
    EXPECT_EQ(note.rfind("Web: '", 0), 0u) << note;
    EXPECT_NE(note.find(c.why), std::string::npos) << note;
    EXPECT_EQ(Send({c.path}), Notes()) << "it is told already";
    EXPECT_EQ(Send({}), Notes());
  }
  output->AlwaysCopyFiles = false;
  EXPECT_EQ(Send({"/x/index.html"}), Notes()) << "as a picture that is there already";
  ftp.files.erase("/w/a.htm");
  EXPECT_EQ(ftp.files, before);
}

TEST_F(WebAdditionalFilesTest, AFileNamedLikeAPageIsRenewedOnlyWhereZebPutIt) {
  output->AlwaysCopyFiles = true;
  t.files.Put("/x/style.css", "1");
  EXPECT_EQ(Send({"/x/style.css"}), Notes());
  t.files.Put("/x/style.css", "2");
  EXPECT_EQ(Send({"/x/style.css"}), Notes());
  EXPECT_EQ(ftp.files["/w/style.css"], "2");
  output->settings.FTPServerName = "another";  // where nothing is ours
  EXPECT_NE(OnlyNote("/x/style.css").find("is on the server already"), std::string::npos);
}

TEST_F(WebAdditionalFilesTest, WhereItCannotBeToldWhatIsThereNothingNamedLikeAPageIsSent) {
  t.files.Put("/x/style.css", "1");
  t.files.Put("/x/a.jpg", kJpeg);
  ftp.fail = [](const std::string& operation, const std::string& path) {
    return operation == "Exists" && (path == "/w/style.css" || path == "/w/a.jpg") ? "502 Not implemented."
                                                                                   : "";
  };
  EXPECT_NE(OnlyNote("/x/style.css").find("on the server cannot be told: 502 Not implemented."),
            std::string::npos);
  EXPECT_EQ(ftp.files.count("/w/style.css"), 0u);
  EXPECT_EQ(Send({"/x/a.jpg"}), Notes());
  EXPECT_EQ(ftp.files["/w/a.jpg"], kJpeg);
}

// Also when the connection is lost half way, and the file is sent once more.
TEST_F(WebAdditionalFilesTest, WhatWasLookedAtIsWhatIsSent) {
  const std::string picture = kJpeg + std::string(9000, 'x');
  t.files.Put("/x/a.jpg", picture);
  int blocks = 0;
  ftp.fail = [&](const std::string& operation, const std::string& path) {
    if (operation != "Block" || path != "/w/a.jpg.tmp") return "";
    if (++blocks == 1) t.files.Put("/x/a.jpg", "secret");
    return blocks == 3 ? "421 Timeout." : "";
  };
  EXPECT_EQ(Send({"/x/a.jpg"}), Notes());
  EXPECT_GT(blocks, 5);
  EXPECT_EQ(ftp.files["/w/a.jpg"], picture);
}

}  // namespace
}  // namespace zeb
