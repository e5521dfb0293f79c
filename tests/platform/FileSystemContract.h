// What any FileSystem must do, checked against both the simulated and the real one. A suite supplies `files`
// and `folder`, an empty folder to work in.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace zeb {

template <class Fixture>
struct FileSystemContract : Fixture {
  std::string In(const std::string& name) { return this->folder + "/" + name; }
  std::string Contents(const std::string& name) {
    Result<std::string> read = this->files.Read(In(name), 1 << 20);
    return read ? read.Value() : "<" + read.Reason() + ">";
  }
  void Put(const std::string& name, const std::string& bytes) {
    const Outcome written = this->files.Write(In(name), bytes);
    ASSERT_TRUE(written) << written.Reason();
  }
  // Fails, and says why in the system's words.
  template <class Answer>
  void Refused(const Answer& answer, const std::string& why) {
    EXPECT_FALSE(answer.Ok()) << why;
    if (!answer.Ok()) {
      EXPECT_NE(answer.Reason().find("': " + why), std::string::npos) << answer.Reason();
    }
  }
};

TYPED_TEST_SUITE_P(FileSystemContract);

constexpr const char* kNoSuchFile = "No such file or directory";
constexpr const char* kIsFolder = "Is a directory";
constexpr const char* kNoFolder = "Not a directory";

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
  this->Put("other", "x");
  ASSERT_TRUE(this->files.Rename(this->In("other"), this->In("a")));  // as a page is replaced meanwhile
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
  struct Case {
    const char *name, *why;
  };
  for (const Case& c : {Case{"none", kNoSuchFile}, Case{"none/a", kNoSuchFile}, Case{"file/a", kNoFolder}}) {
    const std::string path = this->In(c.name);
    this->Refused(this->files.Read(path, 9), c.why);
    this->Refused(this->files.OpenForReading(path), c.why);
    this->Refused(this->files.Rename(path, this->In("to")), c.why);
    this->Refused(this->files.Copy(path, this->In("to")), c.why);
    EXPECT_FALSE(this->files.Stat(path));
    if (path != this->In("none")) {
      this->Refused(this->files.Write(path, "x"), c.why);
      this->Refused(this->files.Append(path, "x"), c.why);
      this->Refused(this->files.Copy(this->In("file"), path), c.why);
      this->Refused(this->files.Rename(this->In("file"), path), c.why);
    }
  }
  const std::string folder = this->In("folder");
  EXPECT_FALSE(this->files.Read(folder, 9));
  EXPECT_FALSE(this->files.OpenForReading(folder));
  this->Refused(this->files.Write(folder, "x"), kIsFolder);
  this->Refused(this->files.Delete(folder), kIsFolder);
  this->Refused(this->files.Rename(this->In("file"), folder), kIsFolder);
  EXPECT_TRUE(this->files.Stat(folder)->isFolder);
  EXPECT_EQ(this->Contents("file"), "x");
}

TYPED_TEST_P(FileSystemContract, DeletingWhatIsNotThereIsASuccess) {
  this->Put("a", "x");
  EXPECT_TRUE(this->files.Delete(this->In("a")));
  EXPECT_TRUE(this->files.Delete(this->In("a")));
  EXPECT_TRUE(this->files.Delete(this->In("none/a")));
  EXPECT_TRUE(this->files.Delete(""));
  this->Put("b", "x");
  this->Refused(this->files.Delete(this->In("b/c")), kNoFolder);
}

TYPED_TEST_P(FileSystemContract, RenamingAFileReplacesAFile) {
  this->Put("a", "new");
  this->Put("b", "old");
  ASSERT_TRUE(this->files.Rename(this->In("a"), this->In("b")));
  EXPECT_EQ(this->Contents("b"), "new");
  EXPECT_FALSE(this->files.Stat(this->In("a")));
  EXPECT_TRUE(this->files.Rename(this->In("b"), this->In("b")));
  EXPECT_EQ(this->Contents("b"), "new");
}

TYPED_TEST_P(FileSystemContract, RenamingAFolderTakesItsFilesAlong) {
  ASSERT_TRUE(this->files.CreateFolders(this->In("from/deep")));
  this->Put("from/a", "1");
  this->Put("from/deep/b", "2");
  this->Put("from-not", "3");
  ASSERT_TRUE(this->files.Rename(this->In("from"), this->In("to")));
  EXPECT_EQ(this->Contents("to/a"), "1");
  EXPECT_EQ(this->Contents("to/deep/b"), "2");
  EXPECT_EQ(this->Contents("from-not"), "3");
  EXPECT_FALSE(this->files.Stat(this->In("from")));
  EXPECT_FALSE(this->files.Stat(this->In("from/a")));

  ASSERT_TRUE(this->files.CreateFolders(this->In("empty")));
  ASSERT_TRUE(this->files.Rename(this->In("to"), this->In("empty")));
  EXPECT_EQ(this->Contents("empty/a"), "1");
  ASSERT_TRUE(this->files.CreateFolders(this->In("full")));
  this->Put("full/c", "4");
  this->Refused(this->files.Rename(this->In("empty"), this->In("full")), "Directory not empty");
  this->Refused(this->files.Rename(this->In("empty"), this->In("from-not")), kNoFolder);
  this->Refused(this->files.Rename(this->In("empty"), this->In("empty/deep/below")), "Invalid argument");
  EXPECT_EQ(this->Contents("empty/deep/b"), "2");
}

TYPED_TEST_P(FileSystemContract, CopiesContentsAndTime) {
  this->Put("a", "new");
  this->Put("b", "old");
  ASSERT_TRUE(this->files.Copy(this->In("a"), this->In("b")));
  EXPECT_EQ(this->Contents("b"), "new");
  EXPECT_EQ(this->files.Stat(this->In("a"))->modified, this->files.Stat(this->In("b"))->modified);
  EXPECT_FALSE(this->files.Copy(this->In("a"), this->In("a")));
  EXPECT_EQ(this->Contents("a"), "new");
}

// A file in another one's place is told apart from it, however alike they are.
TYPED_TEST_P(FileSystemContract, TellsWhichFileItIs) {
  this->Put("a", "1");
  const FileInfo old = *this->files.Stat(this->In("a"));
  ASSERT_TRUE(this->files.Copy(this->In("a"), this->In("b")));
  const FileInfo copy = *this->files.Stat(this->In("b"));
  EXPECT_EQ(copy.device, old.device);
  EXPECT_NE(copy.inode, old.inode);
  EXPECT_EQ(copy.modified, old.modified);
  EXPECT_GE(copy.changed, old.changed);
  EXPECT_GE(copy.seen, old.seen);
  ASSERT_TRUE(this->files.Rename(this->In("b"), this->In("a")));
  EXPECT_EQ(this->files.Stat(this->In("a"))->inode, copy.inode);
  ASSERT_TRUE(this->files.Write(this->In("a"), "2"));
  EXPECT_EQ(this->files.Stat(this->In("a"))->inode, copy.inode);
}

TYPED_TEST_P(FileSystemContract, MakesAndListsFolders) {
  ASSERT_TRUE(this->files.CreateFolders(this->In("x/y")));
  ASSERT_TRUE(this->files.CreateFolders(this->In("x/y")));
  this->Put("x/b", "");
  this->Put("x/a", "");
  Result<std::vector<std::string>> names = this->files.List(this->In("x"));
  ASSERT_TRUE(names) << names.Reason();
  EXPECT_EQ(names.Value(), (std::vector<std::string>{"a", "b", "y"}));
  this->Refused(this->files.List(this->In("none")), kNoSuchFile);
  this->Refused(this->files.List(this->In("x/a")), kNoFolder);
  this->Refused(this->files.CreateFolders(this->In("x/a/z")), kNoFolder);
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
                            RefusesWhatIsNoFile, DeletingWhatIsNotThereIsASuccess, RenamingAFileReplacesAFile,
                            RenamingAFolderTakesItsFilesAlong, CopiesContentsAndTime, TellsWhichFileItIs,
                            MakesAndListsFolders, TemporaryFilesHaveNamesOfTheirOwn);

}  // namespace zeb
