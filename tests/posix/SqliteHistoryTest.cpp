// The history's file: what is written is read, it stays within its limits, and nothing that can happen to a
// file damages it or is told wrongly.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "platform/common/SqliteHistory.h"
#include "platform/common/SqliteHistoryReader.h"

namespace zeb {
namespace {

using Trouble = HistoryOutcome::Trouble;
using namespace std::chrono_literals;

constexpr std::int64_t kNow = 1795500000000;  // 2026-11-24
constexpr std::int64_t kDay = 86400000;

std::string Random(std::mt19937& random, std::size_t size) {
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

HistoryItem Item(std::int64_t utc, const std::string& record, int service = 1, int slot = kHistoryCurrent) {
  HistoryItem item;
  item.moment = {utc, 1h};
  item.service = service;
  item.slot = slot;
  item.serviceName = "Demo FM";
  item.source = "control link";
  item.record = record;
  return item;
}

HistoryPublication Publication(std::int64_t utc, const std::string& text, const std::string& problem = "") {
  HistoryPublication shown;
  shown.moment = {utc, 1h};
  shown.service = 1;
  shown.output = "File2";
  shown.part = "/www/now.html";
  shown.text = text;
  shown.problem = problem;
  shown.templateText = "<ZEB_NOW_ITEMNAME>";
  return shown;
}

class SqliteHistoryTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "zeb-history-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder = pattern;
    path = folder + "/history.db";
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  HistoryOutcome WriteItem(SqliteHistory& store, std::int64_t utc, const std::string& record) {
    HistoryBatch batch;
    batch.items = {Item(utc, record)};
    return store.Write(batch, limits);
  }
  std::vector<HistoryItem> Items(const HistoryFilter& filter = {}, HistoryPlace place = {},
                                 int most = 100000) {
    auto reader = SqliteHistoryReader::Open(path);
    if (!reader) {
      ADD_FAILURE() << reader.Reason();
      return {};
    }
    auto items = reader.Value()->Items(filter, place, most);
    if (!items) ADD_FAILURE() << items.Reason();
    return items ? items.Value() : std::vector<HistoryItem>();
  }
  std::uintmax_t BytesOnDisk() const {
    std::uintmax_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) bytes += entry.file_size();
    return bytes;
  }
  std::string Ask(const char* sql) const {
    sqlite3* database = nullptr;
    std::string answer;
    sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    const auto take = [](void* to, int, char** columns, char**) {
      *static_cast<std::string*>(to) = columns[0] != nullptr ? columns[0] : "";
      return 0;
    };
    sqlite3_exec(database, sql, take, &answer, nullptr);
    sqlite3_close(database);
    return answer;
  }

  std::string folder, path;
  HistoryLimits limits;
};

TEST_F(SqliteHistoryTest, GivesBackWhatWasWritten) {
  SqliteHistory store(path);
  HistoryBatch batch;
  batch.items = {Item(kNow, std::string("rec\0ord", 7)), Item(kNow + 5, "", 2, -3)};
  HistoryUpdate update;
  update.id = 77;
  update.moment = {kNow + 1, -2h};
  update.service = 1;
  update.cause = 2;
  update.words = "words";
  update.items = {{0, "now"}, {1, "next"}, {50, "far"}, {kHistoryComingSoon, "soon"},
                  {-1, "b"},  {-50, "now"}};
  batch.updates = {update};
  HistoryPublication shown = Publication(kNow + 2, "text");
  shown.digest = "abc";
  shown.bytes = 5'000'000'000;
  shown.latency = 1234us;
  shown.simpleText = "simple";
  shown.update = 77;
  shown.updateMoment = {kNow + 1, -2h};
  batch.publications = {shown, Publication(kNow + 3, "", "disk full")};
  ASSERT_TRUE(store.Write(batch, limits).Ok());

  const std::vector<HistoryItem> items = Items();
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0].record, std::string("rec\0ord", 7));
  EXPECT_EQ(items[0].serviceName + items[0].source, "Demo FMcontrol link");
  EXPECT_EQ(items[0].moment, HistoryMoment(kNow, 1h));
  EXPECT_EQ(items[1].slot, -3);
  EXPECT_EQ(items[1].record, "");

  auto opened = SqliteHistoryReader::Open(path);
  ASSERT_TRUE(opened) << opened.Reason();
  HistoryReader& reader = *opened.Value();
  const auto found = reader.FindUpdate(77);
  ASSERT_TRUE(found && found.Value());
  EXPECT_EQ(found.Value()->moment, update.moment);
  EXPECT_EQ(found.Value()->cause, 2);
  EXPECT_EQ(reader.Bytes(found.Value()->words).Value(), "words");
  ASSERT_EQ(found.Value()->items.size(), 6u);
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(found.Value()->items[i].first, update.items[i].slot);
    EXPECT_EQ(reader.Bytes(found.Value()->items[i].second).Value(), update.items[i].record);
  }
  EXPECT_EQ(found.Value()->items[0].second, found.Value()->items[5].second);  // kept once
  EXPECT_FALSE(reader.FindUpdate(78).Value());
  EXPECT_EQ(reader.Updates({}, {}, 10).Value().size(), 1u);

  const auto rows = reader.Publications({}, {}, 10).Value();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].output + rows[0].part, "File2/www/now.html");
  EXPECT_EQ(rows[0].text + rows[0].digest + rows[0].templateText + rows[0].simpleText,
            "textabc<ZEB_NOW_ITEMNAME>simple");
  EXPECT_EQ(rows[0].bytes, 5'000'000'000u);
  EXPECT_EQ(rows[0].latency, 1234us);
  EXPECT_EQ(rows[0].update, 77);
  EXPECT_EQ(rows[0].updateMoment, shown.updateMoment);
  EXPECT_EQ(rows[1].problem, "disk full");
  EXPECT_FALSE(rows[1].latency);
  EXPECT_EQ(reader.Outputs(1).Value(), std::vector<std::string>{"File2"});
  EXPECT_EQ(reader.Parts(1, "File2").Value(), std::vector<std::string>{"/www/now.html"});
}

TEST_F(SqliteHistoryTest, ReadsInTheOrderOfTimeAndInPieces) {
  SqliteHistory store(path);
  HistoryBatch batch;
  // Out of order, as after a clock was put back; and three at one moment.
  for (const int at : {5, 1, 3, 3, 3, 2, 4}) batch.items.push_back(Item(kNow + at, std::to_string(at)));
  batch.items.push_back(Item(kNow + 3, "other service", 2));
  batch.items.push_back(Item(kNow + 3, "next", 1, 1));
  ASSERT_TRUE(store.Write(batch, limits).Ok());

  HistoryFilter filter;
  filter.service = 1;
  filter.slot = kHistoryCurrent;
  std::string order;
  HistoryPlace place;
  for (;;) {
    const std::vector<HistoryItem> piece = Items(filter, place, 2);
    if (piece.empty()) break;
    for (const HistoryItem& item : piece) order += item.record;
    place = {piece.back().moment.utc, piece.back().id};
  }
  EXPECT_EQ(order, "1233345");
  filter.from = kNow + 2;
  filter.to = kNow + 4;
  order.clear();
  for (const HistoryItem& item : Items(filter)) order += item.record;
  EXPECT_EQ(order, "2333");
  EXPECT_EQ(Items().size(), 9u);
}

TEST_F(SqliteHistoryTest, FindsTheLastOfAnOutputAndASlot) {
  SqliteHistory store(path);
  HistoryBatch batch;
  batch.publications = {Publication(kNow, "A"), Publication(kNow + 10, "", "fails"),
                        Publication(kNow + 20, "B")};
  batch.items = {Item(kNow, "a"), Item(kNow + 20, "b"), Item(kNow + 20, "c")};
  ASSERT_TRUE(store.Write(batch, limits).Ok());
  auto opened = SqliteHistoryReader::Open(path);
  ASSERT_TRUE(opened);
  HistoryReader& reader = *opened.Value();
  struct Case {
    std::int64_t after;
    HistoryResult result;
    std::string found;
  };
  for (const Case& c : {Case{-1, HistoryResult::kAny, ""}, Case{0, HistoryResult::kAny, "A"},
                        Case{10, HistoryResult::kPublished, "A"}, Case{15, HistoryResult::kFailed, "fails"},
                        Case{9, HistoryResult::kFailed, ""}, Case{20, HistoryResult::kPublished, "B"},
                        Case{9999, HistoryResult::kAny, "B"}}) {
    const auto last = reader.LastPublication(1, "File2", "/www/now.html", kNow + c.after, c.result).Value();
    EXPECT_EQ(last ? last->text + last->problem : "", c.found) << c.after;
  }
  EXPECT_FALSE(reader.LastPublication(2, "File2", "/www/now.html", kNow + 99, HistoryResult::kAny).Value());
  EXPECT_EQ(reader.LastItem(1, kHistoryCurrent, kNow + 19).Value()->record, "a");
  EXPECT_EQ(reader.LastItem(1, kHistoryCurrent, kNow + 20).Value()->record, "c");
  EXPECT_FALSE(reader.LastItem(1, 1, kNow + 20).Value());
}

TEST_F(SqliteHistoryTest, IsForItsOwnerOnly) {
  SqliteHistory store(path);
  ASSERT_TRUE(WriteItem(store, kNow, "r").Ok());
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    struct stat info {};
    ASSERT_EQ(::stat(entry.path().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u) << entry.path();
  }
}

TEST_F(SqliteHistoryTest, GivesUpWhatIsTooOldInPieces) {
  SqliteHistory store(path);
  std::mt19937 random(1);
  for (int day = 40; day >= 0; --day) {
    HistoryBatch batch;
    for (int i = 0; i < 60; ++i) batch.items.push_back(Item(kNow - day * kDay - 1, Random(random, 300)));
    batch.items.push_back(Item(kNow - day * kDay - 1, "each day"));
    ASSERT_TRUE(store.Write(batch, limits).Ok());
  }
  const std::uintmax_t before = BytesOnDisk();
  int pieces = 0;
  for (HistoryOutcome outcome{Trouble::kNone, "", true}; outcome.more; ++pieces) {
    const auto all = Items().size();
    outcome = store.CleanUp(limits, kNow);
    ASSERT_TRUE(outcome.Ok()) << outcome.reason;
    EXPECT_LE(all - Items().size(), 500u);
    ASSERT_LT(pieces, 20);
  }
  const std::vector<HistoryItem> left = Items();
  EXPECT_EQ(left.size(), 30u * 61);
  EXPECT_EQ(left.front().moment.utc, kNow - 29 * kDay - 1);
  EXPECT_GT(pieces, 1);
  for (const HistoryItem& item : left) EXPECT_FALSE(item.record.empty());  // none that is in use went
  // When a blob was last referred to is known to five minutes.
  while (store.CleanUp(limits, kNow + 6 * 60000).more) {
  }
  EXPECT_EQ(Ask("SELECT count(*) FROM blobs"), std::to_string(30 * 60 + 1 + 2));
  EXPECT_LT(BytesOnDisk(), before * 4 / 5);
  EXPECT_EQ(Ask("PRAGMA freelist_count"), "0");
}

TEST_F(SqliteHistoryTest, StaysWithinItsMegabytesWhateverIsWritten) {
  SqliteHistory store(path);
  limits.megabytes = 16;
  std::mt19937 random(2);
  std::uintmax_t most = 0;
  for (int i = 0; i < 400; ++i) {
    HistoryBatch batch;
    for (int k = 0; k < 10; ++k) batch.items.push_back(Item(kNow + i * 60000 + k, Random(random, 10000)));
    const HistoryOutcome written = store.Write(batch, limits);
    ASSERT_TRUE(written.Ok()) << written.reason << " at " << i;
    most = std::max(most, BytesOnDisk());
  }
  EXPECT_LE(most, 16u * 1024 * 1024);
  EXPECT_GT(most, 12u * 1024 * 1024);  // and makes use of them
  const std::vector<HistoryItem> left = Items();
  EXPECT_GT(left.size(), 500u);
  EXPECT_EQ(left.back().moment.utc, kNow + 399 * 60000 + 9);  // the newest are there
  EXPECT_EQ(left.back().record.size(), 10000u);
  EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");

  // A limit that is lowered later is reached by cleaning up.
  HistoryLimits more{30, 100};
  for (int i = 0; i < 40; ++i) {
    HistoryBatch batch;
    for (int k = 0; k < 100; ++k) batch.items.push_back(Item(kNow + 500 * 60000 + i, Random(random, 10000)));
    ASSERT_TRUE(store.Write(batch, more).Ok());
  }
  EXPECT_GT(BytesOnDisk(), 40u * 1024 * 1024);
  int pieces = 0;
  while (store.CleanUp(limits, kNow + 600 * 60000).more && ++pieces < 500) {
  }
  EXPECT_LE(BytesOnDisk(), 16u * 1024 * 1024);
}

TEST_F(SqliteHistoryTest, IsReadWhileItIsWrittenAndWhileAReaderIsHalfway) {
  SqliteHistory store(path);
  ASSERT_TRUE(WriteItem(store, kNow, "one").Ok());
  auto reader = SqliteHistoryReader::Open(path);
  ASSERT_TRUE(reader) << reader.Reason();
  EXPECT_EQ(reader.Value()->Items({}, {}, 10).Value().size(), 1u);
  ASSERT_TRUE(WriteItem(store, kNow + 1, "two").Ok());
  EXPECT_EQ(reader.Value()->Items({}, {}, 10).Value().size(), 2u);
  store.Close();
  EXPECT_EQ(reader.Value()->Items({}, {}, 10).Value().size(), 2u);
  ASSERT_TRUE(WriteItem(store, kNow + 2, "three").Ok());
}

TEST_F(SqliteHistoryTest, BoundsItsLogWhileAnotherProgramReadsForLong) {
  SqliteHistory store(path);
  limits.megabytes = 16;
  ASSERT_TRUE(WriteItem(store, kNow, "one").Ok());
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN; SELECT count(*) FROM items", nullptr, nullptr, nullptr), SQLITE_OK);
  std::mt19937 random(3);
  HistoryOutcome written;
  for (int i = 0; i < 200 && written.Ok(); ++i) written = WriteItem(store, kNow + i, Random(random, 60000));
  EXPECT_EQ(written.trouble, Trouble::kMayPass);
  EXPECT_NE(written.reason.find("another program has been reading it"), std::string::npos) << written.reason;
  EXPECT_LE(BytesOnDisk(), 16u * 1024 * 1024);
  sqlite3_close(other);
  EXPECT_TRUE(WriteItem(store, kNow + 999, "again").Ok());
}

TEST_F(SqliteHistoryTest, WaitsOnlyAMomentForALock) {
  SqliteHistory store(path);
  ASSERT_TRUE(WriteItem(store, kNow, "one").Ok());
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  const auto before = std::chrono::steady_clock::now();
  const HistoryOutcome written = WriteItem(store, kNow, "two");
  EXPECT_LT(std::chrono::steady_clock::now() - before, 5s);
  EXPECT_EQ(written.trouble, Trouble::kMayPass);
  EXPECT_EQ(written.reason, "history file '" + path + "' is locked by another program");
  sqlite3_close(other);
  EXPECT_TRUE(WriteItem(store, kNow, "two").Ok());
}

TEST_F(SqliteHistoryTest, TellsDamageAndBeginsAnew) {
  const std::string garbage(5000, 'x');
  std::ofstream(path) << garbage;
  SqliteHistory store(path);
  const HistoryOutcome written = WriteItem(store, kNow, "one");
  EXPECT_EQ(written.trouble, Trouble::kDamaged);
  EXPECT_EQ(written.reason.find('\n'), std::string::npos);
  EXPECT_NE(written.reason.find("history file '" + path + "' is damaged"), std::string::npos);
  const auto read = SqliteHistoryReader::Open(path);
  EXPECT_FALSE(read);
  const Result<std::string> aside = store.SetAside();
  ASSERT_TRUE(aside) << aside.Reason();
  EXPECT_EQ(std::filesystem::file_size(aside.Value()), garbage.size());
  EXPECT_TRUE(WriteItem(store, kNow, "one").Ok());
  EXPECT_EQ(Items().size(), 1u);
  // Of several the last one stays: the disk is not to fill up with them.
  ASSERT_TRUE(store.SetAside());
  EXPECT_TRUE(WriteItem(store, kNow, "one").Ok());
  ASSERT_TRUE(store.SetAside());
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) files += entry.path() != path;
  EXPECT_EQ(files, 1);
}

TEST_F(SqliteHistoryTest, TellsDamageInTheMiddle) {
  {
    SqliteHistory store(path);
    std::mt19937 random(4);
    for (int i = 0; i < 50; ++i) ASSERT_TRUE(WriteItem(store, kNow + i, Random(random, 5000)).Ok());
  }
  {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(4096);
    file << std::string(100 * 1024, '\xA5');
  }
  SqliteHistory store(path);
  EXPECT_EQ(WriteItem(store, kNow + 99, "one").trouble, Trouble::kDamaged);
  ASSERT_TRUE(store.SetAside());
  EXPECT_TRUE(WriteItem(store, kNow + 99, "one").Ok());
}

TEST_F(SqliteHistoryTest, LeavesFilesAloneThatAreNotItsOwn) {
  ASSERT_EQ(Ask("SELECT 1"), "");  // nothing there
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "CREATE TABLE mine(a)", nullptr, nullptr, nullptr), SQLITE_OK);
  SqliteHistory store(path);
  HistoryOutcome written = WriteItem(store, kNow, "one");
  EXPECT_EQ(written.trouble, Trouble::kMayPass);
  EXPECT_NE(written.reason.find("is not a history file of this program"), std::string::npos);
  sqlite3_exec(other, "PRAGMA user_version = 9", nullptr, nullptr, nullptr);
  written = WriteItem(store, kNow, "one");
  EXPECT_NE(written.reason.find("newer version"), std::string::npos) << written.reason;
  EXPECT_FALSE(SqliteHistoryReader::Open(path));
  sqlite3_close(other);
}

TEST_F(SqliteHistoryTest, BeginsAnewWhenTheFileIsTakenAway) {
  SqliteHistory store(path);
  ASSERT_TRUE(WriteItem(store, kNow, "one").Ok());
  std::filesystem::remove(path);  // its log stays behind
  EXPECT_TRUE(WriteItem(store, kNow, "two").Ok());
  const auto items = Items();
  ASSERT_EQ(items.size(), 1u);
  EXPECT_EQ(items[0].record, "two");
}

// As `> history.db` does. Whoever reads the empty file takes its log away, so what is written there is lost.
TEST_F(SqliteHistoryTest, BeginsAnewWhenTheFileIsEmptied) {
  SqliteHistory store(path);
  ASSERT_TRUE(WriteItem(store, kNow, "one").Ok());
  std::filesystem::resize_file(path, 0);
  EXPECT_FALSE(SqliteHistoryReader::Open(path));
  const HistoryOutcome written = WriteItem(store, kNow, "two");
  if (written.trouble == Trouble::kDamaged) {
    ASSERT_TRUE(store.SetAside());
    ASSERT_TRUE(WriteItem(store, kNow, "two").Ok());
  } else {
    ASSERT_TRUE(written.Ok()) << written.reason;
  }
  const auto items = Items();
  ASSERT_FALSE(items.empty());
  EXPECT_EQ(items.back().record, "two");
}

TEST_F(SqliteHistoryTest, TellsWhatCannotBeWrittenAndGoesOnWhenItCan) {
  // A name that is a folder; then a folder that is missing.
  std::filesystem::create_directory(path);
  SqliteHistory store(path);
  EXPECT_EQ(WriteItem(store, kNow, "one").reason, "history file '" + path + "' is not a regular file");
  std::filesystem::remove(path);
  std::filesystem::remove(folder);
  const HistoryOutcome written = WriteItem(store, kNow, "one");
  EXPECT_EQ(written.trouble, Trouble::kMayPass);
  EXPECT_EQ(written.reason, "cannot create history file '" + path + "': No such file or directory");
  std::filesystem::create_directory(folder);
  EXPECT_TRUE(WriteItem(store, kNow, "one").Ok());
}

TEST_F(SqliteHistoryTest, TellsAReadOnlyFile) {
  SqliteHistory store(path);
  ASSERT_TRUE(WriteItem(store, kNow, "one").Ok());
  store.Close();
  const pid_t child = ::fork();
  if (child == 0) {
    // Rights mean nothing to an administrator.
    ::chmod(path.c_str(), 0400);
    ::chmod(folder.c_str(), 0555);
    if (::geteuid() == 0 && (::chown(path.c_str(), 65534, 65534) != 0 || ::setuid(65534) != 0)) ::_exit(9);
    ::chmod(path.c_str(), 0400);
    HistoryBatch batch;
    batch.items = {Item(kNow, "two")};
    // RestrictSettingsFile would give the owner nothing back either.
    const HistoryOutcome outcome = SqliteHistory(path).Write(batch, HistoryLimits());
    ::_exit(outcome.trouble == Trouble::kMayPass && outcome.reason.find(path) != std::string::npos ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ::chmod(folder.c_str(), 0755);
  ::chmod(path.c_str(), 0600);
  EXPECT_TRUE(WriteItem(store, kNow, "three").Ok());
}

TEST_F(SqliteHistoryTest, TellsThereIsNoHistoryYet) {
  auto reader = SqliteHistoryReader::Open(path);
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.Reason(), "there is no history yet: '" + path + "' does not exist");
  EXPECT_FALSE(std::filesystem::exists(path));
  std::ofstream{path};
  reader = SqliteHistoryReader::Open(path);
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.Reason(), "there is no history yet: '" + path + "' is empty");
  // A writer that was killed before its first page.
  SqliteHistory store(path);
  EXPECT_TRUE(WriteItem(store, kNow, "one").Ok());
}

TEST_F(SqliteHistoryTest, GoesOnWhenAFullDiskHasRoomAgain) {
  const std::string disk = folder + "/disk";
  std::filesystem::create_directory(disk);
  if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=1m") != 0)
    GTEST_SKIP() << "only an administrator can make a small disk";
  path = disk + "/history.db";
  {
    SqliteHistory store(path);
    std::mt19937 random(5);
    HistoryOutcome written;
    for (int i = 0; i < 100 && written.Ok(); ++i) written = WriteItem(store, kNow + i, Random(random, 30000));
    EXPECT_EQ(written.trouble, Trouble::kMayPass) << written.reason;
    EXPECT_EQ(written.reason.find("history file '" + path + "'"), 0u) << written.reason;
    // What was written before is there, and nothing else was given up for it.
    const auto items = Items();
    ASSERT_GT(items.size(), 3u);
    EXPECT_EQ(items.front().moment.utc, kNow);
    ASSERT_EQ(::mount("tmpfs", disk.c_str(), "tmpfs", MS_REMOUNT, "size=8m"), 0);
    EXPECT_TRUE(WriteItem(store, kNow + 500, "again").Ok());
  }
  EXPECT_EQ(::umount(disk.c_str()), 0);
}

// A child writes until it is killed, 100 times: what it was told to have written is there, whole.
TEST_F(SqliteHistoryTest, IsNeverDamagedByAKill) {
  // Where the parent gets no processor, the child must not write so much that old items make room.
  constexpr std::int64_t kMostWritten = 100;
  std::mt19937 random(6);
  std::int64_t expected = 0;
  for (int round = 0; round < 100; ++round) {
    int told[2];
    ASSERT_EQ(::pipe(told), 0);
    const pid_t child = ::fork();
    if (child == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // it would wait for ever
      SqliteHistory store(path);
      for (std::int64_t i = 0; i < kMostWritten; ++i) {
        HistoryBatch batch;
        // Two rows that belong together, with bytes of their own.
        const std::string record = std::to_string(round) + ":" + std::to_string(i) + std::string(2000, 'r');
        batch.items = {Item(kNow + round * 100000 + i, record)};
        batch.publications = {Publication(kNow + round * 100000 + i, record)};
        if (!store.Write(batch, HistoryLimits()).Ok()) ::_exit(1);
        if (i % 50 == 49) store.CleanUp(HistoryLimits(), kNow);
        if (::write(told[1], "w", 1) != 1) ::_exit(2);
      }
      for (;;) ::pause();
    }
    ::close(told[1]);
    // Killed after so many bytes and turns, so at another place of the work each time.
    std::int64_t written = 0;
    char byte = 0;
    for (const auto until = static_cast<std::int64_t>(random() % 20); written < until; ++written)
      if (::read(told[0], &byte, 1) != 1) break;
    for (auto turns = random() % 3000; turns > 0; --turns) ::getppid();  // the time that a call takes
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status)) << "round " << round << " ended by itself: " << WEXITSTATUS(status);
    while (::read(told[0], &byte, 1) == 1) ++written;
    ::close(told[0]);
    expected += written;
  }
  EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
  const auto items = Items();
  const auto count = static_cast<std::int64_t>(items.size());
  EXPECT_GE(count, expected);
  EXPECT_LE(count, expected + 100);  // one a round that was written and not told
  auto reader = SqliteHistoryReader::Open(path);
  ASSERT_TRUE(reader);
  const auto shown = reader.Value()->Publications({}, {}, 1000000).Value();
  ASSERT_EQ(shown.size(), items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(items[i].record, shown[i].text);
    EXPECT_EQ(items[i].record.substr(items[i].record.size() - 3), "rrr");
  }
  SqliteHistory store(path);
  EXPECT_TRUE(WriteItem(store, kNow, "goes on").Ok());
}

}  // namespace
}  // namespace zeb
