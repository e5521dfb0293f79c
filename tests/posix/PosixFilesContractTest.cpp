#include <filesystem>

#include "platform/posix/PosixFiles.h"
#include "tests/platform/FileLinksContract.h"

namespace zeb {
namespace {

struct PosixFolder : testing::Test {
  PosixFolder() {
    std::string pattern = testing::TempDir() + "zeb-contract-XXXXXX";
    folder = ::mkdtemp(pattern.data());
  }
  ~PosixFolder() override { std::filesystem::remove_all(folder); }
  static void MakeLink(const std::string& path, const std::string& to) {
    std::filesystem::create_symlink(to, path);
  }
  static SystemWords Words() { return {}; }
  PosixFiles files{"/srv/zeb"};
  std::string folder;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileSystemContract, PosixFolder);
INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileLinksContract, PosixFolder);

}  // namespace
}  // namespace zeb
