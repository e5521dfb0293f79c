// Puts a finished file in the place of another one. Private to platform/windows.
#pragma once

#include <string>

namespace zeb {

// Both names as SystemPath gives them, in one folder. In one step where the system can: who reads finds the
// old file or the new one. Where it cannot replace what others have open (another computer's disk, say), that
// is set aside first, and for a moment there is neither; only after a tenth of a second of patience.
// False, with GetLastError: all is as it was.
bool PutInPlace(const std::wstring& from, const std::wstring& to);

}  // namespace zeb
