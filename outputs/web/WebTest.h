// WebTest: whether a web output's server is found and reached, lets us in, and lets us store and delete a
// small file in the folders of the pages.
#pragma once

#include <set>
#include <string>

#include "outputs/test/OutputTest.h"
#include "outputs/web/clsZEBWebOutput.h"

namespace zeb {

class WebTest : public OutputTest {
 public:
  WebTest(Environment& environment, const clsZEBWebOutput& output);
  void Run(TestSteps& steps) override;

 private:
  void TryFolder(const std::string& page, TestSteps& steps);

  Environment& environment_;
  FtpTarget target_;
  std::set<std::string> pages_;  // one of each folder
  WorkLane lane_;
  WebServer server_;
};

}  // namespace zeb
