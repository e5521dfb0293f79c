#include "dialogs/WebOutputDialog.h"

#include <string_view>

namespace zeb {

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

}  // namespace zeb
