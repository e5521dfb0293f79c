#include <gtest/gtest.h>

#include <map>

#include "core/StoredServices.h"
#include "platform/simulated/MemoryHive.h"

namespace zeb {
namespace {

constexpr const char* kRoot = "Software\\Root";

class StoredServicesTest : public testing::Test {
 protected:
  std::string Key(const std::string& below) { return std::string(kRoot) + "\\" + below; }
  std::string Text(const std::string& key, const std::string& name) {
    return hive.ReadText(Key(key), name, "-");
  }
  MemoryHive hive;
  StoredServices stored{hive, kRoot};
};

TEST_F(StoredServicesTest, MoveDownWithAllThatIsBelowThem) {
  hive.WriteNumber(kRoot, "NumberServices", 3);
  for (const char* number : {"1", "2", "3"})
    hive.WriteText(Key(std::string("Service") + number), "ServiceName", number);
  hive.WriteText(Key("Service2\\File"), "Only", "2");
  hive.WriteText(Key("Service3\\Pager\\Deep"), "X", "3");
  ASSERT_TRUE(stored.Remove(1));
  EXPECT_EQ(stored.Count(), 2);
  EXPECT_EQ(Text("Service1", "ServiceName"), "2");
  EXPECT_EQ(Text("Service1\\File", "Only"), "2");
  EXPECT_EQ(Text("Service2", "ServiceName"), "3");
  EXPECT_EQ(Text("Service2\\Pager\\Deep", "X"), "3");
  EXPECT_FALSE(hive.KeyExists(Key("Service2\\File")));
  EXPECT_FALSE(hive.KeyExists(Key("Service3")));
  EXPECT_EQ(stored.Remove(3).Reason(), "there is no service 3: they are numbered from 1 to 2");
  EXPECT_EQ(stored.Remove(0).Reason(), "there is no service 0: they are numbered from 1 to 2");
}

TEST_F(StoredServicesTest, AddBehindTheLastAndNeverOverWhatIsThere) {
  EXPECT_EQ(stored.Add().Value(), 1);
  hive.WriteText(Key("Service2"), "ServiceName", "of old");
  EXPECT_FALSE(stored.Add());
  EXPECT_EQ(stored.Count(), 1);
  EXPECT_EQ(Text("Service2", "ServiceName"), "of old");
}

TEST_F(StoredServicesTest, OutputsAreRenumberedWhateverTheirValuesAreCalled) {
  hive.WriteNumber(kRoot, "NumberServices", 1);
  const std::string key = Key("Service1\\Web");
  const auto write = [&](const std::string& name) { hive.WriteText(key, name, name); };
  hive.WriteText(key, "NumberOutputs", "12");
  hive.WriteText(key, "UpdateInterval", "60");
  for (const char* name : {"FTPServerName1", "FTPServerName2", "FTPServerName3", "FTPServerName12",
                           "output2.SourceFileName3", "Output3.SourceFileName2", "Output12.NumberFiles",
                           "Output3.Of3a", "WME7Name2", "WME7Name3", "Newer3", "Odd03", "Output", "3"})
    write(name);
  hive.WriteNumber(key, "DelaySeconds3", 25);
  ASSERT_TRUE(stored.RemoveOutput(1, {OutputType::kWeb, 2}));
  const std::map<std::string, std::string> expected = {{"NumberOutputs", "11"},
                                                       {"UpdateInterval", "60"},
                                                       {"FTPServerName1", "FTPServerName1"},
                                                       {"FTPServerName2", "FTPServerName3"},
                                                       {"FTPServerName11", "FTPServerName12"},
                                                       {"Output2.SourceFileName2", "Output3.SourceFileName2"},
                                                       {"Output11.NumberFiles", "Output12.NumberFiles"},
                                                       {"Output2.Of3a", "Output3.Of3a"},
                                                       {"WME7Name2", "WME7Name3"},
                                                       {"Newer2", "Newer3"},
                                                       {"Odd03", "Odd03"},
                                                       {"Output", "Output"},
                                                       {"2", "3"},
                                                       {"DelaySeconds2", "25"}};
  std::map<std::string, std::string> found;
  for (const SettingsValue& value : hive.Values(key)) found[value.name] = hive.ReadText(key, value.name, "");
  EXPECT_EQ(found, expected);
  EXPECT_EQ(hive.ReadNumber(key, "DelaySeconds2", 0), 25);
}

TEST_F(StoredServicesTest, ANewOutputHasNothingOfAnOldOne) {
  hive.WriteNumber(kRoot, "NumberServices", 1);
  const std::string key = Key("Service1\\HTTPRequest");
  hive.WriteText(key, "URL1", "/stays");
  hive.WriteText(key, "NumberOutputs", "1");
  hive.WriteText(key, "URL2", "/left");
  hive.WriteText(key, "URL3", "/left");
  EXPECT_EQ(stored.AddOutput(1, OutputType::kHTTP).Value().Text(), "HTTP2");
  EXPECT_EQ(Text("Service1\\HTTPRequest", "URL1"), "/stays");
  EXPECT_EQ(Text("Service1\\HTTPRequest", "URL2"), "-");
  EXPECT_EQ(Text("Service1\\HTTPRequest", "NumberOutputs"), "2");
}

TEST_F(StoredServicesTest, WhatIsNotThereIsToldWithWhatIs) {
  EXPECT_EQ(stored.Check(1).Reason(), "there is no service 1: there are none");
  hive.WriteNumber(kRoot, "NumberServices", 1);
  EXPECT_EQ(stored.Check(2).Reason(), "there is no service 2: there is only service 1");
  const OutputName http{OutputType::kHTTP, 3};
  EXPECT_EQ(stored.Check(1, http).Reason(), "service 1 has no output HTTP3: it has no HTTP output");
  hive.WriteText(Key("Service1\\HTTPRequest"), "NumberOutputs", "1");
  EXPECT_EQ(stored.Check(1, http).Reason(), "service 1 has no output HTTP3: its only one is HTTP1");
  hive.WriteText(Key("Service1\\HTTPRequest"), "NumberOutputs", "2");
  EXPECT_EQ(stored.Check(1, http).Reason(), "service 1 has no output HTTP3: there are HTTP1 to HTTP2");
  hive.WriteText(Key("Service1\\HTTPRequest"), "NumberOutputs", "1000");
  EXPECT_FALSE(stored.AddOutput(1, OutputType::kHTTP));
}

TEST(OutputName, IsATypeAndANumber) {
  const struct {
    std::string text, name;
  } cases[] = {{"File1", "File1"}, {"http12", "HTTP12"}, {"dab3", "DAB3"}, {"File", ""},
               {"File0", ""},      {"Fil1", ""},         {"1", ""},        {"", ""},
               {"File1x", ""},     {"File-1", ""},       {"RDS1", ""},     {"File99999999999", ""}};
  for (const auto& c : cases) {
    const Result<OutputName> name = ParseOutputName(c.text);
    EXPECT_EQ(name ? name.Value().Text() : "", c.name) << c.text;
  }
  EXPECT_EQ(
      ParseOutputName("Fiel2").Reason(),
      "'Fiel2' is no output: write its type (Web, Encoder, File, DAB, HTTP or Serial) and its number, as in "
      "File1");
}

}  // namespace
}  // namespace zeb
