// DialogTest: a station with an output of each type, and what tests of dialogs look at: the store, and the
// dialog that is open.
#pragma once

#include <string>

#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/PropertyDialog.h"
#include "tests/desktop/DesktopTest.h"

namespace zeb {

class DialogTest : public DesktopTest {
 protected:
  void SetUp() override;

  // Everything that is stored of the station (or, with "", of the program), a value a line.
  std::string Stored(const std::string& below = "\\Service1");
  OutputPtr Running(OutputType type) const { return main.Window(1)->service().Output(type, 1); }
  void OpenOutput(OutputType type);
  PropertyDialog* Dialog() { return Open<PropertyDialog>(); }
  // Puts the text into the field, as somebody would: typed, chosen or ticked.
  void EnterInto(const std::string& name, const std::string& text);
  std::string Focused();  // the object name of what has the focus in the dialog
};

}  // namespace zeb
