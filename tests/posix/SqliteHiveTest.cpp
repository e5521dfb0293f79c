// The settings hive as a file: sharing, crashes, damage and rights.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "platform/posix/SqliteHive.h"
#include "platform/system/SingleInstance.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;

class SettingsInFile : public ::testing::Test {
 protected:
  SettingsInFile() {
    std::string name = "/tmp/zeb-hive-XXXXXX";
    folder_ = mkdtemp(name.data());
    path_ = folder_ + "/settings.db";
  }
  ~SettingsInFile() override { fs::remove_all(folder_); }

  std::unique_ptr<SqliteHive> Open() const {
    auto opened = SqliteHive::Open(path_);
    EXPECT_TRUE(opened.Ok()) << opened.Reason();
    return opened.Ok() ? std::move(opened.Value()) : nullptr;
  }
  void Store(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }
  void Execute(const char* sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
    sqlite3_close(database);
  }
  std::size_t FileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  std::string folder_, path_;
};

TEST_F(SettingsInFile, OneFileForItsOwnerOnly) {
  const mode_t before = umask(0);
  Open()->WriteText("k", "v", "kept");
  umask(before);
  struct stat info {};
  ASSERT_EQ(stat(path_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_EQ(FileCount(), 1u);
  chmod(path_.c_str(), 0644);  // a backup put back
  auto hive = Open();
  ASSERT_EQ(stat(path_.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  EXPECT_EQ(hive->ReadText("K", "V", ""), "kept");
  hive->Transaction([&] {
    hive->WriteText("k", "password", "x");
    for (const auto& entry : fs::directory_iterator(folder_))
      EXPECT_EQ(fs::status(entry).permissions(), fs::perms(0600)) << entry.path();
    EXPECT_EQ(FileCount(), 2u);  // with the journal
  });
}

TEST_F(SettingsInFile, OthersReadTheOldStateWhileATransactionRunsAndTheNewOneAfter) {
  auto writer = Open();
  writer->WriteText("k", "v", "old");
  auto reader = Open();
  writer->Transaction([&] {
    writer->DeleteKey("k");
    writer->WriteText("k", "v", "new");
    EXPECT_EQ(reader->ReadText("k", "v", ""), "old");
  });
  EXPECT_EQ(reader->ReadText("k", "v", ""), "new");
}

TEST_F(SettingsInFile, WritersWaitForEachOther) {
  Open();
  constexpr int kWrites = 20;
  const auto count = [this] {
    auto hive = Open();
    for (int i = 0; i < kWrites; ++i)
      hive->Transaction([&] { hive->WriteNumber("k", "n", hive->ReadNumber("k", "n", 0) + 1); });
  };
  std::thread other(count);
  count();
  other.join();
  EXPECT_EQ(Open()->ReadNumber("k", "n", 0), 2 * kWrites);
}

TEST_F(SettingsInFile, AFileLockedForTooLongIsAnErrorThatNamesIt) {
  auto holder = Open();
  auto writer = std::move(SqliteHive::Open(path_, nullptr, std::chrono::milliseconds(50)).Value());
  writer->WriteText("k", "v", "old");
  holder->Transaction([&] {
    holder->WriteText("k", "v", "held");
    try {
      writer->WriteText("k", "v", "other");
      ADD_FAILURE() << "written over the lock";
    } catch (const SettingsError& error) {
      EXPECT_EQ(std::string(error.what()), "settings file '" + path_ + "' is locked by another program");
    }
  });
  writer->WriteText("k", "w", "after");
  EXPECT_EQ(writer->ReadText("k", "v", ""), "held");
}

// A process that saves a set of values again and again is killed at another step of it each time; the store
// then holds one of the sets whole. The process tells each step by a byte.
TEST_F(SettingsInFile, AKilledSaveLeavesOneOfTheSavedStates) {
  constexpr int kValues = 30;
  int steps[2];
  ASSERT_EQ(pipe(steps), 0);
  const auto save = [&](SqliteHive& hive, int state, bool tell) {
    const auto step = [&] {
      if (tell && write(steps[1], "x", 1) != 1) _exit(2);
    };
    hive.Transaction([&] {
      hive.DeleteKey("service");
      for (int i = 0; i < kValues; ++i) {
        hive.WriteText("service\\File", "v" + std::to_string(i),
                       std::to_string(state) + std::string(500, 'x'));
        step();
      }
    });
    step();
  };
  save(*Open(), 0, false);
  int last = 0;
  for (int round = 0; round < 25; ++round) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      auto opened = SqliteHive::Open(path_);
      if (!opened) _exit(1);
      for (int state = last + 1;; ++state) save(*opened.Value(), state, true);
    }
    char told = 0;
    for (int i = 0; i < 29 + 13 * round; ++i) ASSERT_EQ(read(steps[0], &told, 1), 1);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));

    auto hive = Open();
    ASSERT_NE(hive, nullptr);
    const auto values = hive->Values("service\\File");
    ASSERT_EQ(values.size(), static_cast<std::size_t>(kValues));
    for (const SettingsValue& value : values) ASSERT_EQ(value.data, values[0].data);
    const int state = std::stoi(std::get<std::string>(values[0].data));
    EXPECT_GE(state, last);
    last = state;
  }
  close(steps[0]);
  close(steps[1]);
  EXPECT_GT(last, 0);  // something was saved meanwhile
}

TEST_F(SettingsInFile, DamageIsNoticedAndSetAsideNotReplaced) {
  Open()->WriteText("k", "v", std::string(50000, 'x'));
  std::string good;
  {
    std::ifstream file(path_, std::ios::binary);
    good.assign(std::istreambuf_iterator<char>(file), {});
  }
  std::string torn = good;
  torn.replace(4096, 4096, 4096, '\x5A');
  const std::string garbage(8192, 'g');
  for (const std::string& bytes : {garbage, std::string(), good.substr(0, good.size() - 8192), torn}) {
    Store(bytes);
    bool damaged = false;
    const auto opened = SqliteHive::Open(path_, &damaged);
    ASSERT_FALSE(opened.Ok()) << bytes.size();
    EXPECT_TRUE(damaged) << opened.Reason();
    EXPECT_NE(opened.Reason().find("'" + path_ + "' is damaged ("), std::string::npos) << opened.Reason();
    EXPECT_EQ(opened.Reason().find('\n'), std::string::npos);
  }

  const auto first = SqliteHive::OpenOrSetAside(path_);
  ASSERT_FALSE(first.Ok());
  const std::size_t at = first.Reason().find(path_ + ".damaged-");
  ASSERT_NE(at, std::string::npos) << first.Reason();
  const std::string aside =
      first.Reason().substr(at, path_.size() + std::string(".damaged-YYYYMMDD-hhmmss").size());
  EXPECT_EQ(fs::file_size(aside), torn.size());
  EXPECT_FALSE(fs::exists(path_));

  // Neither a restart nor a look at the settings may pass the empty store off as the station's.
  for (int start = 0; start < 2; ++start) {
    const auto again = SqliteHive::OpenOrSetAside(path_);
    ASSERT_FALSE(again.Ok());
    EXPECT_NE(again.Reason().find(aside), std::string::npos) << again.Reason();
    Open();
  }
  Open()->WriteText("k", "v", "imported");
  EXPECT_TRUE(SqliteHive::OpenOrSetAside(path_).Ok());

  std::ofstream(path_ + "-journal") << "goes with its file";
  const auto second = SqliteHive::SetAside(path_);
  ASSERT_TRUE(second.Ok()) << second.Reason();
  EXPECT_NE(second.Value(), aside);
  EXPECT_TRUE(fs::exists(second.Value() + "-journal"));
  EXPECT_FALSE(fs::exists(path_ + "-journal"));
}

TEST_F(SettingsInFile, AFileOfAnotherProgramOrVersionIsRefusedAndLeftAlone) {
  Open();
  Execute("PRAGMA user_version = 2");
  bool damaged = true;
  auto opened = SqliteHive::Open(path_, &damaged);
  ASSERT_FALSE(opened.Ok());
  EXPECT_FALSE(damaged);
  EXPECT_NE(opened.Reason().find("newer version"), std::string::npos);
  fs::remove(path_);
  Execute("CREATE TABLE other(x)");
  opened = SqliteHive::OpenOrSetAside(path_);
  ASSERT_FALSE(opened.Ok());
  EXPECT_NE(opened.Reason().find("not a settings file"), std::string::npos);
  EXPECT_EQ(FileCount(), 1u);
}

TEST_F(SettingsInFile, WhatOtherToolsStoredIsTolerated) {
  Open()->WriteText("k", "text", "x");
  Execute(
      "INSERT INTO settings VALUES('k', 'null', 'null', NULL), ('k', 'real', 'real', 2.5), "
      "('k', 'blob', 'blob', x'41E9'), ('k', 'big', 'big', 4294967297)");
  Execute("PRAGMA journal_mode = WAL");
  auto hive = Open();
  EXPECT_EQ(hive->ReadText("k", "null", "default"), "");
  EXPECT_EQ(hive->ReadNumber("k", "real", 0), 2);
  EXPECT_EQ(hive->ReadText("k", "blob", ""), "A\xC3\xA9");
  EXPECT_EQ(hive->ReadNumber("k", "big", 0), 1);
  EXPECT_EQ(hive->Values("k").size(), 5u);
  EXPECT_EQ(FileCount(), 1u);  // one file again
}

TEST_F(SettingsInFile, AFullDiskUndoesTheTransactionEvenWhenTheErrorIsSwallowed) {
  auto hive = Open();
  hive->WriteText("k", "v", "old");
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit small{static_cast<rlim_t>(fs::file_size(path_)) + 4096, before.rlim_max};
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const auto swallows = [&] {
    hive->WriteText("k", "v", "new");
    for (int i = 0; i < 40; ++i) try {
        hive->WriteText("k", "big" + std::to_string(i), std::string(kMaxSettingsTextBytes, 'x'));
      } catch (const SettingsError&) {
      }
    hive->WriteText("k", "late", "1");
  };
  EXPECT_THROW(hive->Transaction(swallows), SettingsError);
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(hive->ReadText("k", "v", ""), "old");
  EXPECT_EQ(hive->Values("k").size(), 1u);
  hive->WriteText("k", "v", "after");
}

TEST_F(SettingsInFile, PlacesThatCannotBeUsedAreNamed) {
  for (const auto& [path, reason] :
       {std::pair<std::string, std::string>{folder_ + "/none/settings.db", "none"},
        {folder_, "is not a regular file"},
        {"/proc/settings.db", "/proc"}}) {
    const auto opened = SqliteHive::Open(path);
    ASSERT_FALSE(opened.Ok()) << path;
    EXPECT_NE(opened.Reason().find(reason), std::string::npos) << opened.Reason();
  }
  const auto claim = SingleInstance::Claim(folder_ + "/none");
  ASSERT_FALSE(claim.Ok());
  EXPECT_NE(claim.Reason().find("none/zeb.lock"), std::string::npos);
}

TEST_F(SettingsInFile, OneInstanceOnlyAndAKilledOneLeavesNoObstacle) {
  auto first = SingleInstance::Claim(folder_);
  ASSERT_TRUE(first.Ok() && first.Value() != nullptr) << (first.Ok() ? "held" : first.Reason());
  auto second = SingleInstance::Claim(folder_);
  ASSERT_TRUE(second.Ok());
  EXPECT_EQ(second.Value(), nullptr);
  first.Value().reset();

  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    auto claim = SingleInstance::Claim(folder_);
    const char got = claim.Ok() && claim.Value() != nullptr ? 'y' : 'n';
    (void)!write(ready[1], &got, 1);
    for (;;) pause();
  }
  char got = 0;
  ASSERT_EQ(read(ready[0], &got, 1), 1);
  EXPECT_EQ(got, 'y');
  EXPECT_EQ(SingleInstance::Claim(folder_).Value(), nullptr);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_NE(SingleInstance::Claim(folder_).Value(), nullptr);
  close(ready[0]);
  close(ready[1]);
}

}  // namespace
}  // namespace zeb
