// TemplatePreview: what a template would become now, or with an item made up for looking at it. Publishes
// nothing. For the desktop program.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "core/ServiceSnapshot.h"
#include "platform/Time.h"

namespace zeb {

enum class PreviewItem { kPresent, kSong, kAdvert, kEmpty };  // in the order of the list
inline constexpr std::array<std::string_view, 4> kPreviewItemNames = {"present item", "sample song",
                                                                      "sample advert", "empty"};

// A made-up station's items. kPresent is a real station's business: it gives the sample song.
SnapshotPtr SampleSnapshot(PreviewItem item, WallTime now);

struct TemplateResultText {
  std::string text;            // its beginning, line ends as "↵"
  std::size_t characters = 0;  // of all of it
};
inline constexpr std::size_t kMostPreviewedBytes = 1024 * 1024;  // of a template
inline constexpr std::size_t kMostResultCharacters = 300;        // that are shown

// Nothing: the template is too long to be tried after each key.
std::optional<TemplateResultText> PreviewTemplate(std::string_view templateText,
                                                  const ServiceSnapshot& snapshot);

// What one tag would become, for a list: its beginning, in one line.
std::string PreviewValue(std::string_view tag, const ServiceSnapshot& snapshot);

}  // namespace zeb
