#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/common/LibzipFiles.h"

namespace zeb {
namespace {

constexpr WallTime kMoment{std::chrono::local_days(std::chrono::year(2026) / 11 / 24) +
                           std::chrono::hours(15) + std::chrono::minutes(30)};

// What another program makes of it.
std::string Unzip(const std::string& options, const std::string& bytes, const std::string& name = "") {
  const std::string path =
      (std::filesystem::temp_directory_path() / ("zeb-zip-" + std::to_string(getpid()) + ".zip")).string();
  std::ofstream(path, std::ios::binary) << bytes;
  FILE* pipe = popen(("unzip " + options + " '" + path + "' " + name + " 2>&1").c_str(), "r");
  std::string output;
  std::array<char, 4096> block{};
  for (std::size_t count = 0; (count = fread(block.data(), 1, block.size(), pipe)) > 0;)
    output.append(block.data(), count);
  pclose(pipe);
  std::filesystem::remove(path);
  return output;
}

TEST(LibzipFilesTest, UnzipGivesBackWhatWasPutIn) {
  std::string large;
  for (unsigned i = 0; i < 200000; ++i) large += static_cast<char>(i * 2654435761u >> 13);
  const std::vector<ZipEntry> entries = {
      {"about.txt", "ZEB\n"}, {"logs/zebd.20261124.log", large}, {"empty.txt", ""}, {"Übersicht.txt", "ä"}};
  const Result<std::string> zip = LibzipFiles().Make(entries, kMoment);
  ASSERT_TRUE(zip) << zip.Reason();
  EXPECT_NE(Unzip("-t", zip.Value()).find("No errors detected"), std::string::npos);
  for (std::size_t i = 0; i < 3; ++i)
    EXPECT_EQ(Unzip("-p", zip.Value(), entries[i].name), entries[i].bytes) << entries[i].name;
  const std::string list = Unzip("-l", zip.Value());
  EXPECT_NE(list.find("2026-11-24 15:30"), std::string::npos) << list;
  EXPECT_NE(list.find("4 files"), std::string::npos) << list;
}

TEST(LibzipFilesTest, WhatCannotBeAddedIsNamed) {
  const Result<std::string> zip = LibzipFiles().Make({{"a", "1"}, {"a", "2"}}, kMoment);
  ASSERT_FALSE(zip);
  EXPECT_EQ(zip.Reason(), "the zip file cannot be made: 'a': File already exists");
}

}  // namespace
}  // namespace zeb
