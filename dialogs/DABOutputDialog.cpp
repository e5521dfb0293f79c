#include "dialogs/DABOutputDialog.h"

#include <cstdint>

#include "dialogs/EscapeValuesField.h"
#include "outputs/dab/clsZEBDABOutput.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::int32_t kMaxLabelCharacters = 128;

constexpr FieldText kFields[] = {
    {.group = "Label server", .name = "ServerName", .caption = "Server:"},
    {.name = "ServerPort", .caption = "Port:"},
    {.name = "ServiceName", .caption = "Service name:"},
    {.name = "ServicePassword", .caption = "Password:"},
    {.name = "PollSeconds",
     .caption = "Poll interval (seconds):",
     .help = "Kept with the settings; the service's update interval of its DAB outputs decides."},
    {.group = "What is sent", .name = "SimpleTextFormat", .caption = "Format:", .kind = FieldKind::kTemplate},
    {.name = "AlternateStrings",
     .caption = "Alternates, one per line:",
     .kind = FieldKind::kTemplateList,
     .help = "One of them is chosen at random. FILE: and a name takes them from a schedule file."},
    {.name = "AlternateStringsWhenEmpty", .caption = "Use the alternates only when the main text is empty"},
    {.name = "DefaultText", .caption = "When there is nothing else:"},
    {.name = "AppendCharsFormat", .caption = "Append:"},
    {.name = "MaxNumberChars", .caption = "Maximum characters (at most 128):"},
    {.name = "CharacterSet", .caption = "Character set:"},
};

}  // namespace

std::string CheckDABProperties(std::string_view simpleTextFormat, std::string_view maxNumberChars) {
  if (simpleTextFormat.find_first_of("\r\n") != std::string_view::npos)
    return "The Eureka 147 DAB protocol that ZEB uses does not allow Carriage Returns inside DLS messages";
  const std::int32_t most = LeadingInteger(maxNumberChars);
  if (most < 0 || most > kMaxLabelCharacters) return "The maximum number of characters must be from 1 to 128";
  return {};
}

PropertySheet DABSheet(clsZEBDABOutput& draft) {
  PropertySheet sheet;
  sheet.caption = "DAB Output Properties";
  AddFields(sheet, DABSettingTable(), draft.settings, kFields);
  AddEscapeField(sheet, DABSettingTable(), draft.settings);
  sheet.check = [](const Entries& entries) -> std::optional<SheetProblem> {
    const std::string format = EntryOf(entries, "SimpleTextFormat");
    std::string message = CheckDABProperties(format, EntryOf(entries, "MaxNumberChars"));
    if (message.empty()) return EscapeProblem(entries);
    const bool isFormat = !CheckDABProperties(format, "").empty();
    return SheetProblem{std::move(message), MessageIcon::kExclamation,
                        isFormat ? "SimpleTextFormat" : "MaxNumberChars"};
  };
  return sheet;
}

}  // namespace zeb
