// ServicesOverview: the list of all services at the frame's side: mark, word, name and what is on air, with a
// field that leaves only those whose name holds a text. Enter or a double click opens a service.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "app/desktop/frame/ServiceList.h"

class QLabel;
class QLineEdit;
class QListView;
class QSortFilterProxyModel;

namespace zeb {

class ServicesOverview : public QWidget {
 public:
  explicit ServicesOverview(const frmMain& main);

  ServiceList& List() { return *list_; }
  std::shared_ptr<frmService> Selected() const;  // null: none
  void Select(const std::shared_ptr<frmService>& service);
  void FocusFind();
  void ShowTexts();  // in the chosen language

  std::function<void(const std::shared_ptr<frmService>&)> onOpen;

 private:
  void Open(const QModelIndex& index);

  ServiceList* const list_;
  QSortFilterProxyModel* const shown_;
  QLabel* const caption_;
  QLineEdit* const find_;
  QListView* const view_;
};

}  // namespace zeb
