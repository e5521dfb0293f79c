// MediaRules: which files are taken as pictures or additional files of items. Their names come from whoever
// sends the items, so a name alone must not get a file out of this machine: it is taken only when everyone
// may read it anyway, and from the data folder, where the passwords are, only when it is a picture.
//
// "Everyone may read it" means the file's mode and, as far up as the root, that of the folders that it really
// lies in; a file that only a closed folder protects (a home) is not meant for all. The operator overrules
// the folders, and not the file: below a folder that MediaFolders names, and in the data folder, only the
// file's own mode counts, for both may well be closed to others.
//
// What is decided is decided on the open file: whoever puts another in its place later gains nothing, as
// long as that open file is what is then copied or sent.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileSystem.h"

namespace zeb {

struct MediaRules {
  std::string dataFolder;
  std::vector<std::string> folders;  // only what lies below one of these; none: from everywhere
};

// The value of the settings root that has them.
inline constexpr const char* kMediaFolders = "MediaFolders";
// `folders` is a setting's text: names with ";" between, relative ones below the data folder.
MediaRules MakeMediaRules(const std::string& dataFolder, std::string_view folders);

struct OpenedMedia {
  std::shared_ptr<FileReader> file;  // at its beginning; null: it is not taken
  std::string reason;                // why not, in one line
  bool refused = false;              // by these rules; false: it could not be read
};
// On a worker.
OpenedMedia OpenMedia(FileSystem& files, const MediaRules& rules, const std::string& path);

// "image/png": the media type of the picture that begins with these bytes (kPictureHeadBytes suffice): a
// JPEG, PNG, GIF, WebP, AVIF, TIFF, BMP or ICO; "" when it is none. SVG is none: it is text, begins in many
// ways and may hold script.
std::string_view PictureType(std::string_view head);
inline bool IsPicture(std::string_view head) {
  return !PictureType(head).empty();
}
Result<bool> IsPicture(FileReader& file);  // which is at its beginning, also afterwards
inline constexpr std::size_t kPictureHeadBytes = 32;

// Whether a real path is `folder` or lies below it; nothing lies in "".
bool LiesIn(std::string_view path, std::string_view folder);
// Where it really lies; as it is written when that cannot be found.
std::string RealPathOr(FileSystem& files, const std::string& path);
// "'/x' is not published: " and why.
std::string NotPublished(const std::string& path, const std::string& why);

}  // namespace zeb
