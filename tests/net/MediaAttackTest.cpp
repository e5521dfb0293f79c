// Whoever controls the items of a running zebd names files that are not to be published, and names that are
// not to be taken.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "tests/net/FtpServers.h"
#include "tests/net/Sockets.h"
#include "tests/net/Station.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;

const std::string kPicture = "\xFF\xD8\xFF\xE0 picture";
constexpr const char* kPassword = "hunter2-of-the-station";
constexpr const char* kOwnPage = "the station's own page";
constexpr const char* kOwnOrders = "Require all denied";

class MediaAttackTest : public Station {
 protected:
  MediaAttackTest() {
    std::string name = (fs::temp_directory_path() / "zeb-attack-XXXXXX").string();
    outside = ::mkdtemp(name.data());
    www = outside / "www";
    x = outside / "x";
    server = folder / "site/www";
    for (const fs::path& made : {www, x, server}) fs::create_directories(made);
    fs::permissions(outside, fs::perms(0755));
    fs::permissions(folder, fs::perms(0755));
    fs::permissions(server, fs::perms(0777));
    for (const fs::path& web : {www, server}) {
      WriteFile((web / "index.html").string(), kOwnPage);
      WriteFile((web / ".htaccess").string(), kOwnOrders);
    }
    const std::string page = "<ZEB_NOW_ITEMNAME> <ZEB_NOW_PICTUREFILENAME>";
    AddService(1, control, page, (www / "now.html").string());
    WriteFile(Path("page.html"), page);
    Set("File", "CopyAdditionalFiles1", "1");
    Set("File", "AlwaysCopyFiles1", "1");
    UseServer();
  }
  ~MediaAttackTest() override {
    zebd.reset();
    fs::remove_all(outside);
  }
  void Set(const std::string& type, const std::string& name, const std::string& data) {
    ASSERT_EQ(Zebctl({"settings", "set", "Service1\\" + type, name, data}).status, 0);
  }
  void UseServer() {
    const int port = FreePortPair();
    Set("Web", "NumberOutputs", "1");
    Set("Web", "Output1.NumberFiles", "1");
    Set("Web", "Output1.SourceFileName1", Path("page.html"));
    Set("Web", "Output1.DestinationFileName1", "/www/now.html");
    Set("Web", "CopyAdditionalFiles1", "1");
    Set("Web", "AlwaysCopyFiles1", "1");
    Set("Web", "FTPServerName1", "localhost");
    Set("Web", "FTPServerPort1", std::to_string(port));
    Set("Web", "FTPUsername1", "anonymous");
    Set("Web", "FTPPassword1", kPassword);
    vsftpd = StartVsftpd(folder, port, false, "force_dot_files=YES\n");
    ASSERT_TRUE(vsftpd);
  }
  static void GiveToNobody(const fs::path& path) {
    ASSERT_EQ(::lchown(path.c_str(), 65534, 65534), 0) << path;
  }
  // As the packaged service runs: under a user who owns the data folder and no more.
  void StartAsNobody() {
    for (const fs::path& top : {folder, outside}) {
      GiveToNobody(top);
      for (auto at = fs::recursive_directory_iterator(top); at != fs::recursive_directory_iterator(); ++at) {
        const std::string name = at->path().filename().string();
        if (name == "site" || name == "empty")  // the FTP server's
          at.disable_recursion_pending();
        else
          GiveToNobody(at->path());
      }
    }
    std::vector<std::string> command = {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534",
                                        "--clear-groups"};
    for (std::string& word : ZebdCommand()) command.push_back(std::move(word));
    zebd = std::make_unique<Process>(command);
    ASSERT_TRUE(zebd->WaitForError("is ready")) << zebd->error;
  }
  // The item is published, whatever becomes of its picture.
  void Play(const std::string& picture) {
    const std::string title = "Song " + std::to_string(++played) + ".";
    ASSERT_EQ(Send({"SET_CURRENT_ITEM ITitle=\"" + title + "\" PicFName=\"" + picture + "\""}).status, 0);
    for (const fs::path& web : {www, server})
      ASSERT_NE(AwaitPage((web / "now.html").string(), title).find(title), std::string::npos)
          << picture << "\n"
          << zebd->error;
    // The last of an update is its line, and what became of the picture stands before it.
    while (zebd->error.find("'" + title + "'") == std::string::npos)
      ASSERT_TRUE(zebd->WaitForError("\n")) << zebd->error;
  }
  static std::vector<std::string> Names(const fs::path& where) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(where)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
  void ExpectUnharmed(const std::vector<std::string>& names) {
    for (const fs::path& web : {www, server}) {
      EXPECT_EQ(Names(web), names);
      EXPECT_EQ(ReadFile((web / "index.html").string()), kOwnPage);
      EXPECT_EQ(ReadFile((web / ".htaccess").string()), kOwnOrders);
      for (const std::string& name : Names(web))
        EXPECT_EQ(ReadFile((web / name).string()).find(kPassword), std::string::npos) << name;
    }
  }

  fs::path outside, www, x, server;
  std::unique_ptr<Process> vsftpd;
  int played = 0;
};

// Whether zebd may read everything, or its own files only.
class MediaAttackTestAs : public MediaAttackTest, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(User, MediaAttackTestAs, testing::Values(true, false),
                         [](const auto& one) { return one.param ? "Root" : "Nobody"; });

TEST_P(MediaAttackTestAs, NothingGetsOutAndNothingIsReplaced) {
  const std::string store = Path("settings.db");
  ASSERT_NE(ReadFile(store).find(kPassword), std::string::npos) << "else there is nothing to be had";
  fs::create_symlink(store, x / "cover.jpg");
  fs::create_directory_symlink(folder, x / "way");
  fs::create_hard_link(store, x / "hard.jpg");
  ASSERT_EQ(::mkfifo((x / "pipe.jpg").c_str(), 0644), 0);
  for (const char* name : {".htaccess", "index.html", "now.html", "now.html.tmp", "web.config"})
    WriteFile((x / name).string(), "the attacker's");
  const std::string pictures[] = {"settings.db",
                                  "./settings.db",
                                  "../" + folder.filename().string() + "/settings.db",
                                  store,
                                  (x / "cover.jpg").string(),
                                  (x / "way/settings.db").string(),
                                  (x / "hard.jpg").string(),
                                  (x / "pipe.jpg").string(),
                                  "/proc/self/fd/0",
                                  (x / ".htaccess").string(),
                                  (x / "index.html").string(),
                                  (x / "now.html").string(),
                                  (x / "now.html.tmp").string(),
                                  (x / "web.config").string()};
  GetParam() ? Start() : StartAsNobody();
  ASSERT_FALSE(HasFatalFailure());
  const auto playAll = [&](const std::string& except) {
    for (const std::string& picture : pictures)
      if (picture != except && !HasFatalFailure()) Play(picture);
  };
  playAll("");
  ASSERT_FALSE(HasFatalFailure());
  ExpectUnharmed({".htaccess", "index.html", "now.html"});
  EXPECT_NE(zebd->error.find("File: '" + store + "' is not published: only a file that everyone may read"),
            std::string::npos)
      << zebd->error;
  EXPECT_NE(zebd->error.find("Web: '" + (x / ".htaccess").string() + "' is not published"), std::string::npos)
      << zebd->error;

  // Also when somebody has opened the store to all.
  ASSERT_EQ(::chmod(store.c_str(), 0644), 0);
  playAll((x / "hard.jpg").string());  // whoever may link it may read it
  ASSERT_FALSE(HasFatalFailure());
  ExpectUnharmed({".htaccess", "index.html", "now.html"});
  EXPECT_NE(
      zebd->error.find("'" + store + "' is not published: it lies in the data folder and is no picture"),
      std::string::npos)
      << zebd->error;

  // The pictures that are meant go their way.
  fs::create_directories(Path("pictures"));
  WriteFile(Path("pictures/a.jpg"), kPicture);
  WriteFile((x / "b.jpg").string(), kPicture);
  GiveToNobody(Path("pictures"));
  GiveToNobody(Path("pictures/a.jpg"));
  ASSERT_EQ(::chmod(Path("pictures").c_str(), 0750), 0);
  ASSERT_EQ(::chmod(Path("pictures/a.jpg").c_str(), 0640), 0);
  Play("pictures/a.jpg");
  ExpectUnharmed({".htaccess", "index.html", "now.html"});
  EXPECT_NE(
      zebd->error.find("'" + Path("pictures/a.jpg") + "' is not published: only a file that everyone may"),
      std::string::npos)
      << zebd->error;
  ASSERT_EQ(::chmod(Path("pictures/a.jpg").c_str(), 0644), 0);
  ASSERT_EQ(::chmod((x / "b.jpg").c_str(), 0644), 0);
  Play("pictures/a.jpg");
  Play((x / "b.jpg").string());
  ExpectUnharmed({".htaccess", "a.jpg", "b.jpg", "index.html", "now.html"});
  EXPECT_EQ(ReadFile((server / "a.jpg").string()), kPicture);
  EXPECT_EQ(ReadFile((www / "b.jpg").string()), kPicture);
}

TEST_F(MediaAttackTest, MediaFoldersIsTakenOverByAReload) {
  fs::create_directories(x / "pics");
  WriteFile((x / "pics/a.jpg").string(), kPicture);
  WriteFile((x / "b.jpg").string(), kPicture);
  WriteFile((x / "c.jpg").string(), kPicture);
  fs::create_symlink("../c.jpg", x / "pics/c.jpg");
  Start();
  Play((x / "b.jpg").string());
  ExpectUnharmed({".htaccess", "b.jpg", "index.html", "now.html"});
  ASSERT_EQ(Zebctl({"settings", "set", "", "MediaFolders", "none;" + (x / "pics").string()}).status, 0);
  zebd->Signal(SIGHUP);
  ASSERT_TRUE(zebd->WaitForError("Settings read again")) << zebd->error;
  Play((x / "c.jpg").string());
  Play((x / "pics/c.jpg").string());
  Play((x / "pics/a.jpg").string());
  ExpectUnharmed({".htaccess", "a.jpg", "b.jpg", "index.html", "now.html"});
  EXPECT_NE(zebd->error.find("lies in none of the folders that MediaFolders names"), std::string::npos)
      << zebd->error;
}

}  // namespace
}  // namespace zeb
