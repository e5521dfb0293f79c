#include "outputs/web/WebTest.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>

#include "outputs/test/ConnectionTest.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::string_view kSmallFile = "ZEB looks whether it may write here.\n";
constexpr const char* kSmallFileEnding = ".zebtest";

// The bytes of a file that is nowhere.
class SmallFile : public FileReader {
 public:
  std::uint64_t Size() const override { return kSmallFile.size(); }
  FileInfo Info() const override { return {.size = kSmallFile.size()}; }
  Result<std::string> RealPath() const override { return Failure{"the file is nowhere"}; }
  Result<std::size_t> Read(char* to, std::size_t most) override {
    const std::string_view next = kSmallFile.substr(at_, most);
    std::memcpy(to, next.data(), next.size());
    at_ += next.size();
    return next.size();
  }
  Outcome Rewind() override {
    at_ = 0;
    return {};
  }

 private:
  std::size_t at_ = 0;
};

}  // namespace

WebTest::WebTest(Environment& environment, const clsZEBWebOutput& output)
    : environment_(environment),
      target_(TargetOf(output.settings, environment.dataFolder)),
      lane_(environment.loop),
      server_(environment, lane_) {
  target_.timeLimit = std::min<std::chrono::milliseconds>(
      target_.timeLimit, std::chrono::duration_cast<std::chrono::milliseconds>(kTestStepLimit));
  std::map<std::string, std::string> pageOfFolder;
  for (int number = 1; number <= output.UpdateFileCount(); ++number) {
    const std::string& page = output.UpdateFile(number).DestinationFileName();
    if (!page.empty()) pageOfFolder.emplace(FolderPart(page), page);
  }
  for (const auto& [folder, page] : pageOfFolder) pages_.insert(page);
}

void WebTest::Run(TestSteps& steps) {
  const RequestTarget way = target_.useProxy ? RequestTarget{target_.proxyName, target_.proxyPort, false}
                                             : RequestTarget{target_.server, target_.port, false};
  Network& network = environment_.network;
  if (!TestConnection(environment_.loop, network, way, steps, target_.useProxy ? " (the proxy)" : "")) return;
  if (!steps.HasTime()) return;
  const std::string logOn = "log-on as '" + target_.user + "'";
  if (!steps.Add(target_.tls ? "TLS and " + logOn : logOn, server_.Connect(target_))) return;
  if (pages_.empty()) steps.Add("pages", Failure{"the output has no pair of a template and a page"});
  for (const std::string& page : pages_) {
    if (!steps.HasTime()) break;
    TryFolder(page, steps);
    if (!server_.Connected()) break;
  }
  server_.Close();
}

void WebTest::TryFolder(const std::string& page, TestSteps& steps) {
  const Result<bool> there = server_.Exists(page);
  if (!steps.Add("looking for '" + page + "'", there, there && there.Value() ? "" : "not there yet")) return;
  if (!steps.HasTime()) return;
  const std::string small = page + kSmallFileEnding;
  if (!steps.Add("storing '" + small + "'",
                 server_.Upload(std::make_shared<SmallFile>(), small, small, nullptr)))
    return;
  steps.Add("deleting '" + small + "'", server_.Delete(small));
}

}  // namespace zeb
