// StandardError: the place of the journal, written to without the C++ stream, whose lock a thread that hangs
// would keep.
#pragma once

#include "platform/LineWriter.h"

namespace zeb {

// A LineSink. Waits for the reader; false when there is none, or when the file in its place cannot
// grow. On any thread.
bool WriteToStandardError(const LogLine& line);

// A LineSink that never waits: false, and nothing is written, when the line would have to (the reader is
// behind), or when nobody can know (a file on a disk, a terminal). Null where standard error is of a kind for
// which it would always be so. What it opens stays open to the end of the process.
LineSink TryStandardError();

}  // namespace zeb
