#include "outputs/file/clsZEBFileOutput.h"

#include <algorithm>
#include <span>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/Paths.h"

namespace zeb {
namespace {

// How long another output may take over a destination that this one wants too.
constexpr Duration kDestinationLimit = std::chrono::seconds(30);
// A worker that is at one file from here to the end of its time hangs; else it has too much to do.
constexpr Duration kHangsSince = std::chrono::seconds(1);

constexpr const char* kSettingsKey = "\\File";

}  // namespace

clsZEBFileOutput::clsZEBFileOutput(Environment& environment,
                                   std::shared_ptr<DestinationsInProgress> destinations,
                                   std::shared_ptr<TemplateStore> templates,
                                   std::shared_ptr<PublishedNames> names)
    : PairOutput(environment, std::move(names)),
      destinations_(std::move(destinations)),
      templates_(std::move(templates)) {}

std::string clsZEBFileOutput::GetStatusString(std::uint32_t& colour) {
  switch (Status()) {
    case kStatusSourceFileProblem:
      colour = kColourRed;
      return "Source File Prob.";
    case kStatusDestinationFileProblem:
      colour = kColourRed;
      return "Dest. File Prob.";
    case kStatusLoggingOn:
      colour = kColourBlack;
      return "Logging on";
    default:
      return PairOutput::GetStatusString(colour);
  }
}

void clsZEBFileOutput::StoreOutputInformation(int serviceNumber, int outputIndex) {
  WritePairSettings(environment_.ServiceKey(serviceNumber) + kSettingsKey, outputIndex);
}

void clsZEBFileOutput::GetOutputInformation(int serviceNumber, int outputIndex) {
  ReadPairSettings(environment_.ServiceKey(serviceNumber) + kSettingsKey, outputIndex);
  SetStatus(kStatusOK);
}

void clsZEBFileOutput::NoteFault(const std::string& what) {
  PairOutput::NoteFault(what);
  lastTally_.failed = static_cast<int>(std::max<std::size_t>(owed_.size(), 1));
}

void clsZEBFileOutput::Cancel() {
  if (work_) work_->GiveUp();
}

bool clsZEBFileOutput::StopOutput() {
  Cancel();
  return PairOutput::StopOutput();
}

// ---- An update

bool clsZEBFileOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  const Trace trace("File.UpdateOutput");
  lastTally_ = {};
  TakeLateResults();
  const bool repeated = last_ == snapshot;
  if (!repeated) lastTally_ = {};  // pages that show older items are none of this update's
  NoteOwed(snapshot);
  if (Hangs()) return false;
  UploadFileList listed = TakeUploadFilesList();
  if (!owed_.empty()) {
    work_ = MakeWork(std::move(listed));
    const std::shared_ptr<FileWork> work = work_;
    bool through = true;
    while (through && !work->Ended()) through = DoPiece(work);
    if (through) work_.reset();
    if (!work_) NoteFailedCopies(*work, through && !repeated && !work->GivenUp());
  }
  lastTally_.failed = static_cast<int>(problem_.empty() ? FailingPairs() : owed_.size());
  return lastTally_.published > 0;
}

// What is to be done: with new items, the pairs whose rules ask for them; always, those that failed before.
void clsZEBFileOutput::NoteOwed(const SnapshotPtr& snapshot) {
  if (!pairsMark_ || !pairsMark_->Holds()) {
    owed_.clear();
    last_.reset();
    pairsMark_ = PairsMark();
  }
  if (last_ == snapshot) return;
  last_ = snapshot;
  for (std::size_t pair = 0; pair < Pairs().size(); ++pair)
    if (Pairs()[pair].IsDue(*snapshot)) owed_[pair] = snapshot;
}

std::shared_ptr<FileWork> clsZEBFileOutput::MakeWork(UploadFileList listed) {
  std::vector<FileJob> jobs;
  jobs.reserve(owed_.size());
  for (const auto& [pair, snapshot] : owed_) {
    FileJob& job = jobs.emplace_back();
    job.pair = pair;
    job.parameters = Pairs()[pair];
    job.snapshot = snapshot;
    job.digest = DigestWhen(pair);
    job.source = JoinPath(environment_.dataFolder, job.parameters.SourceFileName());
    job.destination = JoinPath(environment_.dataFolder, job.parameters.DestinationFileName());
  }
  FileWork::Setting setting{environment_.files, destinations_, templates_, Media(), Names()};
  setting.copyAdditional = CopyAdditionalFiles;
  setting.alwaysCopy = AlwaysCopyFiles;
  setting.preserveTempFiles = environment_.preserveTempFiles;
  setting.trace = DebugLevelAllows(5);
  return std::make_shared<FileWork>(std::move(setting), std::move(jobs), std::move(listed));
}

// False: the worker hangs, and is left to itself.
bool clsZEBFileOutput::DoPiece(const std::shared_ptr<FileWork>& work) {
  if (work->NeedsClaim())
    work->SetClaim(destinations_->Take(environment_.loop, work->Destinations(), kDestinationLimit,
                                       [&work] { return work->GivenUp(); }));
  WorkPlace::Step early;
  const Timer look = environment_.loop.After(kHangsSince, [&] { early = work->Place().Now(); });
  if (lane_.Run([work] { work->DoPiece(); }, kFileWorkLimit)) {
    if (KeepResults(*work)) problem_.clear();
    return true;
  }
  work->GiveUp();
  NoteHanging(work->Place(), early.number != work->Place().Now().number);
  if (!Hangs()) work_.reset();  // it had not even begun
  return false;
}

// Of a worker that came back after its time, or of work that threw.
void clsZEBFileOutput::TakeLateResults() {
  if (!work_ || Hangs()) return;
  const std::shared_ptr<FileWork> work = std::exchange(work_, nullptr);
  if (KeepResults(*work)) problem_.clear();
  NoteFailedCopies(*work, false);
}

// Whether there were any.
bool clsZEBFileOutput::KeepResults(FileWork& work) {
  const std::span<FileJob> ended = work.TakeEnded();
  for (FileJob& job : ended) KeepResult(job);
  return !ended.empty();
}

void clsZEBFileOutput::KeepResult(FileJob& job) {
  WriteDebugLines(job.trace);
  if (!job.problem.empty()) DebugLine("File: ", job.problem);
  SetStatus(job.status);
  if (job.published) ++lastTally_.published;
  if (!pairsMark_->Holds()) return;  // it may be about another pair by now
  KeepProblem(job.pair, job.problem);
  if (job.published) KeepShown(job.pair, std::move(job.page));
  const auto owed = owed_.find(job.pair);
  if (job.problem.empty() && owed != owed_.end() && owed->second == job.snapshot) owed_.erase(owed);
}

void clsZEBFileOutput::NoteFailedCopies(const FileWork& work, bool ofAll) {
  copyNotes_.Take(work.Copies(), ofAll,
                  [this](const std::string& line) { environment_.person.Note("File: " + line); });
}

void clsZEBFileOutput::NoteHanging(const WorkPlace& place, bool progressed) {
  const std::string at = place.Now().what;
  SetStatus(kStatusError);
  if (at.empty())
    problem_ = "the files could not be begun within 30 s; other work on files hangs";
  else if (progressed)
    problem_ = "the files take longer than 30 s, the last one is " + at +
               "; check how fast the disk or share is that they are on";
  else
    problem_ = at + " has not answered for 30 s; check the disk or share that it is on";
}

// Each page was put in place, or its work file removed, as it was made.
bool clsZEBFileOutput::FinishOutput(const SnapshotPtr&) {
  const Trace trace("File.FinishOutput");
  return false;
}

}  // namespace zeb
