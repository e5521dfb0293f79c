#include "status/StationState.h"

#include <algorithm>

namespace zeb {

std::string_view WordOf(Severity severity) {
  switch (severity) {
    case Severity::kOk:
      return "ok";
    case Severity::kBusy:
      return "busy";
    case Severity::kOff:
      return "off";
    case Severity::kFailing:
      break;
  }
  return "failing";
}

Severity StationState::Worst() const {
  Severity worst = elsewhere ? Severity::kOff : source.healthy ? Severity::kOk : Severity::kFailing;
  for (const OutputState& output : outputs) worst = std::max(worst, output.severity);
  return worst;
}

}  // namespace zeb
