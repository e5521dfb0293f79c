#include "outputs/file/FileTest.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/FileSystem.h"
#include "text/Paths.h"

namespace zeb {
namespace {

Outcome TryTemplate(FileSystem& files, const std::string& path) {
  return files.Read(path, kMaxFileBytes);
}

// As a page is put in place, but under a name beside it: that is what the folder's rights allow or not. What
// is at the page's own place is only looked at.
Outcome TryPlace(FileSystem& files, const std::string& path, const LinkRules& rules) {
  const Result<std::unique_ptr<FileTarget>> place = files.FindTarget(path, rules);
  if (!place) return place;
  const std::string work = place.Value()->Path() + kTestFileEnding;
  if (files.Stat(work)) {
    if (Outcome gone = files.Delete(work); !gone) return gone;  // left by a test that was killed
  }
  const Result<std::unique_ptr<FileTarget>> beside = files.FindTarget(work, {});
  if (!beside) return beside;
  if (Outcome made = beside.Value()->Replace("ZEB looks whether it may write here.\n"); !made) return made;
  return files.Delete(work);
}

// Nothing: it has not answered in time.
Outcome InTime(const std::optional<Outcome>& outcome, const std::string& path) {
  return outcome ? *outcome
                 : Failure{"'" + path + "' has not answered for 10 seconds; check the disk or share"};
}

}  // namespace

FileTest::FileTest(Environment& environment, const clsZEBFileOutput& output)
    : environment_(environment), lane_(environment.loop) {
  for (int number = 1; number <= output.UpdateFileCount(); ++number)
    pairs_.push_back(output.UpdateFile(number));
}

void FileTest::Run(TestSteps& steps) {
  if (pairs_.empty()) steps.Add("files", Failure{"the output has no pair of a template and a file"});
  FileSystem& files = environment_.files;
  for (const clsFileParameters& pair : pairs_) {
    const std::string source = JoinPath(environment_.dataFolder, pair.SourceFileName());
    const std::string place = JoinPath(environment_.dataFolder, pair.DestinationFileName());
    if (!steps.HasTime()) return;
    const auto read = lane_.Run([&files, source] { return TryTemplate(files, source); }, kTestStepLimit);
    steps.Add("template '" + source + "'", InTime(read, source));
    if (!read || !steps.HasTime()) return;
    if (pair.DestinationFileName().empty()) {
      steps.Add("page", Failure{"no file is set for the template '" + source + "'"});
      continue;
    }
    const LinkRules rules{true, environment_.dataFolder, source};
    const auto written =
        lane_.Run([&files, place, rules] { return TryPlace(files, place, rules); }, kTestStepLimit);
    steps.Add("writing beside '" + place + "'", InTime(written, place));
    if (!written) return;
  }
}

}  // namespace zeb
