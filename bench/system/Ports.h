// Ports that nothing on this machine listens on at the moment.
#pragma once

namespace zeb::bench {

// The one below the first of so many in a row: service i takes it + i. Throws when there are none.
int PortsFor(int services);

}  // namespace zeb::bench
