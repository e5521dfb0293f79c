#include "dialogs/HTTPOutputDialog.h"

#include <utility>

#include "dialogs/EscapeValuesField.h"

namespace zeb {
namespace {

constexpr ChoiceText kTypes[] = {{"0", "GET"}, {"1", "POST"}};

constexpr FieldText kFields[] = {
    {.group = "Request", .name = "RequestType", .caption = "Request type:", .choices = kTypes},
    {.name = "URL", .caption = "URL (path on the server):"},
    {.name = "SimpleTextFormat", .caption = "Format:", .kind = FieldKind::kTemplate},
    {.name = "CharacterSet", .caption = "Character set:"},
    {.group = "Server", .name = "ServerName", .caption = "Server:"},
    {.name = "ServerPort", .caption = "Port:"},
    {.name = "UseTLS", .caption = "Encrypted (TLS)"},
    {.name = "HTTPAuthenticate", .caption = "Use authentication"},
    {.name = "HTTPUsername", .caption = "User name:", .enabledBy = "HTTPAuthenticate"},
    {.name = "HTTPPassword", .caption = "Password:", .enabledBy = "HTTPAuthenticate"},
    {.name = "VerifyURL",
     .caption = "Look for the title at:",
     .help = "An address where the public sees it; empty: it is not looked at."},
};

// What the list gives for nothing, or for a number that is none of them, is no choice.
std::optional<HTTPRequestType> TypeChosen(const std::string& entered) {
  for (const HTTPRequestType type : {kGetRequest, kPostRequest})
    if (entered == std::to_string(type)) return type;
  return std::nullopt;
}

}  // namespace

std::string CheckHTTPProperties(std::optional<HTTPRequestType> chosen) {
  return chosen ? std::string() : "You musy choose a Request Type";
}

PropertySheet HTTPSheet(clsZEBHTTPOutput& draft) {
  PropertySheet sheet;
  sheet.caption = "HTTP Output Properties";
  AddFields(sheet, HTTPSettingTable(), draft.settings, kFields);
  AddEscapeField(sheet, HTTPSettingTable(), draft.settings);
  sheet.check = [](const Entries& entries) -> std::optional<SheetProblem> {
    std::string message = CheckHTTPProperties(TypeChosen(EntryOf(entries, "RequestType")));
    if (message.empty()) return EscapeProblem(entries);
    return SheetProblem{std::move(message), MessageIcon::kExclamation, "RequestType"};
  };
  return sheet;
}

}  // namespace zeb
