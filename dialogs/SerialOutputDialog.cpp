#include "dialogs/SerialOutputDialog.h"

#include <cstdint>

#include "dialogs/EscapeValuesField.h"
#include "outputs/serial/clsZEBSerialOutput.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::int32_t kHighestPort = 16;

constexpr ChoiceText kHandshakings[] = {{"0", kHandshakingTexts[0]},
                                        {"1", kHandshakingTexts[1]},
                                        {"2", kHandshakingTexts[2]},
                                        {"3", kHandshakingTexts[3]}};

constexpr FieldText kFields[] = {
    {.group = "Port",
     .name = "CommPort",
     .caption = "Com Port:",
     .help = "Which device it is, is set in the options."},
    {.name = "Settings", .caption = "Settings:", .help = "Speed, parity, data bits and stop bits."},
    {.name = "Handshaking", .caption = "Handshaking:", .choices = kHandshakings},
    {.group = "What is sent", .name = "SimpleTextFormat", .caption = "Format:", .kind = FieldKind::kTemplate},
    {.name = "AlternateStrings",
     .caption = "Alternates, one per line:",
     .kind = FieldKind::kTemplateList,
     .help = "One of them is chosen at random. FILE: and a name takes them from a schedule file."},
    {.name = "AlternateStringsWhenEmpty", .caption = "Use the alternates only when the main string is empty"},
    {.name = "AppendCharsFormat", .caption = "Append:", .help = "Such as {0D}{0A}."},
    {.name = "MaxNumberChars", .caption = "Maximum characters (0: no limit):"},
    {.name = "CharacterSet", .caption = "Character set:"},
    {.group = "Travel flag", .name = "TravelActivateFormat", .caption = "On:"},
    {.name = "TravelDeactivateFormat", .caption = "Off:"},
    {.group = "Sending", .name = "UseSlowSend", .caption = kSlowSendCaption},
};

}  // namespace

std::string CheckSerialProperties(std::string_view commPort, std::string_view settings) {
  const std::int32_t port = LeadingInteger(commPort);
  if (port < 1 || port > kHighestPort) return "You must enter a Com Port number from 1 to 16";
  if (TrimBlanks(settings).empty()) return "You must enter a set of Serial Settings such as '9600,n,8,1'";
  return {};
}

PropertySheet SerialSheet(clsZEBSerialOutput& draft) {
  PropertySheet sheet;
  sheet.caption = "Serial Output Properties";
  AddFields(sheet, SerialSettingTable(), draft.settings, kFields);
  AddEscapeField(sheet, SerialSettingTable(), draft.settings);
  sheet.check = [](const Entries& entries) -> std::optional<SheetProblem> {
    const std::string port = EntryOf(entries, "CommPort");
    std::string message = CheckSerialProperties(port, EntryOf(entries, "Settings"));
    if (message.empty()) return EscapeProblem(entries);
    const bool isPort = !CheckSerialProperties(port, "-").empty();
    return SheetProblem{std::move(message), MessageIcon::kExclamation, isPort ? "CommPort" : "Settings"};
  };
  return sheet;
}

}  // namespace zeb
