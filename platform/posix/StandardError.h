// StandardError: the place of the journal, written to without the C++ stream, whose lock a thread that hangs
// would keep.
#pragma once

#include "platform/LineWriter.h"

namespace zeb {

// A LineSink. Waits for the reader; false when there is none, or when the file in its place cannot
// grow. On any thread.
bool WriteToStandardError(const LogLine& line);

}  // namespace zeb
