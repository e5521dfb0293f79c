#include "outputs/file/FileJob.h"

#include <optional>
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
bool Stage(FileJob& job, const FileTools& tools, const std::string& temp, const std::string& to) {
  tools.place.AtFile(to);
  const Outcome copied = tools.files.Copy(temp, WorkName(to));
  if (!copied) job.Fail(kStatusDestinationFileProblem, copied.Reason() + std::string(kCheckDestination));
  return copied.Ok();
}

bool Publish(FileJob& job, const FileTools& tools, const std::string& to) {
  tools.place.AtFile(to);
  const Outcome renamed = tools.files.Rename(WorkName(to), to);
  if (!renamed) job.Fail(kStatusDestinationFileProblem, renamed.Reason() + std::string(kCheckDestination));
  return renamed.Ok();
}

// The number that the next version gets; 0 when the folder cannot be looked through.
std::int64_t NextVersion(FileJob& job, const FileTools& tools) {
  if (const auto last = tools.destinations.LastVersion(job.destination)) return *last + 1;
  const std::string folder(FolderPart(job.destination));
  tools.place.AtFile(folder);
  const Result<std::vector<std::string>> names = tools.files.List(folder);
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

std::shared_ptr<const PageTemplate> LoadFor(FileJob& job, const FileTools& tools) {
  if (job.parameters.SourceFileName().empty()) {
    job.Fail(kStatusSourceFileProblem, "no template is set for '" + job.destination + "'; choose one");
    return nullptr;
  }
  tools.place.AtFile(job.source);
  Result<std::shared_ptr<const PageTemplate>> loaded = tools.templates.Load(tools.files, job.source);
  if (loaded) return std::move(loaded.Value());
  job.Fail(kStatusSourceFileProblem, loaded.Reason() + std::string(kCheckTemplate));
  return nullptr;
}

void PlacePage(FileJob& job, const FileTools& tools, std::string_view page, const FileEncoding& encoding) {
  tools.place.At("the temporary folder");
  const Result<std::string> temp =
      WriteTempPage(tools.files, page, encoding, tools.trace ? &job.trace : nullptr);
  if (!temp) return job.Fail(kStatusSourceFileProblem, temp.Reason() + std::string(kCheckTempFolder));

  const bool staged = Stage(job, tools, temp.Value(), job.destination);
  const std::int64_t number = job.parameters.UseMultipleVersions ? NextVersion(job, tools) : 0;
  const std::string version = number > 0 ? NumberedVersion(job.destination, number) : std::string();
  const bool versionStaged = number > 0 && Stage(job, tools, temp.Value(), version);

  if (!tools.preserveTempFiles) {
    tools.place.At("the temporary folder");
    if (const Outcome deleted = tools.files.Delete(temp.Value()); !deleted)
      job.Fail(kStatusSourceFileProblem, deleted.Reason() + std::string(kCheckTempFolder));
  }
  if (staged) job.published = Publish(job, tools, job.destination);
  job.leftOver = staged && !job.published;
  if (!versionStaged) return;
  if (Publish(job, tools, version))
    tools.destinations.SetLastVersion(job.destination, number);
  else
    static_cast<void>(tools.files.Delete(WorkName(version)));
}

std::string CopyAdditional(const FileTools& tools, const AdditionalCopy& copy, bool always) {
  if (copy.source == copy.target) return {};
  FileSystem& files = tools.files;
  if (!always) {
    tools.place.AtFile(copy.source);
    const std::optional<FileInfo> source = files.Stat(copy.source);
    tools.place.AtFile(copy.target);
    const std::optional<FileInfo> target = files.Stat(copy.target);
    if (source && target && source->isRegular && target->isRegular && source->size == target->size &&
        SameTime(source->modified, target->modified))
      return {};
  }
  tools.place.At("copying '" + copy.source + "' to '" + copy.target + "'");
  const std::string work = WorkName(copy.target);
  const Outcome copied = files.Copy(copy.source, work);
  if (!copied) return copied.Reason();
  const Outcome renamed = files.Rename(work, copy.target);
  if (renamed) return {};
  static_cast<void>(files.Delete(work));
  return renamed.Reason();
}

}  // namespace zeb
