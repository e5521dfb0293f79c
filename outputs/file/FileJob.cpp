#include "outputs/file/FileJob.h"

#include <optional>
#include <utility>

#include "outputs/file/NumberedVersions.h"
#include "text/Paths.h"

namespace zeb {
namespace {

bool Put(FileJob& job, const FileTools& tools, FileTarget& target, std::string_view bytes) {
  tools.place.AtFile(target.Path());
  const Outcome put = target.Replace(bytes);
  if (!put) job.Fail(kStatusDestinationFileProblem, put.Reason() + std::string(kCheckDestination));
  return put.Ok();
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

void PlaceVersion(FileJob& job, const FileTools& tools, std::string_view bytes) {
  const std::int64_t number = NextVersion(job, tools);
  if (number == 0) return;
  const std::string version = NumberedVersion(job.destination, number);
  tools.place.AtFile(version);
  const Result<std::unique_ptr<FileTarget>> target = tools.files.FindTarget(version, {});
  if (!target) return job.Fail(kStatusDestinationFileProblem, target.Reason());
  if (Put(job, tools, *target.Value(), bytes)) tools.destinations.SetLastVersion(job.destination, number);
}

}  // namespace

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

// A link to a share keeps working; one to ZEB's settings or to the template is a mistake or an attack.
std::unique_ptr<FileTarget> FindPlace(FileJob& job, const FileTools& tools) {
  tools.place.AtFile(job.destination);
  Result<std::unique_ptr<FileTarget>> target =
      tools.files.FindTarget(job.destination, {true, tools.dataFolder, job.source});
  if (target) return std::move(target.Value());
  job.Fail(kStatusDestinationFileProblem, target.Reason());
  return nullptr;
}

void PlacePage(FileJob& job, const FileTools& tools, FileTarget& target, std::string_view page,
               const FileEncoding& encoding) {
  std::string room;
  const std::string_view bytes = EncodeFile(page, encoding, room);
  if (tools.preserveTempFiles) {
    tools.place.At("the temporary folder");
    const Result<std::string> temp =
        WriteTempPage(tools.files, bytes, TempPage::kKept, tools.trace ? &job.trace : nullptr);
    if (!temp) return job.Fail(kStatusSourceFileProblem, temp.Reason() + std::string(kCheckTempFolder));
  }
  job.published = Put(job, tools, target, bytes);
  if (job.published) job.page = ShownPage(job.parameters, page, bytes, job.digest);
  if (job.parameters.UseMultipleVersions) PlaceVersion(job, tools, bytes);
}

}  // namespace zeb
