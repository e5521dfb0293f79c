// Whole templates from files: NAME.template expands to NAME.expected, both byte for byte. Files named page-…
// go the way of pages: tags un-escaped, refresh header, piece by piece.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/OutputTypes.h"
#include "tests/templates/StationFixture.h"

namespace zeb {
namespace {

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Golden, Templates) {
  int tried = 0;
  for (const auto& entry : std::filesystem::directory_iterator(ZEB_TEST_DATA "/templates/golden")) {
    std::filesystem::path path = entry.path();
    if (path.extension() != ".template") continue;
    Station station;
    std::string text = ReadFile(path);
    if (path.filename().string().starts_with("page-")) {
      text = UndoEscapedTags(text);
      InsertRefreshHeader(text, {60, true, "3.0.0"}, station.environment.loop.Now());
      text = ExpandPage(text, *station.service.TakeSnapshot(), kDefaultSimpleTextFormat, station.uploads)
                 .value();
    } else {
      text = station.Expand(text, kDefaultSimpleTextFormat);
    }
    EXPECT_EQ(text, ReadFile(path.replace_extension(".expected"))) << path;
    ++tried;
  }
  EXPECT_GE(tried, 3);
}

}  // namespace
}  // namespace zeb
