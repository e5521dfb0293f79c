// What every TCP connection is set to: small pieces leave at once, and a dead peer is found out. Private to
// platform/qt.
#pragma once

namespace zeb {

// Options that the system refuses stay as they are.
void TuneSocket(int descriptor);

}  // namespace zeb
