#include "core/clsZEBTemplate.h"

#include <string_view>
#include <utility>

#include "platform/SettingsHive.h"

namespace zeb {

namespace {

struct StatusLook {
  std::string_view text;
  std::uint32_t colour;
};

StatusLook LookOf(std::int32_t status) {
  switch (status) {
    case kStatusOff:
      return {"Off", kColourYellow};
    case kStatusConnecting:
      return {"Connecting", kColourBlack};
    case kStatusConnected:
      return {"Connected", kColourBlack};
    case kStatusLoggingOn:
      return {"Logging On", kColourBlack};
    case kStatusOK:
      return {"OK", kColourBlack};
    case kStatusError:
      return {"Error", kColourRed};
    default:
      return {"Unknown", kColourRed};
  }
}

constexpr const char* kSettingsKey = "\\Template";
constexpr const char* kSimpleTextFormat = "SimpleTextFormat";

}  // namespace

bool clsZEBTemplate::StartOutput(std::shared_ptr<Control> control) {
  control_ = std::move(control);
  return true;
}

bool clsZEBTemplate::StopOutput() {
  control_.reset();
  return true;
}

bool clsZEBTemplate::PrepareOutput(clsZEBService&) {
  return false;
}

bool clsZEBTemplate::UpdateOutput(clsZEBService&) {
  SetStatus(kStatusOK);
  return false;
}

bool clsZEBTemplate::FinishOutput(clsZEBService&) {
  return false;
}

void clsZEBTemplate::StoreOutputInformation(int serviceNumber, int outputIndex) {
  environment_.hive.WriteText(environment_.ServiceKey(serviceNumber) + kSettingsKey,
                              kSimpleTextFormat + std::to_string(outputIndex), simpleTextFormat_);
}

void clsZEBTemplate::GetOutputInformation(int serviceNumber, int outputIndex) {
  simpleTextFormat_ = environment_.hive.ReadText(environment_.ServiceKey(serviceNumber) + kSettingsKey,
                                                 kSimpleTextFormat + std::to_string(outputIndex),
                                                 std::string(kDefaultSimpleTextFormat));
  SetStatus(kStatusOK);
}

std::string clsZEBTemplate::GetStatusString(std::uint32_t& colour) {
  const StatusLook look = LookOf(Status());
  colour = look.colour;
  return std::string(look.text);
}

}  // namespace zeb
