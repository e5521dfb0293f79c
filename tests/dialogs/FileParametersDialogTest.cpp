#include <gtest/gtest.h>

#include "dialogs/FileParametersDialog.h"

namespace zeb {
namespace {

TEST(FileParametersDialogTest, ChecksInOrder) {
  constexpr auto kFile = FileParametersMode::kFile, kWeb = FileParametersMode::kWeb;
  const std::string seconds =
      "You can only give a number from 1 to 3600 seconds (1 Hour) for the Auto-Refresh";
  const std::string back =
      "You cannot use the \"\\\" character in the destination file name.\nWeb/WAP servers use a \"/\" "
      "instead";
  const std::string slash =
      "You cannot use the \"/\" character in the destination file name.\nFiles use the \"\\\" character "
      "instead";
  const std::string same = "The Source and Destination filenames cannot be the same in the same directory.";
  struct Case {
    FileParametersMode mode;
    FileParametersEntries entries;
    char separator;
    std::string message;
  };
  const Case cases[] = {
      {kFile, {"a", "b", false, ""}, '/', ""},
      {kFile, {"a", "b", true, "1"}, '/', ""},
      {kFile, {"a", "b", true, "3600"}, '/', ""},
      {kFile, {"", "/", true, "0"}, '\\', seconds},
      {kFile, {"a", "b", true, "3601"}, '/', seconds},
      {kFile, {"a", "b", true, ""}, '/', seconds},
      {kFile, {"a", "b", false, "9999"}, '/', ""},
      {kWeb, {"", "a\\b", false, ""}, '/', back},
      {kWeb, {"a", "/a", false, ""}, '/', ""},
      {kFile, {"", "a/b", false, ""}, '\\', slash},
      {kFile, {"/t/a", "/w/a", false, ""}, '/', ""},
      {kFile, {"", "", false, ""}, '/', "You must choose a Source File to use."},
      {kWeb, {"", "", false, ""}, '/', "You must choose a Source Page to use."},
      {kFile, {"/t/a", "/t/a", false, ""}, '/', same},
      {kFile, {"C:\\A", "c:\\a", false, ""}, '\\', same},
      {kFile, {"/t/A", "/t/a", false, ""}, '/', ""},
      {kWeb, {"a", "a", false, ""}, '/', ""},
      {kFile, {"a", "", false, ""}, '/', "You must choose an Destination File to use."},
      {kWeb, {"a", "", false, ""}, '/', "You must choose an Destination Page to use."},
  };
  for (const Case& c : cases)
    EXPECT_EQ(CheckFileParameters(c.mode, c.entries, c.separator).message, c.message)
        << c.entries.source << " " << c.entries.destination;
}

}  // namespace
}  // namespace zeb
