#include "dialogs/WebOutputDialog.h"

#include <string_view>
#include <utility>

#include "dialogs/FileOutputDialog.h"
#include "outputs/web/clsZEBWebOutput.h"
#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr FieldText kFields[] = {
    {.group = "FTP server", .name = "FTPServerName", .caption = "Server:"},
    {.name = "FTPServerPort", .caption = "Port:"},
    {.name = "FTPUsername", .caption = "User name:"},
    {.name = "FTPPassword", .caption = "Password:"},
    {.name = "FTPPassiveMode", .caption = "Passive mode"},
    {.name = "FTPUseTLS", .caption = "Encrypted (TLS)"},
    {.name = "FTPCaFile",
     .caption = "Certificate authorities:",
     .enabledBy = "FTPUseTLS",
     .help = "A PEM file; empty: those of the system."},
    {.name = "FTPTimeoutSeconds", .caption = "Time limit of each step (seconds):"},
    {.name = "FTPKeepConnectionSeconds",
     .caption = "Keep the connection for (seconds):",
     .help = "For the next update; 0: it is closed after each."},
    {.group = "Proxy", .name = "FTPUseProxy", .caption = "Use a proxy server"},
    {.name = "FTPProxyName", .caption = "Proxy server:", .enabledBy = "FTPUseProxy"},
    {.name = "FTPProxyPort", .caption = "Proxy port:", .enabledBy = "FTPUseProxy"},
};

// The first that is empty, else the one whose text is wrong; the pairs when none of these.
std::string ServerFieldAtFault(const Entries& entries) {
  if (LeadingInteger(EntryOf(entries, "Pairs")) < 1) return "Pairs";
  for (const char* name : {"FTPServerName", "FTPUsername", "FTPPassword", "FTPServerPort"})
    if (EntryOf(entries, name).empty()) return name;
  return "FTPServerName";
}

std::string ProxyFieldAtFault(const Entries& entries) {
  return EntryOf(entries, "FTPProxyName").empty() ? "FTPProxyName" : "FTPProxyPort";
}

}  // namespace

std::string UpdateRulesSummary(const clsFileParameters& pair) {
  if (!pair.UseUpdateRules) return "Always";
  constexpr std::string_view kLetters = "ACJSVU";  // in the order of the flags' bits
  std::string letters;
  for (std::size_t bit = 0; bit < kLetters.size(); ++bit)
    if ((pair.UpdateRulesFlags & (1 << bit)) != 0) letters += kLetters[bit];
  return letters.empty() ? "No item" : letters;
}

WebOutputCheck CheckWebOutput(int pairs, const std::string& server, const std::string& port,
                              const std::string& user, const std::string& password, bool useProxy,
                              const std::string& proxyName, const std::string& proxyPort) {
  if (pairs < 1) return {"You have not added any files."};
  if (server.empty() || user.empty() || password.empty() || port.empty())
    return {"You must enter a valid FTP Server, Username and Password"};
  if (server.find_first_of("/\\: ") != std::string::npos)
    return {
        "The FTP Server name is not valid - it must not contain any of the following characters: "
        "/\\<space>:\n"
        "Make sure you have only entered the name or IP address of the FTP Server, and have not entered the "
        "folder (i.e /upload/)\n"
        "You also do not need to add the ftp:// prefix"};
  if (useProxy && (proxyName.empty() || proxyPort.empty()))
    return {"You must give the details of the Proxy server to use", false};
  return {};
}

PropertySheet WebSheet(clsZEBWebOutput& draft) {
  PropertySheet sheet;
  sheet.caption = "Web Output Properties";
  AddPairFields(sheet, draft);
  AddFields(sheet, WebSettingTable(), draft.settings, kFields);
  sheet.check = [](const Entries& entries) -> std::optional<SheetProblem> {
    const auto entry = [&](const char* name) { return EntryOf(entries, name); };
    WebOutputCheck check = CheckWebOutput(
        LeadingInteger(entry("Pairs")), entry("FTPServerName"), entry("FTPServerPort"), entry("FTPUsername"),
        entry("FTPPassword"), entry("FTPUseProxy") == "1", entry("FTPProxyName"), entry("FTPProxyPort"));
    if (check.message.empty()) return std::nullopt;
    return SheetProblem{std::move(check.message),
                        check.warning ? MessageIcon::kWarning : MessageIcon::kInformation,
                        check.warning ? ServerFieldAtFault(entries) : ProxyFieldAtFault(entries)};
  };
  return sheet;
}

}  // namespace zeb
