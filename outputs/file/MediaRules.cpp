#include "outputs/file/MediaRules.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <utility>

#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"
#include "text/OneLine.h"
#include "text/Paths.h"

namespace zeb {
namespace {

using namespace std::string_view_literals;

constexpr const char* kPictureKinds = "JPEG, PNG, GIF, WebP, AVIF, TIFF, BMP, ICO";
// How often a file that is just being replaced is opened.
constexpr int kTries = 3;

bool StartsWith(std::string_view bytes, std::string_view start) {
  return bytes.substr(0, start.size()) == start;
}

std::uint32_t LittleEndian(std::string_view bytes, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t i = 4; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[at + i]);
  return number;
}

// Two letters alone could begin any text; its header's length has one of a few values.
bool IsBitmap(std::string_view head) {
  static constexpr std::array<std::uint32_t, 7> kHeaderBytes = {12, 40, 52, 56, 64, 108, 124};
  return head.size() >= 18 && StartsWith(head, "BM") && LittleEndian(head, 6) == 0 &&
         std::find(kHeaderBytes.begin(), kHeaderBytes.end(), LittleEndian(head, 14)) != kHeaderBytes.end();
}

bool IsIcon(std::string_view head) {
  return head.size() >= 22 && StartsWith(head, "\0\0\1\0"sv) && head[4] != 0 && head[5] == 0 && head[9] == 0;
}

bool IsAvif(std::string_view head) {
  return head.substr(std::min<std::size_t>(head.size(), 4), 8) == "ftypavif" ||
         head.substr(std::min<std::size_t>(head.size(), 4), 8) == "ftypavis";
}

bool IsWebP(std::string_view head) {
  return head.size() >= 12 && StartsWith(head, "RIFF") && head.substr(8, 4) == "WEBP";
}

Result<std::string> HeadOf(FileReader& file) {
  std::string head(kPictureHeadBytes, '\0');
  std::size_t length = 0;
  while (length < head.size()) {
    const Result<std::size_t> got = file.Read(head.data() + length, head.size() - length);
    if (!got) return got.AsFailure();
    if (got.Value() == 0) break;
    length += got.Value();
  }
  if (const Outcome rewound = file.Rewind(); !rewound) return rewound.AsFailure();
  head.resize(length);
  return head;
}

// The first folder, from the root down, that others may not enter; "" when there is none.
std::string ClosedFolderAbove(FileSystem& files, const std::string& path) {
  for (std::size_t at = 0; (at = path.find(kPathSeparator, at)) != std::string::npos; ++at) {
    std::string folder = path.substr(0, std::max<std::size_t>(at, 1));
    const std::optional<FileInfo> info = files.Stat(folder);
    if (!info || !info->openToAll) return folder;
  }
  return {};
}

OpenedMedia Refused(const std::string& path, const std::string& why) {
  return {nullptr, NotPublished(path, why), true};
}

OpenedMedia Judge(FileSystem& files, const MediaRules& rules, const std::string& path,
                  std::shared_ptr<FileReader> file) {
  if (!file->Info().openToAll)
    return Refused(path, "only a file that everyone may read is; 'chmod o+r' makes it one (mode 0644)");
  const Result<std::string> real = file->RealPath();
  if (!real) return {nullptr, real.Reason()};
  const bool ours = LiesIn(real.Value(), RealPathOr(files, rules.dataFolder));
  if (ours) {
    const Result<bool> picture = IsPicture(*file);
    if (!picture) return {nullptr, picture.Reason()};
    if (!picture.Value())
      return Refused(path,
                     std::string("it lies in the data folder and is no picture (") + kPictureKinds + ")");
  }
  if (!rules.folders.empty()) {
    const bool named = std::any_of(
        rules.folders.begin(), rules.folders.end(),
        [&](const std::string& folder) { return LiesIn(real.Value(), RealPathOr(files, folder)); });
    if (!named) return Refused(path, "it lies in none of the folders that MediaFolders names");
  } else if (!ours) {
    if (const std::string closed = ClosedFolderAbove(files, real.Value()); !closed.empty())
      return Refused(path, "others may not enter the folder '" + closed +
                               "' that it lies in; 'chmod o+x' that one, or name the picture's folder in "
                               "MediaFolders");
  }
  return {std::move(file), {}};
}

}  // namespace

MediaRules MakeMediaRules(const std::string& dataFolder, std::string_view folders) {
  MediaRules rules{dataFolder, {}};
  for (const std::string_view part : SplitAt(folders, ";")) {
    const std::string_view folder = TrimBlanks(part);
    if (!folder.empty()) rules.folders.push_back(JoinPath(dataFolder, folder));
  }
  return rules;
}

OpenedMedia OpenMedia(FileSystem& files, const MediaRules& rules, const std::string& path) {
  OpenedMedia opened;
  for (int tries = 0; tries < kTries && !opened.file && !opened.refused; ++tries) {
    Result<std::unique_ptr<FileReader>> file = files.OpenForReading(path);
    if (!file) return {nullptr, file.Reason()};
    opened = Judge(files, rules, path, std::move(file.Value()));
  }
  return opened;
}

std::string_view PictureType(std::string_view head) {
  if (StartsWith(head, "\xFF\xD8\xFF")) return "image/jpeg";
  if (StartsWith(head, "\x89PNG\r\n\x1A\n")) return "image/png";
  if (StartsWith(head, "GIF87a") || StartsWith(head, "GIF89a")) return "image/gif";
  if (IsWebP(head)) return "image/webp";
  if (IsAvif(head)) return "image/avif";
  if (StartsWith(head, "II*\0"sv) || StartsWith(head, "MM\0*"sv)) return "image/tiff";
  if (IsBitmap(head)) return "image/bmp";
  return IsIcon(head) ? "image/x-icon" : std::string_view();
}

Result<bool> IsPicture(FileReader& file) {
  const Result<std::string> head = HeadOf(file);
  if (!head) return head.AsFailure();
  return IsPicture(head.Value());
}

bool LiesIn(std::string_view path, std::string_view folder) {
#ifdef _WIN32
  const auto plain = [](std::string_view given) {
    std::string name(given);
    std::replace(name.begin(), name.end(), '/', '\\');
    return name;
  };
  const std::string plainPath = plain(path), plainFolder = plain(folder);
  path = plainPath;
  folder = plainFolder;
#endif
  while (folder.size() > 1 && folder.back() == kPathSeparator) folder.remove_suffix(1);
  if (folder.empty() || path.size() < folder.size()) return false;
#ifdef _WIN32
  const bool begins = StartsWithIgnoringCase(path, folder);
#else
  const bool begins = StartsWith(path, folder);
#endif
  return begins && (path.size() == folder.size() || folder.back() == kPathSeparator ||
                    path[folder.size()] == kPathSeparator);
}

std::string RealPathOr(FileSystem& files, const std::string& path) {
  Result<std::string> real = files.RealPath(path);
  if (real) return std::move(real.Value());
  return path;
}

std::string NotPublished(const std::string& path, const std::string& why) {
  return "'" + OneLine(path) + "' is not published: " + why;
}

}  // namespace zeb
