// OutputDialog: an output's property dialog. For those that open it: on an output that runs, and on a new
// one.
#pragma once

#include <functional>
#include <string>

#include "app/desktop/dialogs/Dialogs.h"
#include "platform/Result.h"

class QWidget;

namespace zeb {

struct OutputDraft {
  OutputType type = OutputType::kFile;
  OutputPtr draft;
  OutputPtr running;  // null: it is new
  std::string name;   // "Serial 1", for the title
  std::function<Outcome(clsZEBTemplate& draft)> store;
};
void OpenOutputDialog(Desk& desk, const ServicePtr& window, OutputDraft edited);

// The test of an output as it is set now, its steps in a dialog in front of `parent`.
void OpenTestOf(Desk& desk, QWidget* parent, OutputType type, const clsZEBTemplate& output,
                const std::string& name);

// "Serial 1 of Demo FM".
std::string FullName(const ServicePtr& window, const std::string& output);

}  // namespace zeb
