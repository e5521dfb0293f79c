// FieldChooser: the left side of the template builder: whose fields, the fields with the values that they
// have now, and a search among them.
#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "core/ServiceSnapshot.h"
#include "dialogs/TemplateBuilder.h"

class QComboBox;
class QLineEdit;
class QTreeWidget;

namespace zeb {

class FieldChooser : public QWidget {
 public:
  FieldChooser();

  // Shows the values of these items.
  void SetItems(SnapshotPtr items);
  // A field was added, by double click, by key or by button: what is to be put into the template.
  std::function<void(const std::string& insertion)> onAdd;

 private:
  BuilderSlot Slot() const;
  void FillFields();
  void ShowValues();
  void Search();
  void Add();

  QComboBox* slots_;
  QLineEdit* search_;
  QTreeWidget* fields_;
  SnapshotPtr items_;
};

}  // namespace zeb
