// AdditionalCopy: a picture or other file of an item, put beside a page. On a worker thread.
#pragma once

#include <string>

#include "outputs/file/FileJob.h"
#include "outputs/file/MediaRules.h"
#include "outputs/file/PublishedNames.h"

namespace zeb {

struct AdditionalCopy {
  std::string source, target;
};

// Which files may be taken, and which names they may get.
struct MediaTools {
  const MediaRules& rules;
  PublishedNames& names;
};

// Puts it in its place in one step. With `always` off, an equal file (same size and time) is left
// alone. The reason, when it fails or is refused.
//
// A file that is there and is named like a page (IsPageName) is never replaced, unless ZEB put it there since
// it was started and nobody has changed it since. Into the data folder, where settings and templates are,
// only pictures go, under names of pictures.
std::string CopyAdditional(const FileTools& tools, const MediaTools& media, const AdditionalCopy& copy,
                           bool always);

}  // namespace zeb
