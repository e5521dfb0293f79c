#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

#include "core/RegFile.h"
#include "core/SettingsMigration.h"
#include "core/clsZEBService.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {
namespace {

// An output that keeps one text in its type's key.
class TextOutput : public clsZEBTemplate {
 public:
  TextOutput(Environment& environment, std::string settingsKey)
      : clsZEBTemplate(environment), settingsKey_(std::move(settingsKey)) {}
  void StoreOutputInformation(int serviceNumber, int index) override {
    if (text == "unstorable") throw std::runtime_error("no room");
    environment_.hive.WriteText(Key(serviceNumber), "Text" + std::to_string(index), text);
  }
  void GetOutputInformation(int serviceNumber, int index) override {
    text = environment_.hive.ReadText(Key(serviceNumber), "Text" + std::to_string(index), "none");
    if (text == "unreadable") throw std::runtime_error("no sense");
  }
  std::string text;

 private:
  std::string Key(int number) const { return environment_.ServiceKey(number) + "\\" + settingsKey_; }
  std::string settingsKey_;
};

struct OpenedCounter : ServiceEvents {
  void ServiceOpened() override { ++opened; }
  int opened = 0;
};

// Builds every type but DAB and RDS.
class SettingsOfService : public ::testing::Test {
 protected:
  OutputFactory factory_ = [this](OutputType type) -> OutputPtr {
    if (type == OutputType::kDAB || type == OutputType::kRDS) return nullptr;
    const auto code = static_cast<std::int32_t>(type);
    return std::make_shared<TextOutput>(test_.environment, std::string(FindOutputType(code)->settingsKey));
  };
  std::string Text(const clsZEBService& service, OutputType type, int index) const {
    auto output = std::dynamic_pointer_cast<TextOutput>(service.Output(type, index));
    return output != nullptr ? output->text : "no output";
  }
  // A service with two DAB outputs, which are not built, and keys that nobody here knows.
  void StoreUnknown(const std::string& key) {
    test_.hive.WriteText(key + "\\DAB", "NumberOutputs", "2");
    test_.hive.WriteText(key + "\\DAB", "Label2", "kept");
    test_.hive.WriteNumber(key + "\\Future\\Deep", "n", 7);
    test_.hive.WriteText(key + "\\Template", "SimpleTextFormat1", "old");
  }
  void ExpectUnknown(const std::string& key) {
    EXPECT_EQ(test_.hive.ReadText(key + "\\DAB", "NumberOutputs", ""), "2");
    EXPECT_EQ(test_.hive.ReadText(key + "\\DAB", "Label2", ""), "kept");
    EXPECT_EQ(test_.hive.ReadNumber(key + "\\Future\\Deep", "n", 0), 7);
    EXPECT_EQ(test_.hive.ReadText(key + "\\Template", "SimpleTextFormat1", ""), "old");
  }
  std::string Everything() { return ExportRegFile(test_.hive, "Software"); }

  TestEnvironment test_;
  OpenedCounter events_;
  clsZEBService service_{test_.environment, factory_, events_};
  const std::string key_ = test_.environment.ServiceKey(1);
};

TEST_F(SettingsOfService, AServiceNeverSavedHasTheDefaults) {
  service_.settings.TolvanTCPControlPort = 4;  // kept, as the store has none
  service_.settings.BouncePort = 9;
  service_.SetServiceNumber(1);
  EXPECT_EQ(service_.settings.ServiceName, "Unknown Service");
  EXPECT_EQ(service_.settings.NoPictureFileName, "nopicture.jpg");
  EXPECT_EQ(service_.settings.NumberUpdatesOnServer, 25);
  EXPECT_EQ(service_.settings.TravelFlagDeactivateTimeout, 60);
  EXPECT_TRUE(service_.settings.ProcessShowUpdates);
  EXPECT_EQ(service_.settings.TolvanTCPControlPort, 4);
  EXPECT_EQ(service_.settings.BouncePort, 1);
  EXPECT_EQ(service_.TotalNumberOutputs(), 0);
  EXPECT_EQ(events_.opened, 1);
}

TEST_F(SettingsOfService, ANumberThatIsNotPositiveNeitherLoadsNorSaves) {
  for (int number : {0, -1}) {
    service_.SetServiceNumber(number);
    EXPECT_FALSE(service_.StoreServiceInformation());
    EXPECT_FALSE(service_.MoveToServiceNumber(number));
  }
  EXPECT_EQ(events_.opened, 0);
  EXPECT_TRUE(test_.hive.SubKeys("").empty());
}

TEST_F(SettingsOfService, SavesEachValueInItsOwnKind) {
  service_.SetServiceNumber(1);
  service_.settings.InstantUpdate = true;
  service_.settings.UpdateOnTimingChange = true;
  service_.settings.TravelFlagDeactivateTimeout = -5;
  ASSERT_TRUE(service_.StoreServiceInformation());
  std::string numbers, texts;
  for (const SettingsValue& value : test_.hive.Values(key_))
    (std::holds_alternative<std::string>(value.data) ? texts : numbers) += value.name + " ";
  EXPECT_EQ(numbers,
            "BouncePort InfoSourceType InstantUpdate ProcessPresenterUpdates ProcessShowUpdates "
            "TolvanTCPControlPort TravelFlagActive TravelFlagDeactivateTimeout UseBounce ");
  EXPECT_EQ(texts,
            "BounceServer CartArtist1Line CartArtist2Line CartItemNameLine InfoSourceFileName "
            "LastUpdateOnServerIndex LoggingPath NoPictureFileName NumberUpdatesOnServer ServiceName "
            "TravelFlagActivateString UpdateDisplayInterval UpdateOnTimingChange ");
  EXPECT_EQ(test_.hive.ReadText(key_ + "\\RDS", "NumberOutputs", ""), "0");

  clsZEBService copy(test_.environment, factory_, events_);
  copy.SetServiceNumber(1);
  EXPECT_TRUE(copy.settings.InstantUpdate);
  EXPECT_TRUE(copy.settings.UpdateOnTimingChange);
  EXPECT_EQ(copy.settings.TravelFlagDeactivateTimeout, -5);
}

TEST_F(SettingsOfService, TakesValuesOfTheOtherKind) {
  test_.hive.WriteText(key_, "instantupdate", "-1");
  test_.hive.WriteText(key_, "UseBounce", "True");
  test_.hive.WriteText(key_, "ProcessShowUpdates", "False");
  test_.hive.WriteNumber(key_, "UpdateOnTimingChange", 2);
  test_.hive.WriteNumber(key_, "UpdateDisplayInterval", 30);
  test_.hive.WriteText(key_, "BouncePort", " 12 or so");
  service_.SetServiceNumber(1);
  EXPECT_TRUE(service_.settings.InstantUpdate);
  EXPECT_TRUE(service_.settings.UseBounce);
  EXPECT_FALSE(service_.settings.ProcessShowUpdates);
  EXPECT_TRUE(service_.settings.UpdateOnTimingChange);
  EXPECT_EQ(service_.settings.UpdateDisplayInterval, 30);
  EXPECT_EQ(service_.settings.BouncePort, 12);
}

TEST_F(SettingsOfService, RestoresAsManyOutputsAsAreCountedAndDropsTheRestOnSaving) {
  test_.hive.WriteText(key_ + "\\file", "NumberOutputs", "2");  // an older version's spelling
  test_.hive.WriteText(key_ + "\\file", "UpdateInterval", "90");
  for (const char* number : {"1", "2", "3"})
    test_.hive.WriteText(key_ + "\\file", std::string("Text") + number, std::string("f") + number);
  service_.SetServiceNumber(1);
  EXPECT_EQ(service_.OutputCount(3), 2);
  EXPECT_EQ(service_.OutputUpdateInterval(3), 90);
  service_.RemoveOutput(OutputType::kFile, 1);
  ASSERT_TRUE(service_.StoreServiceInformation());
  EXPECT_EQ(test_.hive.ReadText(key_ + "\\File", "Text1", ""), "f2");
  EXPECT_FALSE(test_.hive.HasValue(key_ + "\\File", "Text2"));
  EXPECT_FALSE(test_.hive.HasValue(key_ + "\\File", "Text3"));

  service_.SetServiceNumber(1);  // again: does not add to what is there
  EXPECT_EQ(service_.OutputCount(3), 1);
  EXPECT_EQ(Text(service_, OutputType::kFile, 1), "f2");
}

TEST_F(SettingsOfService, OneBadOutputLeavesTheOthersTheirNumbers) {
  test_.hive.WriteText(key_ + "\\Web", "NumberOutputs", "2");
  test_.hive.WriteText(key_ + "\\Web", "Text1", "unreadable");
  test_.hive.WriteText(key_ + "\\Web", "Text2", "w2");
  service_.SetServiceNumber(1);
  EXPECT_EQ(Text(service_, OutputType::kWeb, 2), "w2");
}

TEST_F(SettingsOfService, ADamagedCountIsHeldInBounds) {
  test_.hive.WriteText(key_ + "\\Web", "NumberOutputs", "2000000000");
  test_.hive.WriteText(key_ + "\\File", "NumberOutputs", "-3");
  service_.SetServiceNumber(1);
  EXPECT_EQ(service_.OutputCount(15), 1000);
  EXPECT_EQ(service_.OutputCount(3), 0);
  ASSERT_EQ(test_.person.notes.size(), 1u);
  EXPECT_NE(test_.person.notes[0].find("2000000000 Web outputs of service 1"), std::string::npos);
}

TEST_F(SettingsOfService, ASaveThatFailsPartWayChangesNothing) {
  StoreUnknown(key_);
  service_.SetServiceNumber(1);
  auto bad = std::make_shared<TextOutput>(test_.environment, "RDS");
  service_.AddOutput(OutputType::kRDS, bad);  // the last type saved
  ASSERT_TRUE(service_.StoreServiceInformation());
  const std::string before = Everything();
  service_.settings.ServiceName = "New";
  bad->text = "unstorable";
  EXPECT_FALSE(service_.StoreServiceInformation());
  EXPECT_FALSE(service_.MoveToServiceNumber(2));
  EXPECT_EQ(Everything(), before);
  EXPECT_EQ(service_.ServiceNumber(), 1);
}

TEST_F(SettingsOfService, AStoreThatFailsLoadsAsDefaults) {
  test_.hive.WriteText(key_, "ServiceName", "One");
  test_.hive.failure = "disk gone";
  service_.SetServiceNumber(1);
  EXPECT_EQ(service_.settings.ServiceName, "Unknown Service");
  EXPECT_FALSE(service_.StoreServiceInformation());
  test_.hive.failure.clear();
  EXPECT_EQ(test_.hive.ReadText(key_, "ServiceName", ""), "One");
}

TEST_F(SettingsOfService, WhatIsNotBuiltSurvivesSavingAndMoving) {
  StoreUnknown(key_);
  service_.SetServiceNumber(1);
  EXPECT_EQ(service_.OutputCount(1), 0);
  ASSERT_EQ(test_.person.notes.size(), 1u);
  ASSERT_TRUE(service_.StoreServiceInformation());
  ExpectUnknown(key_);

  const std::string newKey = test_.environment.ServiceKey(2);
  test_.hive.WriteText(newKey + "\\Other", "v", "of the service that was number 2");
  ASSERT_TRUE(service_.MoveToServiceNumber(2));
  ExpectUnknown(newKey);
  EXPECT_FALSE(test_.hive.KeyExists(key_));
  EXPECT_FALSE(test_.hive.KeyExists(newKey + "\\Other"));
  EXPECT_EQ(test_.hive.ReadText(newKey, "ServiceName", ""), "Unknown Service");
}

TEST_F(SettingsOfService, ChoosesTheRootByProfileAndByWhatIsThere) {
  const std::string profiles = "Software\\Hexmoor\\ZEB v3\\Profiles\\";
  EXPECT_EQ(ChooseSettingsRoot(test_.hive).inUse, profiles + "Profile1");
  test_.hive.WriteNumber("Software\\Hexmoor\\ZEB", "NumberServices", 2);
  EXPECT_EQ(ChooseSettingsRoot(test_.hive).inUse, "Software\\Hexmoor\\ZEB");
  EXPECT_TRUE(ChooseSettingsRoot(test_.hive).migrate);
  WriteNumberServices(test_.hive, profiles + "Profile1", 0);
  EXPECT_EQ(ChooseSettingsRoot(test_.hive).inUse, profiles + "Profile1");
  EXPECT_FALSE(ChooseSettingsRoot(test_.hive).migrate);
  test_.hive.WriteText("Software\\Hexmoor\\Tolvan v3\\Tools", "LastProfile", "Night");
  EXPECT_EQ(ChooseSettingsRoot(test_.hive).profile, profiles + "Night");

  for (const auto& [stored, read] : {std::pair{-1, 0}, {7, 7}, {2000000, 10000}}) {
    WriteNumberServices(test_.hive, "r", stored);
    EXPECT_EQ(ReadNumberServices(test_.hive, "r"), read);
  }
}

TEST_F(SettingsOfService, MigrationCopiesEveryServiceOrNone) {
  const std::string old = "Software\\Hexmoor\\ZEB";
  test_.hive.WriteNumber(old, "NumberServices", 2);
  test_.hive.WriteText(old + "\\Service1", "ServiceName", "First");
  StoreUnknown(old + "\\Service1");
  test_.hive.WriteText(old + "\\Service2\\File", "NumberOutputs", "1");
  test_.hive.WriteText(old + "\\Service2\\File", "Text1", "page");
  const std::string before = Everything();
  const SettingsRoot root = ChooseSettingsRoot(test_.hive);

  test_.hive.WriteText(old + "\\Service2\\File", "Text1", "unstorable");
  EXPECT_FALSE(MigrateServices(test_.environment, factory_, root, 2));
  EXPECT_EQ(test_.environment.settingsRoot, old);
  test_.hive.WriteText(old + "\\Service2\\File", "Text1", "page");
  EXPECT_EQ(Everything(), before);

  const Outcome migrated = MigrateServices(test_.environment, factory_, root, 2);
  ASSERT_TRUE(migrated.Ok()) << migrated.Reason();
  EXPECT_EQ(test_.environment.settingsRoot, root.profile);
  EXPECT_FALSE(ChooseSettingsRoot(test_.hive).migrate);
  EXPECT_EQ(ReadNumberServices(test_.hive, root.profile), 2);
  ExpectUnknown(root.profile + "\\Service1");
  EXPECT_EQ(test_.hive.ReadText(root.profile + "\\Service1", "ServiceName", ""), "First");
  EXPECT_EQ(test_.hive.ReadText(root.profile + "\\Service2\\File", "Text1", ""), "page");
  EXPECT_EQ(test_.hive.ReadText(old + "\\Service1", "ServiceName", ""), "First");
}

}  // namespace
}  // namespace zeb
