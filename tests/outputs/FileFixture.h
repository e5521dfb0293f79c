// A service and file outputs on simulated files and time.
#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "core/clsZEBService.h"
#include "outputs/OutputTable.h"
#include "outputs/file/clsZEBFileOutput.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

class FileOutputTest : public testing::Test, protected ServiceEvents {
 protected:
  FileOutputTest() {
    EXPECT_TRUE(t.files.CreateFolders("/w"));
    EXPECT_TRUE(t.files.CreateFolders("/data"));
    t.files.Put("/t/a", "<ZEB_NOW_ITEMNAME>!");
    service.SetCurrentItem(Song("One"));
  }

  static clsZEBItemInfo Song(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().ItemType = 7;
    return item;
  }
  static clsZEBItemInfo Advert() {
    clsZEBItemInfo item = Song("Ad");
    item.Edit().ItemType = 4;
    return item;
  }
  std::shared_ptr<clsZEBFileOutput> MakeOutput() {
    return std::dynamic_pointer_cast<clsZEBFileOutput>(makeOutput(OutputType::kFile));
  }
  static clsFileParameters Pair(const std::string& source, const std::string& destination) {
    clsFileParameters pair;
    pair.SetSourceFileName(source);
    pair.SetDestinationFileName(destination);
    return pair;
  }
  static clsFileParameters SongsOnly(clsFileParameters pair) {
    pair.UseUpdateRules = true;
    pair.UpdateRulesFlags = clsFileParameters::kSong;
    return pair;
  }
  // The three phases, as the service does them.
  static void RunPhases(clsZEBFileOutput& which, const SnapshotPtr& snapshot) {
    which.PrepareOutput(snapshot);
    try {
      which.UpdateOutput(snapshot);
    } catch (const std::exception& fault) {
      which.NoteFault(fault.what());
    }
    which.FinishOutput(snapshot);
  }
  void Update(clsZEBFileOutput& which) {
    ASSERT_TRUE(t.loop.RunTask([&] { RunPhases(which, service.TakeSnapshot()); }));
  }
  void Update() { Update(*output); }
  std::string StatusText() {
    std::uint32_t colour = 1;
    std::string text = output->GetStatusString(colour);
    EXPECT_EQ(colour == kColourRed, output->Status() > kStatusOK);
    return text;
  }
  void FailOn(const std::string& operation, const std::string& path) {
    t.files.fail = [=](const std::string& op, const std::string& p) {
      return op == operation && p.rfind(path, 0) == 0 ? "disk on fire" : "";
    };
  }
  std::vector<std::string> Names(const std::string& folder) { return t.files.List(folder).Value(); }

  TestEnvironment t;
  OutputFactory makeOutput = MakeOutputFactory(t.environment);
  clsZEBService service{t.environment, makeOutput, *this};
  std::shared_ptr<clsZEBFileOutput> output = MakeOutput();
};

}  // namespace zeb
