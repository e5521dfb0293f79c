// DABOutputDialog: the DAB output's property dialog, without the drawing. For the desktop program.
#pragma once

#include <string>
#include <string_view>

#include "core/PropertySheet.h"

namespace zeb {

class clsZEBDABOutput;
PropertySheet DABSheet(clsZEBDABOutput& draft);

// The message to show instead of closing the dialog; "" when all is well.
std::string CheckDABProperties(std::string_view simpleTextFormat, std::string_view maxNumberChars);

}  // namespace zeb
