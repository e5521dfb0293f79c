#include "outputs/web/clsZEBWebOutput.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "outputs/web/cWinINET.h"
#include "platform/Operator.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr const char* kSettingsKey = "\\Web";
constexpr const char* kMovedPages = "FTPMovedPages";
constexpr char kBetweenNames = '|';
constexpr std::size_t kMostMovedPages = 1000;

// "page|aside|page|aside"
std::string MovedPagesText(const std::vector<MovedPage>& pages) {
  std::string text;
  for (const MovedPage& moved : pages) {
    if ((moved.page + moved.aside).find(kBetweenNames) != std::string::npos) continue;
    if (!text.empty()) text += kBetweenNames;
    text += moved.page + kBetweenNames + moved.aside;
  }
  return text;
}

std::vector<MovedPage> ParseMovedPages(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty() && names.size() < 2 * kMostMovedPages) {
    const std::size_t end = std::min(text.find(kBetweenNames), text.size());
    names.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::vector<MovedPage> pages;
  for (std::size_t i = 0; i + 1 < names.size(); i += 2)
    if (!names[i].empty() && !names[i + 1].empty()) pages.push_back({names[i], names[i + 1]});
  return pages;
}

}  // namespace

// ---- The contract

bool clsZEBWebOutput::StartOutput(std::shared_ptr<Control> control) {
  const Trace trace("Web.StartOutput");
  control_ = std::move(control);
  SetStatus(kStatusOK);
  return true;
}

bool clsZEBWebOutput::StopOutput() {
  const Trace trace("Web.StopOutput");
  keepTimer_.Stop();
  if (run_)
    Cancel();
  else
    server_.Drop();
  control_.reset();
  SetStatus(kStatusOff);
  return true;
}

void clsZEBWebOutput::Cancel() {
  if (run_) run_->Cancel();
}

void clsZEBWebOutput::CancelByUser() {
  if (!run_ || run_->Cancelled()) return;
  cancelledByUser_ = true;
  Cancel();
}

bool clsZEBWebOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("Web.UpdateOutput");
  cancelledByUser_ = false;
  keepTimer_.Stop();
  SetTally({});
  WebOrder order = OrderFor(snapshot);
  const bool isDue = std::any_of(order.pages.begin(), order.pages.end(),
                                 [](const WebOrder::Page& page) { return page.isDue; });
  if (!isDue && order.additional.empty() && order.movedPages.empty()) return false;

  pairsMark_ = PairsMark();
  server_.Begin();
  const auto run = std::make_shared<WebUpload>(environment_, lane_, server_, order);
  run_ = run;
  run->Run();
  progress_.reset();
  if (run->Cancelled())
    server_.Close();  // the end of the update may not be called any more
  else
    lastSnapshot_ = snapshot;
  KeepResults(*run, order);
  return LastTally().published > 0;
}

bool clsZEBWebOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("Web.FinishOutput");
  const std::shared_ptr<WebUpload> run = run_;
  if (!run) return false;
  run->Finish();
  const auto keep = std::chrono::seconds(settings.FTPKeepConnectionSeconds);
  if (keep.count() > 0 && server_.Connected() && !run->Cancelled())
    keepTimer_ = environment_.loop.After(keep, [this] { server_.Drop(); });
  else
    server_.Close();
  if (run_ == run) run_.reset();
  return false;
}

std::string clsZEBWebOutput::GetStatusString(std::uint32_t& colour) {
  switch (Status()) {
    case kStatusSourceProblem:
      colour = kColourRed;
      return "Source File Prob.";
    case kStatusUploadProblem:
    case kStatusConnectProblem:
      colour = kColourRed;
      return lastError_;
    case kStatusLoggingOn:
      colour = kColourBlack;
      return "Logging on";
    default:
      return PairOutput::GetStatusString(colour);
  }
}

// What keeps all of it from the server is named once, and not for each page.
std::vector<clsZEBTemplate::Problem> clsZEBWebOutput::Problems() const {
  if (!problem_.empty()) return {{"", problem_}};
  std::vector<Problem> problems = PairOutput::Problems();
  problems.insert(problems.end(), additionalProblems_.begin(), additionalProblems_.end());
  return problems;
}

bool clsZEBWebOutput::DestinationFileExists(const std::string& serverPath) {
  if (serverPath.empty()) return false;
  const Result<bool> exists = server_.Exists(serverPath);
  return exists && exists.Value();
}

int clsZEBWebOutput::NumberDeleteFiles() const {
  return run_ ? static_cast<int>(run_->deleteFiles.size()) : 0;
}

const std::string& clsZEBWebOutput::DeleteFileName(int number) const {
  static const std::vector<std::string> kNone;
  return (run_ ? run_->deleteFiles : kNone).at(static_cast<std::size_t>(number) - 1);
}

// ---- Settings

void clsZEBWebOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string number = std::to_string(outputIndex);
  WritePairSettings(key, outputIndex);
  WriteSettings(environment_.hive, key, number, WebSettingTable(), settings);
  NoteNumber(serviceNumber, outputIndex);
  if (!movedPages_.empty()) environment_.hive.WriteText(key, movedPagesName_, MovedPagesText(movedPages_));
}

void clsZEBWebOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  const std::string key = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  const std::string number = std::to_string(outputIndex);
  ReadPairSettings(key, outputIndex);
  ReadSettings(environment_.hive, key, number, WebSettingTable(), settings);
  NoteNumber(serviceNumber, outputIndex);
  movedPages_ = ParseMovedPages(environment_.hive.ReadText(key, movedPagesName_, ""));
  SetStatus(kStatusOK);
}

void clsZEBWebOutput::NoteNumber(int serviceNumber, int outputIndex) {
  movedPagesKey_ = environment_.ServiceKey(serviceNumber) + kSettingsKey;
  movedPagesName_ = kMovedPages + std::to_string(outputIndex);
}

std::string clsZEBWebOutput::SettingsText() const {
  return PairOutput::SettingsText() + zeb::SettingsText(WebSettingTable(), settings);
}

// ---- An update

bool clsZEBWebOutput::Repeats(const SnapshotPtr& snapshot) const {
  return snapshot == lastSnapshot_ && pairsMark_ && pairsMark_->Holds();
}

WebOrder clsZEBWebOutput::OrderFor(const SnapshotPtr& snapshot) {
  WebOrder order;
  order.snapshot = snapshot;
  order.templates = templates_;
  order.target = TargetOf(settings, environment_.dataFolder);
  const bool repeats = order.isRepetition = Repeats(snapshot);
  for (std::size_t pair = 0; pair < Pairs().size(); ++pair)
    if (!repeats || failedPages_.count(pair) > 0)
      order.pages.push_back({pair, Pairs()[pair], Pairs()[pair].IsDue(*snapshot)});
  if (repeats) order.additional = failedAdditional_;
  order.listed = UploadFilesList().Paths();
  order.movedPages = movedPages_;
  order.copyAdditional = CopyAdditionalFiles;
  order.alwaysCopy = AlwaysCopyFiles;
  order.media = Media();
  order.names = Names();
  order.onProgress = [this](int percent) {
    progress_ = percent;
    if (const auto tell = onProgress) tell(percent);
  };
  order.onStatus = [this](std::int32_t status, const std::string& text) {
    lastError_ = text;
    SetStatus(status);
  };
  return order;
}

// What a run learnt about pair 3 may be about another one by now; then it is not kept.
void clsZEBWebOutput::KeepResults(const WebUpload& run, const WebOrder& order) {
  KeepMovedPages(run.movedPages);
  if (run.tookListed) ClearUploadFilesList();
  const bool samePairs = pairsMark_->Holds();
  failedPages_.clear();
  Tally tally;
  for (const WebOrder::Page& page : order.pages) {
    if (!page.isDue) continue;
    const auto tried = run.pages.find(page.pair);
    const bool published = tried != run.pages.end() && tried->second.empty();
    ++(published ? tally.published : tally.failed);
    if (!published) failedPages_.insert(page.pair);
    if (samePairs && tried != run.pages.end()) KeepProblem(page.pair, tried->second);
    const auto shown = run.shown.find(page.pair);
    if (samePairs && shown != run.shown.end()) KeepShown(page.pair, shown->second);
  }
  failedAdditional_ = run.failedAdditional;
  if (run.Cancelled()) {
    if (!cancelledByUser_) return;
    problem_ = cWinINET::GetUploadResultDescription(cWinINET::kCancelled);
    return SetTally(tally);
  }
  const bool ofAll = !order.isRepetition && run.problem.empty();
  copyNotes_.Take(run.refused, ofAll,
                  [this](const std::string& line) { environment_.person.Note("Web: " + line); });
  problem_ = run.problem;
  SetTally(tally);
  if (!run.problem.empty()) return;
  additionalProblems_.clear();
  for (const auto& [server, reason] : run.additional) additionalProblems_.push_back({server, reason});
  // A page sets the status itself.
  if (tally.published + tally.failed == 0 && Problems().empty()) SetStatus(kStatusOK);
}

void clsZEBWebOutput::KeepMovedPages(const std::vector<MovedPage>& moved) {
  if (moved == movedPages_) return;
  movedPages_ = moved;
  if (movedPagesKey_.empty()) return;
  try {
    if (moved.empty())
      environment_.hive.DeleteValue(movedPagesKey_, movedPagesName_);
    else
      environment_.hive.WriteText(movedPagesKey_, movedPagesName_, MovedPagesText(moved));
  } catch (const std::exception& error) {
    DebugLine("Web: the pages that are moved aside cannot be noted: ", error.what());
  }
}

}  // namespace zeb
