// ServiceSettingsDialog: the dialog of a service's settings, without the drawing. For the desktop program.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/PropertySheet.h"
#include "core/clsZEBService.h"

namespace zeb {

// What the dialog edits: the service's settings, and how often the outputs of each type are updated without
// new information (seconds, in the order in which the types are offered).
struct ServiceDraft {
  ServiceSettings settings;
  std::array<std::int32_t, kOutputTypesOffered.size()> intervals{};
};

ServiceDraft DraftOf(const clsZEBService& service);

// Of the field "FileInformation", a note, nothing is entered: what the chosen file holds stands there.
PropertySheet ServiceSheet(ServiceDraft& draft);
inline constexpr std::string_view kFileInformation = "File Information:";

// How the file of a source type is chosen; without a title for a type that reads none.
struct SourceFileChooser {
  std::string_view title, filters;
};
SourceFileChooser ChooserFor(std::string_view infoSourceType);

}  // namespace zeb
