// QtMessages: what Qt itself has to say goes into the journal, instead of to standard error directly, where a
// reader that hangs would hold up the thread that says it.
#pragma once

#include "platform/LineWriter.h"

namespace zeb {

// From now on, for the whole process; `journal` must outlive every use of Qt.
void SendQtMessagesTo(LineWriter& journal);

}  // namespace zeb
