// WebOutputDialog: the web output's property dialog, without the drawing. For the desktop program.
#pragma once

#include <string>

#include "core/PropertySheet.h"
#include "outputs/file/clsFileParameters.h"

namespace zeb {

class clsZEBWebOutput;
// Its pairs are in the field "Pairs".
PropertySheet WebSheet(clsZEBWebOutput& draft);

// What a pair's "Update?" cell says.
std::string UpdateRulesSummary(const clsFileParameters& pair);

struct WebOutputCheck {
  std::string message;  // "" when all is well
  bool warning = true;  // else an information box
};
WebOutputCheck CheckWebOutput(int pairs, const std::string& server, const std::string& port,
                              const std::string& user, const std::string& password, bool useProxy,
                              const std::string& proxyName, const std::string& proxyPort);

}  // namespace zeb
