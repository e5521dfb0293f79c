// The dialogs that menus and windows open. Each opens at once and returns; what it changes is stored and
// taken over when its OK is pressed, and told in a box when that cannot be done.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/desktop/Desk.h"
#include "app/frmService.h"
#include "core/clsZEBTemplate.h"

namespace zeb {

using ServicePtr = std::shared_ptr<frmService>;

void OpenServiceSettings(Desk& desk, const ServicePtr& window);
// The list of the six types, then the new output's own dialog; nothing is added before its OK.
void OpenAddOutput(Desk& desk, const ServicePtr& window);
void OpenOutputProperties(Desk& desk, const ServicePtr& window, const OutputPtr& output);
// Asks first; what was removed can be brought back for a while (Undo).
void AskRemoveOutput(Desk& desk, const ServicePtr& window, const OutputPtr& output);
// One attempt at what the output works with, without publishing; its steps in a dialog.
void OpenOutputTest(Desk& desk, const ServicePtr& window, const OutputPtr& output);
void OpenRemoveService(Desk& desk);
void OpenManualEntry(Desk& desk, const ServicePtr& window);
// The template builder. `text` is what is in it at first; `accepted` gets what OK leaves. `window` gives the
// items for the live result; null: a sample song.
void OpenFormatCreator(Desk& desk, QWidget* parent, const ServicePtr& window, const std::string& text,
                       std::function<void(const std::string& text)> accepted);
void OpenOptions(Desk& desk);

}  // namespace zeb
