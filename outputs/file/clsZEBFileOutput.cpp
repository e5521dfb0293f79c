#include "outputs/file/clsZEBFileOutput.h"

#include <exception>
#include <utility>

#include "diagnostics/hxGeneral.h"
#include "text/Paths.h"

namespace zeb {
namespace {

// How much template text is held at a time: a thousand pairs of the largest templates must not fill the
// memory.
constexpr std::size_t kMaxBatchBytes = 32u * 1024 * 1024;
// How long another output may take over a destination that this one wants too.
constexpr Duration kDestinationLimit = std::chrono::seconds(30);

constexpr const char* kSettingsKey = "\\File";

std::string StillBeingWritten(const std::string& path) {
  return "cannot write '" + path + "': another output is still writing it";
}

std::string WhyNoDestination(const FileJob& job) {
  if (job.parameters.DestinationFileName().empty())
    return "no file is set for the template '" + job.source + "'; choose one";
  if (job.source == job.destination)
    return "'" + job.source + "' would be replaced by its own page; choose another name for the page";
  return {};
}

}  // namespace

clsZEBFileOutput::clsZEBFileOutput(Environment& environment,
                                   std::shared_ptr<DestinationsInProgress> destinations)
    : PairOutput(environment), destinations_(std::move(destinations)) {}

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

bool clsZEBFileOutput::UpdateOutput(const SnapshotPtr& snapshot) {
  Trace trace("File.UpdateOutput");
  try {
    UpdatePairs(*snapshot);
  } catch (const std::exception& error) {
    SetStatus(kStatusError);
    KeepProblem(0, std::string("updating the files failed: ") + error.what());
    ReportException("updating the files", true);
  }
  return Status() == kStatusOK;
}

void clsZEBFileOutput::UpdatePairs(const ServiceSnapshot& snapshot) {
  Jobs jobs = DueJobs(snapshot);
  const int generation = PairsGeneration();
  std::set<std::string> failedCopies;
  for (std::size_t next = 0; next < jobs.size();) {
    Jobs batch = LoadBatch(jobs, next);
    ExpandBatch(batch, snapshot);
    WriteBatch(batch, failedCopies);
    KeepResults(batch, generation);
  }
  ClearUploadFilesList();
  if (!jobs.empty()) NoteFailedCopies(std::move(failedCopies));
}

clsZEBFileOutput::Jobs clsZEBFileOutput::DueJobs(const ServiceSnapshot& snapshot) const {
  Jobs jobs;
  for (std::size_t pair = 0; pair < Pairs().size(); ++pair) {
    const clsFileParameters& parameters = Pairs()[pair];
    if (!parameters.IsDue(snapshot)) continue;
    FileJob job;
    job.pair = pair;
    job.parameters = parameters;
    job.source = JoinPath(environment_.dataFolder, parameters.SourceFileName());
    job.destination = JoinPath(environment_.dataFolder, parameters.DestinationFileName());
    jobs.push_back(std::move(job));
  }
  return jobs;
}

// Takes pairs from `next` on and loads their templates. A pair whose template is an earlier pair's
// destination must see the new page, so it begins a batch of its own.
clsZEBFileOutput::Jobs clsZEBFileOutput::LoadBatch(Jobs& jobs, std::size_t& next) {
  Jobs batch;
  FileSystem& files = environment_.files;
  environment_.loop.RunBlocking(
      [&] {
        std::set<std::string> destinations;
        std::size_t bytes = 0;
        while (next < jobs.size() && bytes < kMaxBatchBytes && destinations.count(jobs[next].source) == 0) {
          batch.push_back(std::move(jobs[next++]));
          LoadJob(files, batch.back());
          destinations.insert(batch.back().destination);
          bytes += batch.back().loaded.text.size();
        }
      },
      std::chrono::hours(24));
  return batch;
}

void clsZEBFileOutput::ExpandBatch(Jobs& batch, const ServiceSnapshot& snapshot) {
  for (FileJob& job : batch) {
    if (!job.ready) continue;
    if (std::string why = WhyNoDestination(job); !why.empty()) {
      job.ready = false;
      job.Fail(kStatusDestinationFileProblem, std::move(why));
      continue;
    }
    // The items may have changed while the templates were read.
    job.skipped = !job.parameters.IsDue(snapshot);
    job.ready = !job.skipped;
    if (!job.ready) continue;
    UploadFileList named;
    job.page = BuildPage(std::move(job.loaded.text), job.parameters, snapshot, named);
    if (!CopyAdditionalFiles) continue;
    for (const std::string& path : named.Paths()) AddToUploadFilesList(path);
  }
}

// Every listed file goes beside every page, once a folder.
std::vector<AdditionalCopy> clsZEBFileOutput::AdditionalCopies(const Jobs& batch) const {
  std::vector<AdditionalCopy> copies;
  if (!CopyAdditionalFiles || UploadFilesList().Empty()) return copies;
  std::set<std::string> folders;
  for (const FileJob& job : batch) {
    if (!job.ready) continue;
    std::string folder(FolderPart(job.destination));
    if (!folders.insert(folder).second) continue;
    for (const std::string& path : UploadFilesList().Paths()) {
      std::string_view name = FileNamePart(path);
      if (!name.empty())
        copies.push_back({JoinPath(environment_.dataFolder, path), folder + std::string(name)});
    }
  }
  return copies;
}

void clsZEBFileOutput::WriteBatch(Jobs& batch, std::set<std::string>& failedCopies) {
  const std::vector<AdditionalCopy> copies = AdditionalCopies(batch);
  std::vector<std::string> paths;
  for (const FileJob& job : batch)
    if (job.ready) paths.push_back(job.destination);
  if (paths.empty()) return;
  for (const AdditionalCopy& copy : copies) paths.push_back(copy.target);

  auto claim = destinations_->Take(environment_.loop, paths, kDestinationLimit);
  VersionNumbers versions;
  for (const FileJob& job : batch)
    if (auto last = destinations_->LastVersion(job.destination)) versions[job.destination] = *last;

  const bool always = AlwaysCopyFiles;
  environment_.loop.RunBlocking(
      [&, &files = environment_.files, preserve = environment_.preserveTempFiles] {
        // Pictures first: a new page must not show a picture that is not there yet.
        for (const AdditionalCopy& copy : copies) {
          std::string reason = claim->Holds(copy.target) ? CopyAdditional(files, copy, always)
                                                         : StillBeingWritten(copy.target);
          if (!reason.empty()) failedCopies.insert(std::move(reason));
        }
        for (FileJob& job : batch) {
          if (!job.ready) continue;
          if (claim->Holds(job.destination))
            PlacePage(files, job, preserve, versions);
          else
            job.Fail(kStatusDestinationFileProblem,
                     StillBeingWritten(job.destination) + "; give each output a destination of its own");
        }
      },
      std::chrono::hours(24));
  for (const auto& [destination, number] : versions) destinations_->SetLastVersion(destination, number);
}

void clsZEBFileOutput::KeepResults(const Jobs& batch, int generation) {
  for (const FileJob& job : batch) {
    if (job.skipped) continue;
    SetStatus(job.status);
    if (job.leftOver) leftOvers_.push_back(job.destination);
    if (generation == PairsGeneration()) KeepProblem(job.pair, job.problem);
    if (!job.problem.empty()) DebugLine("File: ", job.problem);
  }
}

// A picture that stays missing is worth one line, not one an update.
void clsZEBFileOutput::NoteFailedCopies(std::set<std::string> reasons) {
  for (const std::string& reason : reasons)
    if (failedCopies_.count(reason) == 0) environment_.person.Note("File: " + reason);
  failedCopies_ = std::move(reasons);
}

bool clsZEBFileOutput::FinishOutput(const SnapshotPtr&) {
  Trace trace("File.FinishOutput");
  const std::vector<std::string> destinations = std::exchange(leftOvers_, {});
  if (destinations.empty()) return false;
  try {
    auto claim = destinations_->Take(environment_.loop, destinations, kDestinationLimit);
    environment_.loop.RunBlocking(
        [&, &files = environment_.files] {
          for (const std::string& destination : destinations)
            // Whoever else writes it makes its work file anew.
            if (claim->Holds(destination)) static_cast<void>(files.Delete(WorkName(destination)));
        },
        std::chrono::hours(24));
  } catch (const std::exception&) {
    ReportException("deleting work files", true);
  }
  return false;
}

}  // namespace zeb
