// FirstRunPage: what stands in the frame while there is no service: what to do first.
#pragma once

#include <QWidget>
#include <functional>

namespace zeb {

class FirstRunPage : public QWidget {
 public:
  // `demo`: the demo station is at hand.
  FirstRunPage(QWidget* parent, bool demo);

  std::function<void()> onAdd, onDemo, onImport, onManual;
};

}  // namespace zeb
