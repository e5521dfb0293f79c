// TemplateResult: the lines below a template's edit box: what it would become, a moment after the person has
// stopped typing, and what is wrong with it.
//
// With the service's present items, followed as they change; or with made-up ones, chosen from a list.
#pragma once

#include <QWidget>
#include <functional>

#include "app/desktop/dialogs/Dialogs.h"
#include "dialogs/TemplatePreview.h"
#include "platform/EventLoop.h"

class QComboBox;
class QLabel;

namespace zeb {

class TemplateTextEdit;

class TemplateResult : public QWidget {
 public:
  // `edit` outlives it. `window` null: a sample song. `offersItems`: with the list.
  TemplateResult(Desk& desk, ServicePtr window, const TemplateTextEdit& edit, bool offersItems = false);

  void Edited();  // the text has changed
  // Of the chosen items, as they stand now.
  SnapshotPtr Snapshot() const;
  std::function<void()> onItems;  // other items are chosen, or the present ones have changed

  static constexpr Duration kDelay = std::chrono::milliseconds(150);
  static constexpr Duration kWatchInterval = std::chrono::seconds(1);

 private:
  PreviewItem Chosen() const;
  bool HasStation() const;
  void Watch();
  void ShowResult();
  void ShowRemarks();

  Desk& desk_;
  const ServicePtr window_;
  const TemplateTextEdit& edit_;
  QComboBox* items_ = nullptr;
  QLabel* result_;
  QLabel* remarks_;
  int itemsSeen_ = -1;
  Timer delay_, watch_;
};

}  // namespace zeb
