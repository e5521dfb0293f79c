#include <QApplication>

#include "app/desktop/dialogs/Dialogs.h"
#include "app/desktop/dialogs/PairDialog.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/WholeTree.h"

namespace zeb {
namespace {

class TemplateDialogsTreeTest : public DesktopTest {
 protected:
  void SetUp() override {
    Station("Demo FM", {{"TolvanTCPControlPort", "0"}});
    Load();
    Send(1, "SET_CURRENT_ITEM ITitle=\"Waterloo\" Artist1=\"ABBA\" IType=7");
  }
};

TEST_F(TemplateDialogsTreeTest, TheBuilder) {
  ExpectWholeTree([this] {
    OpenFormatCreator(desk, nullptr, main.Window(1), "[(<ZEB_NOW_ITEMTYPE>=Song)<ZEB_PREVIOUS2_ITEMNAME>",
                      {});
    Pass(std::chrono::milliseconds(150));
    return Named("FormatCreator");
  });
}

TEST_F(TemplateDialogsTreeTest, ThePairDialogOfBothModes) {
  for (const FileParametersMode mode : {FileParametersMode::kFile, FileParametersMode::kWeb})
    ExpectWholeTree([this, mode] {
      clsFileParameters pair;
      pair.UseUpdateRules = true;
      OpenPairDialog(desk, nullptr, main.Window(1), mode, pair, {});
      Pass(std::chrono::milliseconds(150));
      return Named("FileParameters");
    });
}

TEST_F(TemplateDialogsTreeTest, ManualEntry) {
  ExpectWholeTree([this] {
    OpenManualEntry(desk, main.Window(1));
    Settle();
    return Named("ManualEntry");
  });
}

}  // namespace
}  // namespace zeb
