// The table of output types that this build has. A new output type adds its line in OutputTable.cpp.
#pragma once

#include "core/clsZEBService.h"

namespace zeb {

// Makes outputs that work in `environment`, which must outlive them.
OutputFactory MakeOutputFactory(Environment& environment);

}  // namespace zeb
