// FileOutputDialog: the file output's property dialog, without the drawing. For the desktop program. Nothing
// is checked on OK: an output without pairs publishes nothing, and says so.
#pragma once

#include "core/PropertySheet.h"
#include "outputs/file/clsZEBFileOutput.h"

namespace zeb {

// Its pairs are in the field "Pairs".
PropertySheet FileSheet(clsZEBFileOutput& draft);

// What is set for all pairs of an output; the web output has it too.
void AddPairFields(PropertySheet& sheet, PairSwitches& draft);

}  // namespace zeb
