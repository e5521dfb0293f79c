// FirstRunPage: what stands in the frame while there is no service: what to do first.
#pragma once

#include <QWidget>
#include <functional>

namespace zeb {

class FirstRunPage : public QWidget {
 public:
  explicit FirstRunPage(QWidget* parent);

  std::function<void()> onAdd, onImport, onManual;
};

}  // namespace zeb
