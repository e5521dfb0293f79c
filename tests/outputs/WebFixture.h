// A web output with one page, a service that gives it snapshots, and a server in memory.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/clsZEBService.h"
#include "outputs/web/clsZEBWebOutput.h"
#include "platform/simulated/SimulatedFtp.h"
#include "platform/simulated/TestEnvironment.h"

namespace zeb {

class WebOutputTest : public testing::Test {
 protected:
  WebOutputTest() {
    t.environment.ftp = &ftp;
    t.files.Put("/t/a", "<ZEB_NOW_ITEMNAME>!");
    Play("One");
    output->settings.FTPServerName = "www";
    output->AddUpdateFile(Pair("/t/a", "/w/a.htm"));
    output->StartOutput(nullptr);
  }
  void Play(const std::string& title) {
    clsZEBItemInfo item;
    item.Edit().ItemName = title;
    item.Edit().ItemType = 7;
    service.SetCurrentItem(item);
  }
  static clsFileParameters Pair(const std::string& source, const std::string& destination) {
    clsFileParameters pair;
    pair.SetSourceFileName(source);
    pair.SetDestinationFileName(destination);
    return pair;
  }
  // A whole update; true when something was published.
  bool Run(const SnapshotPtr& snapshot) {
    bool published = false;
    EXPECT_TRUE(t.loop.RunTask([&] {
      output->PrepareOutput(snapshot);
      published = output->UpdateOutput(snapshot);
      output->FinishOutput(snapshot);
    }));
    return published;
  }
  bool Update() { return Run(service.TakeSnapshot()); }
  std::string StatusText() {
    std::uint32_t colour = 0;
    return output->GetStatusString(colour);
  }
  int Count(const std::string& logStart) const {
    return static_cast<int>(std::count_if(ftp.log.begin(), ftp.log.end(), [&](const std::string& line) {
      return line.rfind(logStart, 0) == 0;
    }));
  }

  TestEnvironment t;
  SimulatedFtp ftp;
  ServiceEvents events;
  clsZEBService service{t.environment, nullptr, events};
  std::shared_ptr<TemplateStore> templates = std::make_shared<TemplateStore>();
  std::shared_ptr<clsZEBWebOutput> output = std::make_shared<clsZEBWebOutput>(t.environment, templates);
};

}  // namespace zeb
