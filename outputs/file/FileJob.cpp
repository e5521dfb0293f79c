#include "outputs/file/FileJob.h"

#include <optional>
#include <utility>

#include "outputs/file/NumberedVersions.h"
#include "text/Paths.h"

namespace zeb {
namespace {

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

std::optional<LoadedTemplate> LoadFor(FileJob& job, const FileTools& tools) {
  if (job.parameters.SourceFileName().empty()) {
    job.Fail(kStatusSourceFileProblem, "no template is set for '" + job.destination + "'; choose one");
    return std::nullopt;
  }
  tools.place.AtFile(job.source);
  Result<LoadedTemplate> loaded = LoadTemplate(tools.files, job.source);
  if (loaded) return std::move(loaded.Value());
  job.Fail(kStatusSourceFileProblem, loaded.Reason() + std::string(kCheckTemplate));
  return std::nullopt;
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

}  // namespace zeb
