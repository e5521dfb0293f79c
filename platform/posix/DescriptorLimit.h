// DescriptorLimit: how many files and sockets the process may have open.
#pragma once

namespace zeb {

// Raises the limit to the highest that the system lets this process have: the usual one is made for programs
// that open a few files. Where that is refused, it stays.
void RaiseDescriptorLimit();

// Whether `descriptor`, which a connection has just been given, leaves the half of the reserve that is for
// files alone: they are given from the lowest on.
bool LeavesDescriptors(int descriptor);

}  // namespace zeb
