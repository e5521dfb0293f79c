#include "outputs/file/FileJob.h"

#include <utility>

#include "outputs/file/NumberedVersions.h"
#include "text/Paths.h"

namespace zeb {
namespace {

// Some shares keep times to 100 ns or whole or even seconds only, and cut what they are given.
bool SameTime(std::int64_t source, std::int64_t copy) {
  for (std::int64_t tick :
       {std::int64_t{1}, std::int64_t{100}, std::int64_t{1'000'000'000}, std::int64_t{2'000'000'000}})
    if (copy == source - source % tick) return true;
  return false;
}

// Copies the temporary file under the work name of `to`.
bool Stage(FileSystem& files, FileJob& job, const std::string& temp, const std::string& to) {
  Outcome copied = files.Copy(temp, WorkName(to));
  if (!copied) job.Fail(kStatusDestinationFileProblem, copied.Reason() + std::string(kCheckDestination));
  return copied.Ok();
}

bool Publish(FileSystem& files, FileJob& job, const std::string& to) {
  Outcome renamed = files.Rename(WorkName(to), to);
  if (!renamed) job.Fail(kStatusDestinationFileProblem, renamed.Reason() + std::string(kCheckDestination));
  return renamed.Ok();
}

// The number that the next version gets; 0 when the folder cannot be looked through.
std::int64_t NextVersion(FileSystem& files, FileJob& job, const VersionNumbers& versions) {
  auto known = versions.find(job.destination);
  if (known != versions.end()) return known->second + 1;
  Result<std::vector<std::string>> names = files.List(std::string(FolderPart(job.destination)));
  if (names) return HighestVersion(FileNamePart(job.destination), names.Value()) + 1;
  job.Fail(kStatusDestinationFileProblem, names.Reason() + std::string(kCheckDestination));
  return 0;
}

}  // namespace

std::string WorkName(const std::string& path) {
  return path + ".tmp";
}

// The later status stands, as each step sets it; the first reason is the cause of those that follow.
void FileJob::Fail(std::int32_t withStatus, std::string reason) {
  status = withStatus;
  if (problem.empty()) problem = std::move(reason);
}

void LoadJob(FileSystem& files, FileJob& job) {
  if (job.parameters.SourceFileName().empty())
    return job.Fail(kStatusSourceFileProblem, "no template is set for '" + job.destination + "'; choose one");
  Result<LoadedTemplate> loaded = LoadTemplate(files, job.source);
  if (!loaded) return job.Fail(kStatusSourceFileProblem, loaded.Reason() + std::string(kCheckTemplate));
  job.loaded = std::move(loaded.Value());
  job.ready = true;
}

void PlacePage(FileSystem& files, FileJob& job, bool preserveTempFiles, VersionNumbers& versions) {
  Result<std::string> temp = WriteTempPage(files, job.page, job.loaded.encoding);
  if (!temp) return job.Fail(kStatusSourceFileProblem, temp.Reason() + std::string(kCheckTempFolder));

  bool staged = Stage(files, job, temp.Value(), job.destination);
  std::int64_t number = job.parameters.UseMultipleVersions ? NextVersion(files, job, versions) : 0;
  std::string version = number > 0 ? NumberedVersion(job.destination, number) : std::string();
  bool versionStaged = number > 0 && Stage(files, job, temp.Value(), version);

  if (!preserveTempFiles)
    if (Outcome deleted = files.Delete(temp.Value()); !deleted)
      job.Fail(kStatusSourceFileProblem, deleted.Reason() + std::string(kCheckTempFolder));

  if (staged) job.leftOver = !Publish(files, job, job.destination);
  if (!versionStaged) return;
  if (Publish(files, job, version))
    versions[job.destination] = number;
  else
    static_cast<void>(files.Delete(WorkName(version)));
}

std::string CopyAdditional(FileSystem& files, const AdditionalCopy& copy, bool always) {
  if (copy.source == copy.target) return {};
  if (!always) {
    std::optional<FileInfo> source = files.Stat(copy.source), target = files.Stat(copy.target);
    if (source && target && source->isRegular && target->isRegular && source->size == target->size &&
        SameTime(source->modified, target->modified))
      return {};
  }
  const std::string work = WorkName(copy.target);
  Outcome copied = files.Copy(copy.source, work);
  if (!copied) return copied.Reason();
  Outcome renamed = files.Rename(work, copy.target);
  if (renamed) return {};
  static_cast<void>(files.Delete(work));
  return renamed.Reason();
}

}  // namespace zeb
