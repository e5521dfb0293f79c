// FileTest: of each pair of a file output, whether the template can be read, and whether a page could be put
// into its place: a work file is made beside the page and removed.
#pragma once

#include <vector>

#include "outputs/file/clsZEBFileOutput.h"
#include "outputs/test/OutputTest.h"

namespace zeb {

class FileTest : public OutputTest {
 public:
  FileTest(Environment& environment, const clsZEBFileOutput& output);
  void Run(TestSteps& steps) override;

 private:
  Environment& environment_;
  std::vector<clsFileParameters> pairs_;
  WorkLane lane_;
};

// Behind a page's name: the test's work file. A publisher's own has another ending.
inline constexpr const char* kTestFileEnding = ".zebtest";

}  // namespace zeb
