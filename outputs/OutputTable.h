// The table of output types that this build has: what makes an output, and the control through which it
// works. A new type adds its row in OutputTable.cpp.
#pragma once

#include <memory>

#include "core/SettingFields.h"
#include "core/clsZEBService.h"
#include "outputs/test/OutputTest.h"

namespace zeb {

// Makes outputs that work in `environment`, which must outlive them.
OutputFactory MakeOutputFactory(Environment& environment);

// What an output of the type is to be started with; null for one that needs no control, or whose control this
// platform does not have.
std::shared_ptr<Control> MakeControl(Environment& environment, OutputType type);

// What can be set for an output of the type: for itself, and for each of its pairs where it has some. Empty
// for a type that is not built.
struct OutputSettings {
  SettingList own, ofPair;
};
OutputSettings SettingsOf(OutputType type);

// The test of an output of the type, as it is set now; null for a type that is not built. It holds nothing of
// the output.
std::unique_ptr<OutputTest> MakeOutputTest(Environment& environment, OutputType type,
                                           const clsZEBTemplate& output);

}  // namespace zeb
