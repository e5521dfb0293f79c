// What any FileSystem must do, checked against both the simulated and the real one. A suite supplies `files`,
// `folder`, an empty folder to work in, and Words(), what the system says. `files` began before all else.
// FileLinksContract.h is the same for symbolic links.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "text/Paths.h"

namespace zeb {

struct SystemWords {
  std::string noSuchFile = "No such file or directory";
  std::string noSuchFolder = "No such file or directory";  // of a file that was looked for in it
  std::string isFolder = "Is a directory";
  std::string noFolder = "Not a directory";
  std::string listsNoFolder = "Not a directory";
};

// What the suites have in common.
template <class Fixture>
struct OnFiles : Fixture {
  std::string In(const std::string& name) { return this->folder + "/" + name; }
  std::string Contents(const std::string& name) {
    Result<std::string> read = this->files.Read(In(name), 1 << 20);
    return read ? read.Value() : "<" + read.Reason() + ">";
  }
  void Put(const std::string& name, const std::string& bytes) {
    const Outcome written = this->files.Write(In(name), bytes);
    ASSERT_TRUE(written) << written.Reason();
  }
  // The reason when it fails.
  Outcome Placed(const std::string& path, const std::string& bytes, const LinkRules& rules = {}) {
    const auto target = this->files.FindTarget(path, rules);
    return target ? target.Value()->Replace(bytes) : Outcome(target);
  }
  void Place(const std::string& name, const std::string& bytes, const LinkRules& rules = {}) {
    const Outcome placed = Placed(In(name), bytes, rules);
    ASSERT_TRUE(placed) << placed.Reason();
  }
  static std::string Slashes(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
  }
  std::vector<std::string> Names() { return this->files.List(this->folder).Value(); }
  // Fails, and says why in the system's words.
  template <class Answer>
  void Refused(const Answer& answer, const std::string& why) {
    EXPECT_FALSE(answer.Ok()) << why;
    if (!answer.Ok()) {
      EXPECT_NE(answer.Reason().find("': " + why), std::string::npos) << answer.Reason();
    }
  }
};

template <class Fixture>
struct FileSystemContract : OnFiles<Fixture> {};

TYPED_TEST_SUITE_P(FileSystemContract);

TYPED_TEST_P(FileSystemContract, WritesAppendsAndReads) {
  this->Put("a", "longer than what follows");
  this->Put("a", "one");
  ASSERT_TRUE(this->files.Append(this->In("a"), " two"));
  ASSERT_TRUE(this->files.Append(this->In("b"), "new"));
  EXPECT_EQ(this->Contents("a"), "one two");
  EXPECT_EQ(this->Contents("b"), "new");
  EXPECT_TRUE(this->files.Read(this->In("a"), 7));
  this->Refused(this->files.Read(this->In("a"), 6), "it is larger than 6 bytes");
  EXPECT_EQ(this->files.Stat(this->In("a"))->size, 7u);
}

TYPED_TEST_P(FileSystemContract, ReadsInBlocksWhatWasOpened) {
  this->Put("a", "0123456789");
  Result<std::unique_ptr<FileReader>> opened = this->files.OpenForReading(this->In("a"));
  ASSERT_TRUE(opened) << opened.Reason();
  this->Place("a", "x");  // as a page is replaced meanwhile
  EXPECT_EQ(opened.Value()->Size(), 10u);
  std::array<char, 4> block{};
  std::string read;
  std::vector<std::size_t> lengths;
  for (int i = 0; i < 5; ++i) {
    const Result<std::size_t> got = opened.Value()->Read(block.data(), block.size());
    ASSERT_TRUE(got) << got.Reason();
    lengths.push_back(got.Value());
    read.append(block.data(), got.Value());
  }
  EXPECT_EQ(read, "0123456789");
  EXPECT_EQ(lengths, (std::vector<std::size_t>{4, 4, 2, 0, 0}));
}

TYPED_TEST_P(FileSystemContract, RefusesWhatIsNoFile) {
  this->Put("file", "x");
  ASSERT_TRUE(this->files.CreateFolders(this->In("folder")));
  const SystemWords words = this->Words();
  struct Case {
    const char* name;
    std::string why;
  };
  for (const Case& c :
       {Case{"none", words.noSuchFile}, Case{"none/a", words.noSuchFolder}, Case{"file/a", words.noFolder}}) {
    const std::string path = this->In(c.name);
    this->Refused(this->files.Read(path, 9), c.why);
    this->Refused(this->files.OpenForReading(path), c.why);
    EXPECT_FALSE(this->files.Stat(path));
    if (path != this->In("none")) {
      this->Refused(this->files.Write(path, "x"), c.why);
      this->Refused(this->files.Append(path, "x"), c.why);
      this->Refused(this->Placed(path, "x"), c.why);
    }
  }
  const std::string folder = this->In("folder");
  EXPECT_FALSE(this->files.Read(folder, 9));
  EXPECT_FALSE(this->files.OpenForReading(folder));
  this->Refused(this->files.Write(folder, "x"), words.isFolder);
  this->Refused(this->files.Delete(folder), words.isFolder);
  this->Refused(this->Placed(folder, "x"), "it is a folder; choose the name of a file");
  EXPECT_TRUE(this->files.Stat(folder)->isFolder);
  EXPECT_EQ(this->Contents("file"), "x");
}

TYPED_TEST_P(FileSystemContract, DeletingWhatIsNotThereIsASuccess) {
  this->Put("a", "x");
  EXPECT_TRUE(this->files.Delete(this->In("a")));
  EXPECT_TRUE(this->files.Delete(this->In("a")));
  EXPECT_TRUE(this->files.Delete(this->In("none/a")));
  EXPECT_TRUE(this->files.Delete(""));
}

TYPED_TEST_P(FileSystemContract, PutsAFileInItsPlaceAndLeavesNothingElse) {
  this->Place("a", "first");
  EXPECT_EQ(this->Contents("a"), "first");
  this->Place("a", "the second one");
  this->Place("a", "");
  EXPECT_EQ(this->Contents("a"), "");
  this->Put("a.tmp", "left over");
  this->Place("a", "third");
  EXPECT_EQ(this->Contents("a"), "third");
  EXPECT_EQ(this->Names(), std::vector<std::string>{"a"});
  EXPECT_EQ(this->files.FindTarget(this->In("a"), {}).Value()->Path(), this->In("a"));
  EXPECT_FALSE(this->files.FindTarget("", {}));

  ASSERT_TRUE(this->files.CreateFolders(this->In("a.tmp")));
  this->Refused(this->Placed(this->In("a"), "x"),
                "'" + this->In("a.tmp") + "' is in the way and cannot be removed: " + this->Words().isFolder);
  EXPECT_EQ(this->Contents("a"), "third");
  EXPECT_EQ(this->Names().size(), 2u);
}

TYPED_TEST_P(FileSystemContract, CopiesContentsAndTime) {
  this->Put("a", "0123456789");
  this->Put("b", "old");
  const std::int64_t modified = this->files.Stat(this->In("a"))->modified;
  const auto source = this->files.OpenForReading(this->In("a"));
  ASSERT_TRUE(source);
  ASSERT_TRUE(this->files.Append(this->In("a"), "grows"));
  const auto target = this->files.FindTarget(this->In("b"), {});
  ASSERT_TRUE(target);
  ASSERT_TRUE(target.Value()->ReplaceByCopy(*source.Value(), modified));
  EXPECT_EQ(this->Contents("b"), "0123456789");
  EXPECT_EQ(this->files.Stat(this->In("b"))->modified, modified);
  EXPECT_EQ(this->Names(), (std::vector<std::string>{"a", "b"}));
}

// A file of this run, as an update under way has it, stays.
TYPED_TEST_P(FileSystemContract, OnlyWhatAnEarlierRunLeftIsRemoved) {
  this->Put("a.tmp", "now");
  const auto target = this->files.FindTarget(this->In("a"), {});
  ASSERT_TRUE(target);
  EXPECT_FALSE(target.Value()->RemoveLeftOver());
  EXPECT_EQ(this->Contents("a.tmp"), "now");
  EXPECT_FALSE(this->files.FindTarget(this->In("none"), {}).Value()->RemoveLeftOver());
  const Result<std::string> temp = this->files.MakeTempFile("TMP");
  ASSERT_TRUE(temp);
  EXPECT_EQ(this->files.DeleteLeftTempFiles("TMP"), 0u);
  EXPECT_TRUE(this->files.Stat(temp.Value()));
  EXPECT_TRUE(this->files.Delete(temp.Value()));
}

// Also when another file has taken its name, and whatever has been read already.
TYPED_TEST_P(FileSystemContract, CopiesTheFileThatIsOpen) {
  this->Put("a", "looked at");
  this->Put("b", "old");
  const std::int64_t modified = this->files.Stat(this->In("a"))->modified;
  Result<std::unique_ptr<FileReader>> opened = this->files.OpenForReading(this->In("a"));
  ASSERT_TRUE(opened) << opened.Reason();
  EXPECT_EQ(opened.Value()->Info().size, 9u);
  EXPECT_TRUE(opened.Value()->Info().isRegular && opened.Value()->Info().openToAll);
  char first = 0;
  ASSERT_TRUE(opened.Value()->Read(&first, 1));
  EXPECT_EQ(first, 'l');
  this->Place("a", "secret");
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(opened.Value()->Rewind());
    const auto target = this->files.FindTarget(this->In("b"), {});
    ASSERT_TRUE(target);
    const Outcome copied = target.Value()->ReplaceByCopy(*opened.Value(), modified);
    ASSERT_TRUE(copied) << copied.Reason();
    EXPECT_EQ(this->Contents("b"), "looked at");
    EXPECT_EQ(this->files.Stat(this->In("b"))->modified, modified);
  }
  ASSERT_TRUE(opened.Value()->Rewind());
  ASSERT_TRUE(opened.Value()->Read(&first, 1));
  EXPECT_EQ(first, 'l');
}

TYPED_TEST_P(FileSystemContract, TellsWhereThingsLie) {
  ASSERT_TRUE(this->files.CreateFolders(this->In("x")));
  this->Put("x/a", "1");
  const Result<std::string> folder = this->files.RealPath(this->folder);
  ASSERT_TRUE(folder) << folder.Reason();
  const Result<std::string> real = this->files.RealPath(this->In("./x//a"));
  ASSERT_TRUE(real) << real.Reason();
  EXPECT_EQ(this->Slashes(real.Value()), this->Slashes(folder.Value()) + "/x/a");
  EXPECT_EQ(this->Slashes(this->files.RealPath(this->In("x/")).Value()),
            this->Slashes(folder.Value()) + "/x");
  const Result<std::unique_ptr<FileReader>> opened = this->files.OpenForReading(this->In("./x//a"));
  ASSERT_TRUE(opened) << opened.Reason();
  ASSERT_TRUE(opened.Value()->RealPath());
  EXPECT_EQ(opened.Value()->RealPath().Value(), real.Value());
  this->Refused(this->files.RealPath(this->In("x/none")), this->Words().noSuchFile);
  EXPECT_FALSE(this->files.RealPath(""));
}

// A file in another one's place is told apart from it, however alike they are.
TYPED_TEST_P(FileSystemContract, TellsWhichFileItIs) {
  this->Put("a", "1");
  const FileInfo old = *this->files.Stat(this->In("a"));
  this->Place("a", "2");
  const FileInfo fresh = *this->files.Stat(this->In("a"));
  EXPECT_EQ(fresh.device, old.device);
  EXPECT_NE(fresh.inode, old.inode);
  EXPECT_GE(fresh.changed, old.changed);
  EXPECT_GE(fresh.seen, old.seen);
  ASSERT_TRUE(this->files.Write(this->In("a"), "3"));
  EXPECT_EQ(this->files.Stat(this->In("a"))->inode, fresh.inode);
}

TYPED_TEST_P(FileSystemContract, MakesAndListsFolders) {
  ASSERT_TRUE(this->files.CreateFolders(this->In("x/y")));
  ASSERT_TRUE(this->files.CreateFolders(this->In("x/y")));
  this->Put("x/b", "");
  this->Put("x/a", "");
  Result<std::vector<std::string>> names = this->files.List(this->In("x"));
  ASSERT_TRUE(names) << names.Reason();
  EXPECT_EQ(names.Value(), (std::vector<std::string>{"a", "b", "y"}));
  this->Refused(this->files.List(this->In("none")), this->Words().noSuchFolder);
  this->Refused(this->files.List(this->In("x/a")), this->Words().listsNoFolder);
  this->Refused(this->files.CreateFolders(this->In("x/a/z")), this->Words().noFolder);
}

TYPED_TEST_P(FileSystemContract, TemporaryFilesHaveNamesOfTheirOwn) {
  Result<std::string> one = this->files.MakeTempFile("TMP"), two = this->files.MakeTempFile("TMP");
  ASSERT_TRUE(one && two);
  EXPECT_NE(one.Value(), two.Value());
  EXPECT_EQ(this->files.Stat(one.Value())->size, 0u);
  EXPECT_TRUE(this->files.Delete(one.Value()));
  EXPECT_TRUE(this->files.Delete(two.Value()));
}

REGISTER_TYPED_TEST_SUITE_P(FileSystemContract, WritesAppendsAndReads, ReadsInBlocksWhatWasOpened,
                            RefusesWhatIsNoFile, DeletingWhatIsNotThereIsASuccess,
                            PutsAFileInItsPlaceAndLeavesNothingElse, CopiesContentsAndTime,
                            CopiesTheFileThatIsOpen, TellsWhereThingsLie, OnlyWhatAnEarlierRunLeftIsRemoved,
                            TellsWhichFileItIs, MakesAndListsFolders, TemporaryFilesHaveNamesOfTheirOwn);

}  // namespace zeb
