// DescriptorLimit: how many files and sockets the process may have open.
#pragma once

namespace zeb {

// Raises the limit to the highest that the system lets this process have: the usual one is made for programs
// that open a few files. Where that is refused, it stays.
void RaiseDescriptorLimit();

}  // namespace zeb
