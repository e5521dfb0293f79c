#include "dialogs/ServiceSettingsDialog.h"

#include <optional>

#include "dialogs/ServiceEntry.h"

namespace zeb {
namespace {

constexpr ChoiceText kSources[] = {{"0", "Tolvan(TM) v3.5 or higher"},
                                   {"11", "Dallet(TM) v5.0"},
                                   {"12", "Dallet(TM) v5.1 or higher"},
                                   {"51", "Generic Text Import"}};
constexpr ChoiceText kCartLines[] = {{"1", "Cart Line 1"}, {"2", "Cart Line 2"}, {"3", "Cart Line 3"}};
constexpr int kPortsOffered = 20;

constexpr std::string_view kFromControlLink = "InfoSourceType=0", kFromFile = "InfoSourceType=11|12|51";

constexpr FieldText kFields[] = {
    {.group = "Service", .name = "ServiceName", .caption = "Name of the service:"},
    {.name = "NoPictureFileName", .caption = "Picture when an item has none:"},
    {.name = "LoggingPath",
     .caption = "Folder for logs:",
     .kind = FieldKind::kFolder,
     .help = "What the serial and DAB outputs have sent; empty: it is not logged."},
    {.group = "Information",
     .name = "InfoSourceType",
     .caption = "How will this Service get it's information:",
     .choices = kSources},
    {.name = "TolvanTCPControlPort",
     .caption = "Control port:",
     .kind = FieldKind::kChoice,
     .enabledBy = kFromControlLink,
     .help = "Port 1 is TCP port 6901 of this computer, and so on."},
    {.name = "InfoSourceFileName",
     .caption = "Information file:",
     .kind = FieldKind::kFile,
     .enabledBy = kFromFile},
    {.name = "FileInformation", .caption = kFileInformation, .kind = FieldKind::kNote},
    {.group = "When playing an item unless told otherwise, use the cart lines as:",
     .name = "CartItemNameLine",
     .caption = "Title:",
     .choices = kCartLines},
    {.name = "CartArtist1Line", .caption = "Artist 1:", .choices = kCartLines},
    {.name = "CartArtist2Line", .caption = "Artist 2:", .choices = kCartLines},
    {.group = "Updates",
     .name = "InstantUpdate",
     .caption = "Update the Outputs at once when information arrives",
     .help = "Otherwise 1.5 seconds after the last information, so that a burst is published once."},
    {.name = "UpdateOnTimingChange", .caption = "Update the Outputs if only the timing of an item changes"},
    {.name = "ProcessPresenterUpdates", .caption = "Update the Outputs if the Show Presenter Changes"},
    {.name = "ProcessShowUpdates", .caption = "Update the Outputs if the Show Title Changes"},
    {.name = "NumberUpdatesOnServer", .caption = "Length of the history on web servers:"},
    {.name = "UpdateDisplayInterval", .caption = "Refresh the display every (seconds):"},
    {.group = "Travel",
     .name = "TravelFlagActivateString",
     .caption = "Titles of travel news begin with:",
     .help = "Such an item raises the travel flag; empty: none does."},
    {.name = "TravelFlagDeactivateTimeout", .caption = "End the travel flag after (seconds):"},
    {.group = "Bounce", .name = "UseBounce", .caption = "Bounce all information straight on to another ZEB"},
    {.name = "BounceServer", .caption = "Computer Name/TCP-IP Address:", .enabledBy = "UseBounce"},
    {.name = "BouncePort", .caption = "Port:", .kind = FieldKind::kChoice, .enabledBy = "UseBounce"},
};

void OfferPorts(PropertyField& field, bool none) {
  if (none) field.choices.push_back({"0", "None"});
  for (int port = 1; port <= kPortsOffered; ++port)
    field.choices.push_back({std::to_string(port), "Port " + std::to_string(port)});
}

PropertyField& AddServiceField(PropertySheet& sheet, ServiceSettings& draft, const FieldText& text) {
  if (text.kind == FieldKind::kNote) return AddField(sheet, text);
  return AddField(sheet, ServiceSettingTable(), draft, text);
}

std::optional<SheetProblem> CheckService(const Entries& entries) {
  const Outcome name = CheckServiceName(EntryOf(entries, "ServiceName"));
  if (name) return std::nullopt;
  return SheetProblem{name.Reason(), MessageIcon::kExclamation, "ServiceName"};
}

}  // namespace

ServiceDraft DraftOf(const clsZEBService& service) {
  ServiceDraft draft{service.settings};
  for (std::size_t i = 0; i < kOutputTypesOffered.size(); ++i)
    draft.intervals[i] = service.OutputUpdateInterval(static_cast<std::int32_t>(kOutputTypesOffered[i]));
  return draft;
}

PropertySheet ServiceSheet(ServiceDraft& draft) {
  PropertySheet sheet;
  sheet.caption = "Service Settings";
  for (const FieldText& text : kFields) {
    PropertyField& field = AddServiceField(sheet, draft.settings, text);
    if (field.name == "TolvanTCPControlPort") OfferPorts(field, true);
    if (field.name == "BouncePort") OfferPorts(field, false);
  }
  for (std::size_t i = 0; i < kOutputTypesOffered.size(); ++i) {
    const std::string type(NameOf(kOutputTypesOffered[i]));
    PropertyField& field = AddField(
        sheet,
        {.group = i == 0 ? "Update the outputs also every (seconds; 0: only when information arrives)" : "",
         .name = "UpdateInterval"},
        {.name = "UpdateInterval",
         .kind = SettingInfo::Kind::kNumber,
         .entry = {.is = SettingIs::kNumber, .least = 0, .most = kLongestUpdateInterval},
         .byDefault = "0"},
        &draft.intervals[i]);
    field.name += type;
    field.caption = type + ":";
  }
  sheet.check = CheckService;
  return sheet;
}

SourceFileChooser ChooserFor(std::string_view infoSourceType) {
  if (infoSourceType == "11")
    return {"Choose your Dallet 5.0 file...", "Dallet 5.0 Files (*.WSX)|*.WSX|All files (*.*)|*.*"};
  if (infoSourceType == "12")
    return {"Choose your Dallet 5.1 file...", "Dallet 5.1 Files (*.WSX)|*.WSX|All files (*.*)|*.*"};
  if (infoSourceType == "51")
    return {"Choose your RCS MasterControl Billboard file...",
            "RCS MasterControl Billboard (*.ASC)|*.ASC|All files (*.*)|*.*"};
  return {};
}

}  // namespace zeb
