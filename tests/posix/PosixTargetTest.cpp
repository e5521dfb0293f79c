// Files put in their places in folders where others write too.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/posix/PosixFiles.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;

constexpr uid_t kZeb = 65534, kFolderOwner = 3333, kStranger = 12345;
constexpr gid_t kWebGroup = 54321;
const LinkRules kFollow{true, "", ""};

// In a process of its own, as a user who is not root when this one may choose; what it says goes to `said`.
int InChild(const std::function<std::string()>& work, std::string& said) {
  int ends[2];
  EXPECT_EQ(::pipe(ends), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    const std::string words = work();
    const bool written = ::write(ends[1], words.data(), words.size()) == static_cast<ssize_t>(words.size());
    ::_exit(written ? 0 : 1);
  }
  ::close(ends[1]);
  char block[4096];
  for (ssize_t got = 0; (got = ::read(ends[0], block, sizeof block)) > 0;)
    said.append(block, static_cast<std::size_t>(got));
  ::close(ends[0]);
  int status = -1;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return status;
}

std::string AsZeb(const std::function<std::string()>& work) {
  std::string said;
  EXPECT_EQ(InChild(
                [&]() -> std::string {
                  const gid_t groups[] = {kWebGroup};
                  if (::geteuid() == 0 &&
                      (::setgroups(1, groups) != 0 || ::setgid(kZeb) != 0 || ::setuid(kZeb) != 0))
                    return "cannot become another user";
                  return work();
                },
                said),
            0);
  return said;
}

class PosixTargetTest : public testing::Test {
 protected:
  PosixTargetTest() {
    std::string pattern = testing::TempDir() + "zeb-target-XXXXXX";
    folder = ::mkdtemp(pattern.data());
    oldMask_ = ::umask(022);
    for (const char* name : {"www", "own", "data"}) fs::create_directory(Path(name));
    for (const char* name : {"", "www", "own"}) EXPECT_EQ(::chmod(Path(name).c_str(), 0777), 0);
  }
  ~PosixTargetTest() override {
    ::umask(oldMask_);
    fs::remove_all(folder);
  }
  std::string Path(const std::string& name) const { return folder + "/" + name; }
  std::string Contents(const std::string& name) { return files.Read(Path(name), 1 << 20).Value(); }
  void Put(const std::string& name, const std::string& bytes) {
    ASSERT_TRUE(files.Write(Path(name), bytes));
    ASSERT_EQ(::chmod(Path(name).c_str(), 0666), 0);
  }
  // "" when it is there.
  std::string Replace(const std::string& name, const std::string& bytes, const LinkRules& rules = kFollow) {
    const auto target = files.FindTarget(Path(name), rules);
    return target ? target.Value()->Replace(bytes).Reason() : target.Reason();
  }
  struct stat StatusOf(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(::lstat(Path(name).c_str(), &status), 0) << name;
    return status;
  }
  std::vector<std::string> Names(const std::string& name) { return files.List(Path(name)).Value(); }
  static bool IsRoot() { return ::geteuid() == 0; }
  void Own(const std::string& name, uid_t user, gid_t group) const {
    ASSERT_EQ(::lchown(Path(name).c_str(), user, group), 0);
  }

  PosixFiles files;
  std::string folder;

 private:
  mode_t oldMask_;
};

// Left over, or planted by somebody who would like ZEB to write somewhere else.
TEST_F(PosixTargetTest, NeverWritesThroughAWorkFileThatIsThereAlready) {
  const std::string work = Path("www/page.tmp"), victim = Path("own/victim");
  const std::function<void()> plants[] = {
      [&] { fs::create_symlink(victim, work); },
      [&] { fs::create_symlink(Path("own/not yet there"), work); },
      [&] { fs::create_hard_link(victim, work); },
      [&] { ASSERT_EQ(::mkfifo(work.c_str(), 0666), 0); },
      [&] { Put("www/page.tmp", std::string(1000, 'l')); },
  };
  for (const auto& plant : plants) {
    Put("own/victim", "keep");
    plant();
    if (IsRoot()) Own("www/page.tmp", kStranger, kStranger);
    const std::string said = AsZeb([&] { return Replace("www/page", "page"); });
    EXPECT_EQ(said, "");
    EXPECT_EQ(Contents("www/page"), "page");
    EXPECT_EQ(Contents("own/victim"), "keep");
    EXPECT_EQ(Names("own"), std::vector<std::string>{"victim"});
    EXPECT_EQ(Names("www"), std::vector<std::string>{"page"});
    fs::remove(victim);
  }
}

// As in a folder for everybody, where nobody may remove what is another's.
TEST_F(PosixTargetTest, AWorkFileThatCannotBeRemovedIsNamed) {
  Put("www/page", "old");
  if (IsRoot()) {
    Put("www/page.tmp", "planted");
    Own("www", kFolderOwner, kFolderOwner);
    Own("www/page.tmp", kStranger, kStranger);
    ASSERT_EQ(::chmod(Path("www").c_str(), 01777), 0);
  } else {
    fs::create_directory(Path("www/page.tmp"));
  }
  EXPECT_EQ(AsZeb([&] { return Replace("www/page", "new"); }),
            "cannot write '" + Path("www/page") + "': '" + Path("www/page.tmp") +
                "' is in the way and cannot be removed: " +
                (IsRoot() ? "Operation not permitted" : "Is a directory"));
  EXPECT_EQ(Contents("www/page"), "old");
}

TEST_F(PosixTargetTest, ALinkIsFollowedWhenItsOwnerMayDecide) {
  Put("own/page", "old");
  struct Case {
    uid_t owner;
    bool followed;
  };
  std::vector<Case> cases = {{::geteuid(), true}};
  if (IsRoot()) {
    Own("www", kFolderOwner, kFolderOwner);
    cases = {{kZeb, true}, {0, true}, {kFolderOwner, true}, {kStranger, false}};
  }
  for (const Case& c : cases) {
    fs::remove(Path("www/page"));
    fs::create_symlink("../own/page", Path("www/page"));
    if (IsRoot()) Own("www/page", c.owner, c.owner);
    const std::string page = "page of " + std::to_string(c.owner), before = Contents("own/page");
    EXPECT_EQ(AsZeb([&] { return Replace("www/page", page); }),
              c.followed
                  ? ""
                  : "cannot write '" + Path("www/page") +
                        "': it is a link that belongs to another user (number 12345); let ZEB's user or the "
                        "folder's owner make the link");
    EXPECT_EQ(Contents("own/page"), c.followed ? page : before);
    EXPECT_TRUE(S_ISLNK(StatusOf("www/page").st_mode));
  }
}

// Whatever the way there is called.
TEST_F(PosixTargetTest, NoLinkLeadsIntoTheDataFolder) {
  fs::create_directories(Path("data/deep"));
  Put("data/settings.db", "keep");
  fs::create_directory_symlink(Path("data"), Path("alias"));
  fs::create_directory_symlink(Path("data/deep"), Path("own/deep"));
  for (const std::string& to : std::vector<std::string>{Path("data/settings.db"), std::string("../data/new"),
                                                        Path("alias/settings.db"), Path("own/deep/new"),
                                                        Path("own/../data/./deep/new")}) {
    fs::create_symlink(to, Path("www/page"));
    // The data folder, too, may be known by another name.
    for (const std::string& data : {Path("data"), Path("alias/")}) {
      const std::string why = Replace("www/page", "attack", LinkRules{true, data, ""});
      EXPECT_NE(why.find("and that is ZEB's data folder; let it lead to another file"), std::string::npos)
          << to;
    }
    fs::remove(Path("www/page"));
  }
  EXPECT_EQ(Contents("data/settings.db"), "keep");
  EXPECT_EQ(Names("data"), (std::vector<std::string>{"deep", "settings.db"}));
  EXPECT_TRUE(Names("data/deep").empty());
}

TEST_F(PosixTargetTest, NoLinkLeadsToTheTemplateUnderAnotherName) {
  Put("own/template", "keep");
  fs::create_hard_link(Path("own/template"), Path("own/other name"));
  fs::create_symlink(Path("own/other name"), Path("www/page"));
  EXPECT_NE(Replace("www/page", "x", LinkRules{true, "", Path("own/template")}).find("the template itself"),
            std::string::npos);
  EXPECT_EQ(Contents("own/template"), "keep");
}

TEST_F(PosixTargetTest, LinksToPipesDevicesAndNothingAreRefused) {
  ASSERT_EQ(::mkfifo(Path("own/pipe").c_str(), 0666), 0);
  for (const std::string& to :
       std::vector<std::string>{Path("own/pipe"), std::string("/dev/null"), Path("own/"), Path("own/."),
                                Path("own/.."), std::string("page"), std::string(4000, 'x') + "/y"}) {
    fs::create_symlink(to, Path("www/page"));
    const std::string why = Replace("www/page", "x");
    EXPECT_EQ(why.find("cannot write '" + Path("www/page") + "': it is a link to '"), 0u) << why;
    EXPECT_NE(why.find("; "), std::string::npos) << why;
    fs::remove(Path("www/page"));
  }
  EXPECT_TRUE(S_ISCHR([] {
    struct stat status = {};
    ::stat("/dev/null", &status);
    return status.st_mode;
  }()));
}

TEST_F(PosixTargetTest, TheNewFileBelongsToWhomTheOldOneDid) {
  Put("www/page", "old");
  ASSERT_EQ(::chmod(Path("www/page").c_str(), 0640), 0);
  if (IsRoot()) Own("www/page", kStranger, kWebGroup);
  const struct stat before = StatusOf("www/page");
  EXPECT_EQ(Replace("www/page", "new"), "");
  struct stat after = StatusOf("www/page");
  EXPECT_NE(after.st_ino, before.st_ino);
  EXPECT_EQ(std::tie(after.st_uid, after.st_gid, after.st_mode),
            std::tie(before.st_uid, before.st_gid, before.st_mode));
  if (!IsRoot()) return;
  // Who is not root keeps the group that it is in, so that the web server goes on reading.
  EXPECT_EQ(AsZeb([&] { return Replace("www/page", "newer"); }), "");
  after = StatusOf("www/page");
  EXPECT_EQ(after.st_uid, kZeb);
  EXPECT_EQ(after.st_gid, kWebGroup);
  EXPECT_EQ(after.st_mode & 0777, 0640u);
}

TEST_F(PosixTargetTest, WhatHoldsPasswordsIsForItsWriterOnly) {
  const auto replace = [&](const std::string& name) {
    PosixFiles files;
    return files.FindTarget(Path(name), {}).Value()->ReplacePrivately("secret").Ok();
  };
  EXPECT_TRUE(replace("www/new"));
  EXPECT_EQ(StatusOf("www/new").st_mode & 0777, 0600u);
  Put("www/page", "old");
  ASSERT_EQ(::chmod(Path("www/page").c_str(), 0644), 0);
  if (IsRoot()) Own("www/page", kStranger, kWebGroup);
  EXPECT_TRUE(replace("www/page"));
  EXPECT_EQ(StatusOf("www/page").st_mode & 0777, 0600u);
  EXPECT_EQ(StatusOf("www/page").st_uid, ::geteuid());
  EXPECT_EQ(Contents("www/page"), "secret");
}

// One name of two is replaced; a file that nobody may write as well.
TEST_F(PosixTargetTest, HardLinkedAndReadOnlyFilesAreReplacedAsByARename) {
  Put("www/page", "old");
  fs::create_hard_link(Path("www/page"), Path("own/other"));
  ASSERT_EQ(::chmod(Path("www/page").c_str(), 0444), 0);
  EXPECT_EQ(AsZeb([&] { return Replace("www/page", "new"); }), "");
  EXPECT_EQ(Contents("www/page"), "new");
  EXPECT_EQ(Contents("own/other"), "old");
}

// What the watchers that other programs use are told: the page has come.
TEST_F(PosixTargetTest, AWatcherSeesEachNewPageMoveIn) {
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(watch, 0);
  ASSERT_GE(::inotify_add_watch(watch, Path("www").c_str(), IN_MOVED_TO | IN_DELETE | IN_MODIFY), 0);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(Replace("www/page", "page " + std::to_string(i)), "");
    alignas(inotify_event) char buffer[4096];
    const ssize_t got = ::read(watch, buffer, sizeof buffer);
    int moved = 0, touched = 0;
    for (ssize_t at = 0; at < got;) {
      const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
      at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
      if (std::string(event->name) != "page") continue;
      ++((event->mask & IN_MOVED_TO) != 0 ? moved : touched);
    }
    EXPECT_EQ(moved, 1) << i;
    EXPECT_EQ(touched, 0) << i;
  }
  ::close(watch);
}

// One thread replaces pages on a disk and in memory by turns. In memory no old page is left to be removed.
TEST_F(PosixTargetTest, PagesInMemoryAreReplacedAsThoseOnADisk) {
  std::string pattern = "/dev/shm/zeb-target-XXXXXX";
  ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
  const std::string inMemory = pattern + "/page";
  const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(::inotify_add_watch(watch, pattern.c_str(), IN_DELETE), 0);
  for (const std::string page : {"first", "second", "third"}) {
    EXPECT_EQ(Replace("www/page", page), "");
    const auto target = files.FindTarget(inMemory, kFollow);
    ASSERT_TRUE(target);
    EXPECT_TRUE(target.Value()->Replace(page));
    EXPECT_EQ(Contents("www/page"), page);
    EXPECT_EQ(files.Read(inMemory, 1 << 20).Value(), page);
  }
  EXPECT_EQ(Names("www"), std::vector<std::string>{"page"});
  EXPECT_EQ(files.List(pattern).Value(), std::vector<std::string>{"page"});
  char event[512];
  EXPECT_EQ(::read(watch, event, sizeof event), -1);
  ::close(watch);
  fs::remove_all(pattern);
}

// Network shares and old kernels cannot exchange names.
TEST_F(PosixTargetTest, WhereNamesCannotBeExchangedARenameDoes) {
  Put("www/page", "old");
  std::string said;
  const int status = InChild(
      [&]() -> std::string {
        sock_filter rules[] = {
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_renameat2, 0, 3),
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[4])),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        };
        const sock_fprog program = {sizeof rules / sizeof rules[0], rules};
        if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
            ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
          return "no filter";
        const std::string a = Path("www/page"), b = Path("www");
        if (::syscall(__NR_renameat2, AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), 2) == 0 || errno != EINVAL)
          return "the filter lets exchanges through";
        return Replace("www/page", "new");
      },
      said);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(said, "");
  EXPECT_EQ(Contents("www/page"), "new");
  EXPECT_EQ(Names("www"), std::vector<std::string>{"page"});
}

class LeftOverTest : public PosixTargetTest {
 protected:
  LeftOverTest() {
    fs::create_directory(Path("temp"));
    ::setenv("TMPDIR", Path("temp").c_str(), 1);
  }
  ~LeftOverTest() override { ::unsetenv("TMPDIR"); }
  // As a start that comes later by the clock of file times, which ticks every few milliseconds.
  PosixFiles NextStart() {
    Put("clock", "");
    const timespec last = StatusOf("clock").st_ctim;
    timespec now = {};
    do ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    while (std::tie(now.tv_sec, now.tv_nsec) <= std::tie(last.tv_sec, last.tv_nsec));
    return PosixFiles(Path("data"));
  }
};

TEST_F(LeftOverTest, TemporaryFilesOfThisStationsEarlierRunsAreRemovedAndNoOthers) {
  PosixFiles before(Path("data")), other(Path("own")), none;
  ASSERT_TRUE(before.MakeTempFile("TMP") && before.MakeTempFile("TMP"));
  const std::string kept[] = {before.MakeTempFile("TMPKEPT").Value(), other.MakeTempFile("TMP").Value(),
                              none.MakeTempFile("TMP").Value()};
  const std::string own = before.MakeTempFile("TMP").Value();
  fs::create_symlink(Path("clock"), own.substr(0, own.size() - 6) + "link01");
  fs::copy_file(own, own + "1");
  if (IsRoot()) {
    const std::string foreign = own.substr(0, own.size() - 6) + "notown";
    fs::copy_file(own, foreign);
    ASSERT_EQ(::chown(foreign.c_str(), kStranger, kStranger), 0);
  }
  PosixFiles now = NextStart();
  const std::string inUse = now.MakeTempFile("TMP").Value();
  EXPECT_EQ(now.DeleteLeftTempFiles("TMP"), 3u);
  EXPECT_EQ(now.DeleteLeftTempFiles("TMP"), 0u);
  EXPECT_EQ(none.DeleteLeftTempFiles("TMP"), 0u);
  for (const std::string& path : kept) EXPECT_TRUE(fs::exists(path)) << path;
  EXPECT_TRUE(fs::exists(inUse));
  EXPECT_EQ(Names("temp").size(), IsRoot() ? 7u : 6u);
}

TEST_F(LeftOverTest, AWorkFileOfAnEarlierRunIsRemoved) {
  const auto removed = [&](PosixFiles& now) {
    return now.FindTarget(Path("www/page"), kFollow).Value()->RemoveLeftOver();
  };
  Put("www/page", "page");
  std::vector<std::function<void()>> strange = {
      [&] { fs::create_symlink(Path("www/page"), Path("www/page.tmp")); },
      [&] { fs::create_directory(Path("www/page.tmp")); },
      [&] { ASSERT_EQ(::mkfifo(Path("www/page.tmp").c_str(), 0600), 0); },
  };
  if (IsRoot())
    strange.push_back([&] {
      Put("www/page.tmp", "another's");
      Own("www/page.tmp", kStranger, kStranger);
    });
  for (const auto& make : strange) {
    make();
    PosixFiles now = NextStart();
    EXPECT_FALSE(removed(now));
    fs::remove(Path("www/page.tmp"));
  }
  Put("www/page.tmp", "left over");
  PosixFiles now = NextStart();
  EXPECT_TRUE(removed(now));
  EXPECT_FALSE(removed(now));
  // The old page after an exchange, which belongs to whom the page does.
  Put("www/page.tmp", "old page");
  if (IsRoot()) {
    Own("www/page", kStranger, kStranger);
    Own("www/page.tmp", kStranger, kStranger);
  }
  PosixFiles later = NextStart();
  EXPECT_TRUE(removed(later));
  EXPECT_EQ(Names("www"), std::vector<std::string>{"page"});
}

}  // namespace
}  // namespace zeb
