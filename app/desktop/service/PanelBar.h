// PanelBar: the service's panels in a line: its information source, who has control, the relay (while there
// is one), and what is done with the information that came.
#pragma once

#include <QWidget>

#include "status/StationState.h"

namespace zeb {

class ElidedLabel;

class PanelBar : public QWidget {
 public:
  explicit PanelBar(QWidget* parent = nullptr);
  void Take(const StationState& state, bool relays);

 private:
  ElidedLabel *source_, *netControl_, *bounce_, *information_;
};

}  // namespace zeb
