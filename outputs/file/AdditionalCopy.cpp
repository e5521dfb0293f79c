#include "outputs/file/AdditionalCopy.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "outputs/file/MediaNames.h"
#include "text/LetterCase.h"
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

bool AreEqual(const FileTools& tools, const AdditionalCopy& copy) {
  tools.place.AtFile(copy.source);
  const std::optional<FileInfo> source = tools.files.Stat(copy.source);
  tools.place.AtFile(copy.target);
  const std::optional<FileInfo> target = tools.files.Stat(copy.target);
  return source && target && source->isRegular && target->isRegular && source->size == target->size &&
         SameTime(source->modified, target->modified);
}

// Looks the name up in the folder, since a link that leads nowhere takes a place too, and so does a name in
// another letter case on some shares.
std::string WhyNotOverPage(const FileTools& tools, const MediaTools& media, const AdditionalCopy& copy) {
  const std::string_view name = FileNamePart(copy.target);
  tools.place.AtFile(copy.target);
  const std::optional<FileInfo> present = tools.files.Stat(copy.target);
  if (present && media.names.IsCopy(copy.target, *present)) return {};
  const std::string folder(FolderPart(copy.target));
  const Result<std::vector<std::string>> names = tools.files.List(folder);
  if (!names) return "whether '" + copy.target + "' is there cannot be told: " + names.Reason();
  const bool taken = std::any_of(names.Value().begin(), names.Value().end(),
                                 [&](const std::string& other) { return EqualIgnoringCase(other, name); });
  if (!present && !taken) return {};
  return "'" + copy.target +
         "' is there already and is not as ZEB put it there since it was started; delete " +
         "that file if this one is to replace it";
}

// Where a name may not be given to the file, whatever the file is; "" when it may.
std::string WhyNotThere(const FileTools& tools, const MediaTools& media, const AdditionalCopy& copy) {
  const std::string_view name = FileNamePart(copy.target);
  if (std::string why = WhyNoMediaName(name); !why.empty()) return why;
  if (media.names.Contains(name)) return "a page or a template has that name";
  tools.place.AtFile(copy.target);
  const std::string folder = RealPathOr(tools.files, std::string(FolderPart(copy.target)));
  if (!IsPictureName(name) && LiesIn(folder, RealPathOr(tools.files, media.rules.dataFolder)))
    return "only files with names of pictures (.jpg, .png ...) are put into the data folder";
  return {};
}

// Also for the data folder the file itself is looked at: what is put there might be taken for something else.
std::string WhyNotInto(const FileTools& tools, const MediaTools& media, const AdditionalCopy& copy,
                       FileReader& file) {
  const std::string folder = RealPathOr(tools.files, std::string(FolderPart(copy.target)));
  if (!LiesIn(folder, RealPathOr(tools.files, media.rules.dataFolder))) return {};
  const Result<bool> picture = IsPicture(file);
  if (!picture) return picture.Reason();
  return picture.Value() ? std::string() : "only pictures are put into the data folder";
}

}  // namespace

std::string CopyAdditional(const FileTools& tools, const MediaTools& media, const AdditionalCopy& copy,
                           bool always) {
  if (copy.source == copy.target) return {};
  if (const std::string why = WhyNotThere(tools, media, copy); !why.empty())
    return NotPublished(copy.source, why);
  if (!always && AreEqual(tools, copy)) return {};
  const bool pageName = IsPageName(FileNamePart(copy.target));
  if (pageName)
    if (const std::string why = WhyNotOverPage(tools, media, copy); !why.empty())
      return NotPublished(copy.source, why);

  tools.place.At("copying '" + copy.source + "' to '" + copy.target + "'");
  const OpenedMedia opened = OpenMedia(tools.files, media.rules, copy.source);
  if (!opened.file) return opened.reason;
  if (const std::string why = WhyNotInto(tools, media, copy, *opened.file); !why.empty())
    return NotPublished(copy.source, why);
  if (const Outcome rewound = opened.file->Rewind(); !rewound) return rewound.Reason();
  const Result<std::unique_ptr<FileTarget>> target = tools.files.FindTarget(copy.target, {});
  if (!target) return target.Reason();
  const Outcome copied = target.Value()->ReplaceByCopy(*opened.file, opened.file->Info().modified);
  if (!copied) return copied.Reason();
  const std::optional<FileInfo> placed = pageName ? tools.files.Stat(copy.target) : std::nullopt;
  if (placed) media.names.NoteCopy(copy.target, *placed);
  return {};
}

}  // namespace zeb
