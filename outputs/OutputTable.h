// The table of output types that this build has: what makes an output, and the control through which it
// works. A new type adds its row in OutputTable.cpp.
#pragma once

#include <memory>

#include "core/clsZEBService.h"

namespace zeb {

// Makes outputs that work in `environment`, which must outlive them.
OutputFactory MakeOutputFactory(Environment& environment);

// What an output of the type is to be started with; null for one that needs no control, or whose control this
// platform does not have.
std::shared_ptr<Control> MakeControl(Environment& environment, OutputType type);

}  // namespace zeb
