#include <gtest/gtest.h>

#include <map>

#include "core/EnteredSettings.h"
#include "dialogs/ServiceEntry.h"
#include "outputs/OutputTable.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

class ServiceEntryTest : public testing::Test {
 protected:
  ServiceEntryTest() {
    t.files.Put("/data/now.html", "<ZEB_NOW_ITEMNAME>");
    t.files.Put("/etc/zeb/now.txt", "<ZEB_NOW_ITEMNAME>");
    t.files.PutSpecial("/pipe");
  }
  static ServiceEntry::Settings Entered(const std::vector<std::string>& texts) {
    ServiceEntry::Settings settings;
    for (const std::string& text : texts) settings.push_back(SplitEntered(text).Value());
    return settings;
  }
  std::string Service(int number, const std::string& name) {
    return t.hive.ReadText(t.environment.ServiceKey(number), name, "-");
  }
  std::map<std::string, std::string> Values(const std::string& below) {
    std::map<std::string, std::string> values;
    const std::string key = t.environment.ServiceKey(1) + below;
    for (const SettingsValue& value : t.hive.Values(key))
      values[value.name] = t.hive.ReadText(key, value.name, "");
    return values;
  }
  TestEnvironment t;
  ServiceEntry entry{t.hive, t.files, kSimulatedDataFolder, t.environment.settingsRoot};
};

TEST_F(ServiceEntryTest, AServiceIsMadeRenamedAndRemoved) {
  EXPECT_EQ(entry.AddService("Demo FM", Entered({"TolvanTCPControlPort=1", "InstantUpdate=yes"})).Value(), 1);
  EXPECT_EQ(entry.AddService("Twin", Entered({"TolvanTCPControlPort=1"})).Reason(),
            "control port 1 is that of service 1 already");
  EXPECT_EQ(entry.AddService("Other", {}).Value(), 2);
  EXPECT_EQ(Service(1, "ServiceName"), "Demo FM");
  EXPECT_EQ(Service(1, "TolvanTCPControlPort"), "1");
  EXPECT_EQ(Service(1, "InstantUpdate"), "1");
  ASSERT_TRUE(entry.RenameService(2, "Otherwise"));
  ASSERT_TRUE(entry.RemoveService(1));
  EXPECT_EQ(Service(1, "ServiceName"), "Otherwise");
  EXPECT_EQ(entry.RenameService(2, "X").Reason(), "there is no service 2: there is only service 1");
}

TEST_F(ServiceEntryTest, WhatIsWrongOfAServiceStoresNothing) {
  const struct {
    std::string name, setting, reason;
  } cases[] = {
      {" ", "InstantUpdate=1", "a service needs a name"},
      {"A\nB", "InstantUpdate=1", "a service's name is one line without control characters"},
      {"A", "TolvanTCPControlPort=70000",
       "TolvanTCPControlPort takes a whole number from 0 to 58635, not '70000'"},
      {"A", "InfoSourceType=5", "InfoSourceType takes 0, 11, 12 or 51, not '5'"},
      {"A", "InstantUpdat=1", "a service has no setting 'InstantUpdat': did you mean InstantUpdate?"},
      {"A", "ServiceName=B", "ServiceName is given twice"},
  };
  for (const auto& c : cases) {
    const Result<int> added = entry.AddService(c.name, Entered({c.setting}));
    EXPECT_EQ(added ? "added" : added.Reason(), c.reason);
  }
  EXPECT_FALSE(t.hive.KeyExists(t.environment.settingsRoot));
}

TEST_F(ServiceEntryTest, AnOutputTakesTheNamesOfTheManual) {
  ASSERT_TRUE(entry.AddService("Demo FM", {}));
  EXPECT_EQ(entry
                .AddOutput(1, OutputType::kFile,
                           Entered({"SourceFileName1=now.html", "DestinationFileName1=/x/a",
                                    "SourceFileName2=/etc/zeb/now.txt", "DestinationFileName2=/x/b=c",
                                    "addnocache2=no", "CopyAdditionalFiles=on", "DelaySeconds=25"}))
                .Value()
                .Text(),
            "File1");
  const std::map<std::string, std::string> file = {{"NumberOutputs", "1"},
                                                   {"Output1.NumberFiles", "2"},
                                                   {"Output1.SourceFileName1", "now.html"},
                                                   {"Output1.DestinationFileName1", "/x/a"},
                                                   {"Output1.SourceFileName2", "/etc/zeb/now.txt"},
                                                   {"Output1.DestinationFileName2", "/x/b=c"},
                                                   {"Output1.AddNoCache2", "0"},
                                                   {"CopyAdditionalFiles1", "1"},
                                                   {"DelaySeconds1", "25"}};
  EXPECT_EQ(Values("\\File"), file);
  EXPECT_EQ(entry.AddOutput(1, OutputType::kHTTP, Entered({"URL=/x?a=b"})).Value().Text(), "HTTP1");
  EXPECT_EQ(entry.AddOutput(1, OutputType::kHTTP, Entered({"ServerPort=8080"})).Value().Text(), "HTTP2");
  const std::map<std::string, std::string> http = {
      {"NumberOutputs", "2"}, {"URL1", "/x?a=b"}, {"ServerPort2", "8080"}};
  EXPECT_EQ(Values("\\HTTPRequest"), http);
}

TEST_F(ServiceEntryTest, WhatIsWrongOfAnOutputStoresNothing) {
  ASSERT_TRUE(entry.AddService("Demo FM", {}));
  const OutputType file = OutputType::kFile, http = OutputType::kHTTP;
  const struct {
    OutputType type;
    std::vector<std::string> settings;
    std::string reason;
  } cases[] = {
      {http, {"ServrName=x"}, "the HTTP output has no setting 'ServrName': did you mean ServerName?"},
      {http, {"ServerName1=x"}, "the HTTP output has no setting 'ServerName1': did you mean ServerName?"},
      {http, {"URL=a", "url=b"}, "URL is given twice"},
      {http, {"URL=a", "ServerPort=0"}, "ServerPort takes a whole number from 1 to 65535, not '0'"},
      {http, {"DelaySeconds=3601"}, "DelaySeconds takes a whole number from 0 to 3600, not '3601'"},
      {file,
       {"SourceFileName1=gone.html", "DestinationFileName1=/x"},
       "SourceFileName1: there is no file '/data/gone.html', or it cannot be reached"},
      {file, {"SourceFileName1=/pipe", "DestinationFileName1=/x"}, "SourceFileName1: '/pipe' is no file"},
      {file, {"SourceFileName1=now.html"}, "pair 1 has no DestinationFileName1"},
      {file, {"SourceFileName2=now.html", "DestinationFileName2=/x"}, "pair 1 has no SourceFileName1"},
      {file,
       {"SourceFileName=now.html"},
       "SourceFileName is of one pair: write SourceFileName1 for the first"},
      {file,
       {"SourceFileName1001=now.html"},
       "an output has 1000 pairs at the most, so there is no SourceFileName1001"},
      {file,
       {"SourceFileName1=now.html", "DestinationFileName1=/x", "RefreshTagSeconds1=9999"},
       "RefreshTagSeconds takes a whole number from 0 to 3600, not '9999'"},
  };
  for (const auto& c : cases) {
    const Result<OutputName> added = entry.AddOutput(1, c.type, Entered(c.settings));
    EXPECT_EQ(added ? "added" : added.Reason(), c.reason);
  }
  EXPECT_TRUE(t.hive.SubKeys(t.environment.ServiceKey(1)).empty());
  EXPECT_FALSE(entry.AddOutput(2, http, {}));
  EXPECT_FALSE(SplitEntered("URL"));
  EXPECT_FALSE(SplitEntered("=x"));
}

TEST_F(ServiceEntryTest, AStoreThatFailsPartWayKeepsNothing) {
  class FullHive : public MemoryHive {
    void WriteText(const std::string& key, const std::string& name, const std::string& text) override {
      if (name == "URL1") throw SettingsError("the disk is full");
      MemoryHive::WriteText(key, name, text);
    }
  } full;
  ServiceEntry other(full, t.files, kSimulatedDataFolder, t.environment.settingsRoot);
  ASSERT_TRUE(other.AddService("Demo FM", {}));
  EXPECT_THROW((void)other.AddOutput(1, OutputType::kHTTP, Entered({"UseTLS=1", "URL=/x"})), SettingsError);
  EXPECT_TRUE(full.SubKeys(t.environment.ServiceKey(1)).empty());
}

// What can be entered must come back from the output that reads it, and from the store once it is saved.
TEST_F(ServiceEntryTest, EverySettingOfEveryTypeIsReadAndKeptByItsOutput) {
  ASSERT_TRUE(entry.AddService("Demo FM", {}));
  const OutputFactory make = MakeOutputFactory(t.environment);
  const auto check = [&](OutputType type, const SettingInfo& info, const std::string& ofPair) {
    EXPECT_FALSE(info.name.empty() || (info.name.back() >= '0' && info.name.back() <= '9')) << info.name;
    std::string value = info.byDefault == "1" ? "0" : "1";
    if (info.kind == SettingInfo::Kind::kCharacterSet) value = "EBU Latin";
    if (!info.entry.words.empty())
      value = std::string(info.entry.words.substr(info.entry.words.rfind('|') + 1));
    if (!CheckSetting({info}, "it", info.name, value)) value = "2";
    ServiceEntry::Settings plain;
    if (!SettingsOf(type).ofPair.empty())
      plain = {{"SourceFileName1", "now.html"}, {"DestinationFileName1", "/x"}};
    ServiceEntry::Settings settings = plain;
    settings.push_back({std::string(info.name) + ofPair, value});
    const OutputPtr before = make(type), after = make(type), kept = make(type);
    for (const auto& [output, entered] : {std::pair(before, plain), std::pair(after, settings)}) {
      const Result<OutputName> added = entry.AddOutput(1, type, entered);
      ASSERT_TRUE(added) << added.Reason();
      output->GetOutputInformation(1, added.Value().number);
    }
    const std::string what = std::string(NameOf(type)) + " " + std::string(info.name) + "=" + value;
    EXPECT_NE(before->SettingsText(), after->SettingsText()) << what;
    after->StoreOutputInformation(2, 1);
    kept->GetOutputInformation(2, 1);
    EXPECT_EQ(kept->SettingsText(), after->SettingsText()) << what;
  };
  for (const OutputType type : kOutputTypesOffered) {
    for (const SettingInfo& info : SettingsOf(type).own)
      if (info.name != "DelaySeconds" && info.entry.is != SettingIs::kNeededFile) check(type, info, "");
    for (const SettingInfo& info : SettingsOf(type).ofPair)
      if (info.name != "SourceFileName" && info.name != "DestinationFileName") check(type, info, "1");
  }
}

}  // namespace
}  // namespace zeb
