// Files through Windows: what every file system must do, and what is particular here: names, long paths, and
// files that other programs hold.
#include <windows.h>

#include <filesystem>
#include <string>

#include "platform/windows/SystemError.h"
#include "platform/windows/WideText.h"
#include "platform/windows/WinFiles.h"
#include "tests/platform/FileSystemContract.h"

namespace zeb {
namespace {

struct WinFolder : testing::Test {
  WinFolder() {
    static int count = 0;
    const std::string name =
        "zeb-files-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
    const auto made = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directories(made);
    folder = Narrow(made.generic_wstring());
  }
  ~WinFolder() override { std::filesystem::remove_all(folder); }
  static std::wstring Long(const std::string& path) {
    std::wstring name = Wide(path);
    for (wchar_t& letter : name)
      if (letter == L'/') letter = L'\\';
    return name;
  }
  static SystemWords Words() {
    SystemWords words;
    words.noSuchFile = SystemErrorText(ERROR_FILE_NOT_FOUND);
    words.noSuchFolder = words.noFolder = SystemErrorText(ERROR_PATH_NOT_FOUND);
    words.listsNoFolder = "it is not a folder";
    words.isFolder = SystemErrorText(ERROR_ACCESS_DENIED);
    return words;
  }

  WinFiles files{"C:\\ProgramData\\ZEB"};
  std::string folder;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Windows, FileSystemContract, WinFolder);

struct WinFilesTest : OnFiles<WinFolder> {};

TEST_F(WinFilesTest, NamesOfDevicesAreRefused) {
  for (const char* name : {"con", "NUL", "aux.html", "COM1", "lpt9.txt"}) {
    const Outcome placed = Placed(In(name), "x");
    EXPECT_FALSE(placed) << name;
    EXPECT_NE(placed.Reason().find("device"), std::string::npos) << placed.Reason();
  }
  Place("com10.txt", "no device");
  Place("console", "no device");
}

TEST_F(WinFilesTest, PathsAreAsLongAsNeeded) {
  std::string deep;
  while (deep.size() < 600) deep += std::string(50, 'd') + "/";
  ASSERT_TRUE(files.CreateFolders(In(deep)));
  Place(deep + "page.html", "deep");
  EXPECT_EQ(Contents(deep + "page.html"), "deep");
  EXPECT_EQ(files.List(In(deep)).Value(), std::vector<std::string>{"page.html"});
  EXPECT_TRUE(files.Delete(In(deep + "page.html")));
  // Who cleans up knows short paths only.
  for (; !deep.empty(); deep.resize(deep.size() - 51))
    EXPECT_NE(RemoveDirectoryW((L"\\\\?\\" + Long(In(deep.substr(0, deep.size() - 1)))).c_str()), 0);
}

TEST_F(WinFilesTest, NamesInEveryScriptAreKept) {
  for (const char* name : {"Böen FM.html", "夜明け.txt", "🎈.json"}) {
    Place(name, name);
    EXPECT_EQ(Contents(name), name);
  }
  EXPECT_EQ(Names(), (std::vector<std::string>{"Böen FM.html", "夜明け.txt", "🎈.json"}));
}

// A web server that reads a page keeps nobody from replacing it; a program that lets nobody in is named by
// the system's words, and the page before stays as it was.
TEST_F(WinFilesTest, APageThatOthersHold) {
  Place("page", "first");
  const auto open = [&](DWORD sharing) {
    return CreateFileW(Long(In("page")).c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
  };
  HANDLE held = open(FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  Place("page", "second");
  CloseHandle(held);
  held = open(0);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(Placed(In("page"), "third"));
  CloseHandle(held);
  EXPECT_EQ(Contents("page"), "second");
  EXPECT_EQ(Names(), std::vector<std::string>{"page"});
  Place("page", "third");
  EXPECT_EQ(Contents("page"), "third");
}

}  // namespace
}  // namespace zeb
