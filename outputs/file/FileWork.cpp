#include "outputs/file/FileWork.h"

#include <algorithm>
#include <utility>

#include "text/Paths.h"

namespace zeb {
namespace {

// How much a worker does at a time, far below what a slow share manages within the limit.
constexpr std::size_t kMostPairs = 100;
constexpr std::size_t kMostBytes = 32u * 1024 * 1024;

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

FileWork::FileWork(Setting setting, std::vector<FileJob> jobs, UploadFileList listed)
    : setting_(std::move(setting)), jobs_(std::move(jobs)), listed_(std::move(listed)) {}

std::vector<std::string> FileWork::Destinations() const {
  std::vector<std::string> paths;
  paths.reserve(jobs_.size() - next_ + waitedFor_.size());
  for (std::size_t i = next_; i < jobs_.size(); ++i)
    if (WhyNoDestination(jobs_[i]).empty()) paths.push_back(jobs_[i].destination);
  paths.insert(paths.end(), waitedFor_.begin(), waitedFor_.end());
  return paths;
}

void FileWork::DoPiece() {
  DestinationsInProgress::ClaimPtr claim = std::exchange(claim_, nullptr);
  pieceBytes_ = 0;
  const std::size_t end = std::min(jobs_.size(), next_ + kMostPairs);
  while (next_ < end && pieceBytes_ < kMostBytes && !givenUp_) {
    if (!Do(jobs_[next_], *claim)) return;
    ++next_;
  }
  if (!Ended()) claim_ = std::move(claim);
}

// False: it must wait for files that another output is writing, or has been given up.
bool FileWork::Do(FileJob& job, Claim& claim) {
  const FileTools tools = Tools();
  const std::shared_ptr<const PageTemplate> loaded = LoadFor(job, tools);
  if (!loaded) return true;
  pieceBytes_ += loaded->Text().size();
  std::string why = WhyNoDestination(job);
  if (why.empty() && !claim.Holds(job.destination))
    why = StillBeingWritten(job.destination) + "; give each output a destination of its own";
  if (!why.empty()) {
    job.Fail(kStatusDestinationFileProblem, std::move(why));
    return true;
  }
  const std::unique_ptr<FileTarget> target = FindPlace(job, tools);
  if (!target) return true;
  // Behind a link, another path than the one that was claimed.
  const bool elsewhere = target->Path() != job.destination;
  const Hold hold = elsewhere ? HoldAlso(claim, target->Path()) : Hold::kOurs;
  if (hold == Hold::kWait) return false;
  if (hold == Hold::kTaken) {
    job.Fail(kStatusDestinationFileProblem, StillBeingWritten(target->Path()));
    return true;
  }
  UploadFileList named;
  const ValueEncoding values = PageValues(job.parameters, loaded->Text());
  const Result<std::string> page =
      BuildPage(*loaded, job.parameters, *job.snapshot, named, values, DateOf(job.snapshot));
  if (!page) {
    job.Fail(kStatusSourceFileProblem, page.Reason());
    return true;
  }
  if (setting_.copyAdditional) {
    for (const std::string& path : named.Paths()) listed_.Add(path);
    folders_.try_emplace(std::string(FolderPart(job.destination)), 0);
    if (!CopyBesidePages(claim)) return false;
  }
  PlacePage(job, tools, *target, page.Value(), loaded->Encoding());
  if (job.published) NoteSource(job.page, job.parameters, loaded, job.snapshot, values);
  return true;
}

const std::string& FileWork::DateOf(const SnapshotPtr& snapshot) {
  if (dated_ != snapshot) date_ = HeaderDate(snapshot->moment);
  dated_ = snapshot;
  return date_;
}

FileWork::Hold FileWork::HoldAlso(Claim& claim, const std::string& path) {
  if (claim.Holds(path) || claim.Add(path)) return Hold::kOurs;
  return waitedFor_.insert(path).second ? Hold::kWait : Hold::kTaken;
}

// Every listed file goes beside every page, once a folder.
bool FileWork::CopyBesidePages(Claim& claim) {
  const MediaTools media{setting_.media, *setting_.names};
  for (auto& [folder, done] : folders_) {
    for (; done < listed_.Paths().size(); ++done) {
      const std::string& path = listed_.Paths()[done];
      const std::string_view name = FileNamePart(path);
      if (name.empty()) continue;
      const AdditionalCopy copy{JoinPath(setting_.media.dataFolder, path), folder + std::string(name)};
      if (givenUp_) return false;
      const Hold hold = HoldAlso(claim, copy.target);
      if (hold == Hold::kWait) return false;
      copies_[copy.target] = hold == Hold::kOurs ? CopyAdditional(Tools(), media, copy, setting_.alwaysCopy)
                                                 : StillBeingWritten(copy.target);
    }
  }
  return true;
}

std::span<FileJob> FileWork::TakeEnded() {
  const std::size_t first = std::exchange(taken_, next_);
  return std::span(jobs_).subspan(first, next_ - first);
}

}  // namespace zeb
