// HTTPOutputDialog: the HTTP output's property dialog, without the drawing. For the desktop program.
#pragma once

#include <optional>
#include <string>

#include "core/PropertySheet.h"
#include "outputs/http/clsZEBHTTPOutput.h"

namespace zeb {

PropertySheet HTTPSheet(clsZEBHTTPOutput& draft);

// The message to show instead of closing the dialog; "" when all is well. `chosen`: nothing while no request
// type is.
std::string CheckHTTPProperties(std::optional<HTTPRequestType> chosen);

}  // namespace zeb
