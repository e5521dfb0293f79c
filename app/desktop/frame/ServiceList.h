// ServiceList: all services as rows for a view. A row is put together when the view asks for it, and again
// only after the service has changed, so what is out of sight costs nothing.
//
// Owned by the overview. On the loop's thread; told of changes by the frame, in its tick.
#pragma once

#include <QAbstractListModel>
#include <QString>
#include <memory>
#include <vector>

#include "app/frmMain.h"

namespace zeb {

class ServiceList : public QAbstractListModel {
 public:
  enum Role { kNowRole = Qt::UserRole, kTroubleRole, kSeverityRole };

  explicit ServiceList(const frmMain& main);

  // There are other services, or in another order.
  void ListChanged();
  void ServiceChanged(int number);

  std::shared_ptr<frmService> At(int row) const;  // null: there is no such row
  int RowOf(const std::shared_ptr<frmService>& service) const;

  int PutTogether() const;  // rows that are as their service is; the others have not been asked for since

  int rowCount(const QModelIndex& parent = {}) const override;
  // DisplayRole is the name, and costs little for any row.
  QVariant data(const QModelIndex& index, int role) const override;

 private:
  struct Row {
    std::shared_ptr<frmService> service;
    bool fresh = false;  // what follows is as the service is
    QString now, trouble;
    Severity severity = Severity::kOk;
  };
  const Row& Fresh(int row) const;

  const frmMain& main_;
  mutable std::vector<Row> rows_;
};

}  // namespace zeb
