// ServiceHead: the first lines of a service's window: what is on air, what follows, who presents.
#pragma once

#include <QWidget>

#include "status/StationState.h"

class QLabel;

namespace zeb {

class ElidedLabel;

class ServiceHead : public QWidget {
 public:
  explicit ServiceHead(QWidget* parent = nullptr);
  void Take(const StationState& state);

 private:
  ElidedLabel *onAir_, *details_, *next_, *coming_, *presenter_;
  QLabel* travel_;  // the panel "travel"
};

}  // namespace zeb
