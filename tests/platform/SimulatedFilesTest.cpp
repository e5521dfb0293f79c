#include "platform/simulated/SimulatedFiles.h"
#include "tests/platform/FileLinksContract.h"

namespace zeb {
namespace {

struct SimulatedFolder : testing::Test {
  SimulatedFolder() { EXPECT_TRUE(files.CreateFolders(folder)); }
  void MakeLink(const std::string& path, const std::string& to) { files.PutLink(path, to); }
  static SystemWords Words() { return {}; }
  SimulatedFiles files;
  const std::string folder = "/srv/here";
};
INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, FileSystemContract, SimulatedFolder);
INSTANTIATE_TYPED_TEST_SUITE_P(Simulated, FileLinksContract, SimulatedFolder);

TEST_F(SimulatedFolder, NothingIsDeletedBelowAFile) {
  ASSERT_TRUE(files.Write(folder + "/b", "x"));
  EXPECT_FALSE(files.Delete(folder + "/b/c"));
}

}  // namespace
}  // namespace zeb
