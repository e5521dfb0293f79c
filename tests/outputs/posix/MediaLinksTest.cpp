// Which pictures are taken, on real files with links and modes.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

#include "outputs/file/MediaRules.h"
#include "platform/posix/PosixFiles.h"

namespace zeb {
namespace {

const std::string kJpeg = "\xFF\xD8\xFF\xE0 a picture";

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

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
