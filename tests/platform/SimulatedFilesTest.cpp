#include "platform/simulated/SimulatedFiles.h"
#include "tests/platform/FileSystemContract.h"

namespace zeb {
namespace {

struct SimulatedFolder : testing::Test {
  SimulatedFolder() { EXPECT_TRUE(files.CreateFolders(folder)); }
  void MakeLink(const std::string& path, const std::string& to) { files.PutLink(path, to); }
  SimulatedFiles files;
  const std::string folder = "/srv/here";
};
INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, FileSystemContract, SimulatedFolder);

}  // namespace
}  // namespace zeb
