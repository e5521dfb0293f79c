// OutputSheets: the property dialog of any output.
#pragma once

#include "core/OutputTypes.h"
#include "core/PropertySheet.h"
#include "core/clsZEBTemplate.h"

namespace zeb {

// Of a draft of the type; without fields for a type that is not built. With what every output has.
PropertySheet SheetOf(OutputType type, clsZEBTemplate& draft);

}  // namespace zeb
