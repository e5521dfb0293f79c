// Splash: the small window that says what the program is doing while it starts and while it waits to end.
#pragma once

#include <QWidget>
#include <string>

class QLabel;

namespace zeb {

class Splash : public QWidget {
 public:
  Splash();

  // The upper text ("" for none) and what is being done. Shows the window in the middle of the screen.
  void Tell(const std::string& text, const std::string& action);

 private:
  void paintEvent(QPaintEvent* event) override;

  QLabel* const text_;
  QLabel* const action_;
};

}  // namespace zeb
