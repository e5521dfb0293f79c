// ImportDialog: what a file of settings would change, to be looked through before it is taken over; passwords
// are not shown.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "app/desktop/Desk.h"
#include "app/desktop/dialogs/DialogFrame.h"
#include "core/RegDifference.h"

class QLabel;
class QTreeWidget;

namespace zeb {

class ImportDialog : public DialogFrame {
 public:
  // `differences` is what `changes` would do.
  ImportDialog(Desk& desk, std::string path, std::shared_ptr<const RegChanges> changes,
               std::vector<RegDifference> differences);

  static constexpr std::size_t kMostShown = 5000;  // rows; how many more there are is said

 private:
  void Show();
  void Import();

  Desk& desk_;
  const std::string path_;
  const std::shared_ptr<const RegChanges> changes_;
  std::vector<RegDifference> differences_;
  QLabel* summary_;
  QTreeWidget* list_;
};

}  // namespace zeb
