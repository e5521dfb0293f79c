// Screenshots: a picture of every window and dialog, light and dark, for the manual and for who reviews them.
#pragma once

#include <functional>
#include <string>

#include "app/desktop/Desk.h"

namespace zeb {

class MainWindow;

// Opens one after the other, writes NAME.png and NAME-dark.png into the folder (which is made), then calls
// `done`. What cannot be written is a line in the journal.
void TakeScreenshots(Desk& desk, MainWindow& window, const std::string& folder, std::function<void()> done);

}  // namespace zeb
