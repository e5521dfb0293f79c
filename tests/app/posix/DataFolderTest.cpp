#include <gtest/gtest.h>

#include "platform/system/DataFolder.h"

namespace zeb {
namespace {

TEST(DataFolder, IsTheFirstPlaceThatIsGiven) {
  DataFolderPlaces places{"/given/", "/variable", "/var/lib/zeb", "/xdg", "/home/dj"};
  const std::pair<std::string DataFolderPlaces::*, std::string> steps[] = {
      {&DataFolderPlaces::home, "/given"},
      {&DataFolderPlaces::zebHome, "/variable"},
      {&DataFolderPlaces::system, "/var/lib/zeb"},
      {&DataFolderPlaces::xdgDataHome, "/xdg/zeb"},
      {&DataFolderPlaces::userHome, "/home/dj/.local/share/zeb"},
  };
  for (const auto& [place, folder] : steps) {
    EXPECT_EQ(ChooseDataFolder(places).Value(), folder);
    (places.*place).clear();
  }
  EXPECT_NE(ChooseDataFolder(places).Reason().find("--home"), std::string::npos);
}

TEST(DataFolder, IsAbsolute) {
  DataFolderPlaces places;
  places.home = "some/./where/../folder/";
  const std::string folder = ChooseDataFolder(places).Value();
  EXPECT_EQ(folder.front(), '/');
  EXPECT_EQ(folder.substr(folder.size() - 12), "/some/folder");
}

}  // namespace
}  // namespace zeb
