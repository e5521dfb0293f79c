#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "platform/posix/PosixFiles.h"

namespace zeb {
namespace {

mode_t ModeOf(const std::string& path) {
  struct stat status = {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// Files of this process cannot grow past a size: a full disk, also for root.
class SmallDisk {
 public:
  explicit SmallDisk(rlim_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &old_);
    oldHandler_ = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = {bytes, old_.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
  }
  ~SmallDisk() {
    ::setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
  }

 private:
  rlimit old_ = {};
  void (*oldHandler_)(int) = nullptr;
};

class PosixFilesTest : public testing::Test {
 protected:
  PosixFilesTest() {
    std::string pattern = testing::TempDir() + "zeb-files-XXXXXX";
    folder = ::mkdtemp(pattern.data());
    oldMask_ = ::umask(022);
  }
  ~PosixFilesTest() override {
    ::umask(oldMask_);
    std::filesystem::remove_all(folder);
  }
  std::string Path(const std::string& name) const { return folder + "/" + name; }
  std::string Contents(const std::string& name) {
    Result<std::string> read = files.Read(Path(name), 1 << 20);
    return read ? read.Value() : "<" + read.Reason() + ">";
  }

  Outcome Place(const std::string& name, const std::string& bytes) {
    const auto target = files.FindTarget(Path(name), {});
    return target ? target.Value()->Replace(bytes) : Outcome(target);
  }

  PosixFiles files;
  std::string folder;

 private:
  mode_t oldMask_;
};

TEST_F(PosixFilesTest, KeepsEveryByte) {
  std::string bytes("a\0b\r\n\xFF", 6);
  ASSERT_TRUE(files.Write(Path("a"), std::string(300'000, 'x')));
  ASSERT_TRUE(files.Write(Path("a"), bytes));  // shorter than before
  EXPECT_EQ(Contents("a"), bytes);
  ASSERT_TRUE(files.Append(Path("a"), "more"));
  EXPECT_EQ(Contents("a"), bytes + "more");
  ASSERT_TRUE(files.Append(Path("new"), "x"));
  EXPECT_EQ(Contents("new"), "x");
  EXPECT_EQ(ModeOf(Path("a")), 0644u);
}

TEST_F(PosixFilesTest, ReadIsBounded) {
  ASSERT_TRUE(files.Write(Path("full"), std::string(kMaxFileBytes, 'x')));
  Result<std::string> whole = files.Read(Path("full"), kMaxFileBytes);
  ASSERT_TRUE(whole) << whole.Reason();
  EXPECT_EQ(whole.Value().size(), kMaxFileBytes);
  ASSERT_TRUE(files.Append(Path("full"), "y"));
  Result<std::string> above = files.Read(Path("full"), kMaxFileBytes);
  ASSERT_FALSE(above);
  EXPECT_EQ(above.Reason(), "cannot read '" + Path("full") + "': it is larger than 16777216 bytes");
  // A file that does not know its size.
  EXPECT_TRUE(files.Read("/proc/self/status", kMaxFileBytes));
  EXPECT_FALSE(files.Read("/proc/self/status", 10));
}

TEST_F(PosixFilesTest, NeverWaitsForPipesOrUsesDevices) {
  ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0644), 0);
  ASSERT_TRUE(files.Write(Path("plain"), "x"));
  for (const std::string& path : {Path("pipe"), std::string("/dev/zero"), folder}) {
    EXPECT_FALSE(files.Read(path, 100)) << path;
    EXPECT_FALSE(files.Write(path, "x")) << path;
    EXPECT_FALSE(files.Append(path, "x")) << path;
    const auto target = files.FindTarget(path, {});
    EXPECT_FALSE(target) << path;
    if (!target) {
      EXPECT_TRUE(Contains(target.Reason(), "cannot write '" + path + "': it is a")) << target.Reason();
      EXPECT_TRUE(Contains(target.Reason(), "; choose the name of a file")) << target.Reason();
    }
    EXPECT_FALSE(files.Stat(path)->isRegular) << path;
  }
  EXPECT_TRUE(files.Stat("/dev/zero"));
  EXPECT_TRUE(files.Stat(folder)->isFolder);
}

TEST_F(PosixFilesTest, ReasonsNameTheFile) {
  std::string missing = Path("no/file");
  EXPECT_EQ(files.Write(missing, "x").Reason(), "cannot write '" + missing + "': No such file or directory");
  EXPECT_EQ(files.Read(missing, 1).Reason(), "cannot read '" + missing + "': No such file or directory");
  EXPECT_EQ(files.Delete(folder).Reason(), "cannot delete '" + folder + "': Is a directory");
  EXPECT_EQ(Place("no/file", "x").Reason(), "cannot write '" + missing + "': No such file or directory");
  EXPECT_TRUE(files.Delete(missing));
  EXPECT_TRUE(files.Delete(""));
  EXPECT_FALSE(files.Read(std::string("/dev/null\0.txt", 14), 1));
}

TEST_F(PosixFilesTest, LeavesNoPartBehindOnAFullDisk) {
  ASSERT_TRUE(files.Write(Path("big"), std::string(100'000, 'x')));
  ASSERT_TRUE(Place("page", "old"));
  const auto source = files.OpenForReading(Path("big"));
  ASSERT_TRUE(source);
  SmallDisk disk(5000);
  Outcome written = files.Write(Path("out"), std::string(100'000, 'x'));
  ASSERT_FALSE(written);
  EXPECT_TRUE(Contains(written.Reason(), "cannot write '" + Path("out") + "': File too large"));
  EXPECT_FALSE(files.Stat(Path("out")));
  EXPECT_EQ(Place("page", std::string(100'000, 'x')).Reason(),
            "cannot write '" + Path("page") + "': File too large");
  EXPECT_FALSE(files.FindTarget(Path("page"), {}).Value()->ReplaceByCopy(*source.Value(), 0));
  EXPECT_EQ(Contents("page"), "old");
  EXPECT_EQ(files.List(folder).Value(), (std::vector<std::string>{"big", "page"}));
}

TEST_F(PosixFilesTest, ACopyKeepsLargeContentsAndOldTimes) {
  ASSERT_TRUE(files.Write(Path("from"), std::string(600'001, 'c')));
  std::filesystem::last_write_time(Path("from"), std::filesystem::file_time_type::clock::now() -
                                                     std::chrono::hours(24) + std::chrono::nanoseconds(7));
  const std::int64_t modified = files.Stat(Path("from"))->modified;
  const auto source = files.OpenForReading(Path("from"));
  ASSERT_TRUE(source);
  ASSERT_TRUE(files.FindTarget(Path("to"), {}).Value()->ReplaceByCopy(*source.Value(), modified));
  EXPECT_EQ(Contents("to"), std::string(600'001, 'c'));
  EXPECT_EQ(files.Stat(Path("to"))->modified, modified);
}

TEST_F(PosixFilesTest, TellsWhomAFileIsOpenTo) {
  struct Case {
    mode_t mode;
    bool folder, open;
  };
  for (const Case& c :
       {Case{0644, false, true}, Case{0604, false, true}, Case{0640, false, false}, Case{0661, false, false},
        Case{0755, true, true}, Case{0751, true, true}, Case{0754, true, false}, Case{0750, true, false}}) {
    const std::string path = Path(c.folder ? "folder" : "file");
    ASSERT_TRUE(c.folder ? files.CreateFolders(path) : files.Write(path, "x"));
    ASSERT_EQ(::chmod(path.c_str(), c.mode), 0);
    EXPECT_EQ(files.Stat(path)->openToAll, c.open) << std::oct << c.mode;
    if (c.folder) continue;
    const auto opened = files.OpenForReading(path);
    ASSERT_TRUE(opened) << opened.Reason();
    EXPECT_EQ(opened.Value()->Info().openToAll, c.open) << std::oct << c.mode;
    EXPECT_EQ(opened.Value()->Info().modified, files.Stat(path)->modified);
  }
}

TEST_F(PosixFilesTest, AnOpenFileIsFoundBehindLinksAndNotByANewName) {
  ASSERT_TRUE(files.CreateFolders(Path("real")));
  ASSERT_TRUE(files.Write(Path("real/a"), "1"));
  std::filesystem::create_symlink("real", Path("link"));
  std::filesystem::create_symlink("link/a", Path("again"));
  for (const char* name : {"real/a", "link/a", "again", "link/../real/a"}) {
    const auto opened = files.OpenForReading(Path(name));
    ASSERT_TRUE(opened) << opened.Reason();
    const Result<std::string> real = opened.Value()->RealPath();
    ASSERT_TRUE(real) << real.Reason();
    EXPECT_EQ(real.Value(), std::filesystem::canonical(folder).string() + "/real/a") << name;
  }
  const auto opened = files.OpenForReading(Path("again"));
  ASSERT_TRUE(Place("real/a", "2"));
  EXPECT_FALSE(opened.Value()->RealPath());
  ASSERT_TRUE(files.Delete(Path("real/a")));
  EXPECT_FALSE(opened.Value()->RealPath());
}

TEST_F(PosixFilesTest, AReplacedFileKeepsItsMode) {
  for (const mode_t mode : {0664u, 0600u, 0444u, 0755u}) {
    ASSERT_TRUE(Place("page", "old"));
    ASSERT_EQ(::chmod(Path("page").c_str(), mode), 0);
    ASSERT_TRUE(Place("page", "new"));
    EXPECT_EQ(ModeOf(Path("page")), mode);
    EXPECT_EQ(Contents("page"), "new");
  }
  ASSERT_TRUE(Place("fresh", "x"));
  EXPECT_EQ(ModeOf(Path("fresh")), 0644u);
}

TEST_F(PosixFilesTest, Folders) {
  EXPECT_TRUE(files.CreateFolders(Path("a/b/c/")));
  EXPECT_TRUE(files.CreateFolders(Path("a/b/c")));
  ASSERT_TRUE(files.Write(Path("a/z"), ""));
  ASSERT_TRUE(files.Write(Path("a/M"), ""));
  EXPECT_EQ(files.List(Path("a")).Value(), (std::vector<std::string>{"M", "b", "z"}));
  EXPECT_FALSE(files.CreateFolders(Path("a/z/d")));
  EXPECT_FALSE(files.CreateFolders(Path("a/z")));
  EXPECT_FALSE(files.List(Path("a/z")));
  EXPECT_FALSE(files.List(Path("nowhere")));
}

TEST_F(PosixFilesTest, AReaderNeverFindsThePageMissingOrInPart) {
  const std::string pages[2] = {std::string(50'000, 'a'), std::string(80'000, 'b')};
  ASSERT_TRUE(files.Write(Path("page"), pages[0]));
  std::atomic<bool> done{false};
  std::atomic<int> reads{0}, bad{0};
  std::thread reader([&] {
    while (!done) {
      Result<std::string> read = files.Read(Path("page"), 1 << 20);
      ++reads;
      if (!read || (read.Value() != pages[0] && read.Value() != pages[1])) ++bad;
    }
  });
  for (int i = 0; i < 500 || reads < 100; ++i) {
    ASSERT_TRUE(Place("page", pages[i % 2]));
  }
  done = true;
  reader.join();
  EXPECT_EQ(bad, 0);
}

}  // namespace
}  // namespace zeb
