// CartChooser: a cart's number, typed or chosen from the list of those that there are, with their lines to
// tell them apart.
#pragma once

#include <QWidget>
#include <functional>
#include <memory>
#include <string>

#include "app/desktop/Desk.h"
#include "platform/CartStore.h"

class QDialog;
class QLineEdit;

namespace zeb {

class CartChooser : public QWidget {
 public:
  explicit CartChooser(Desk& desk);

  std::string Text() const;  // as typed
  void SetText(const std::string& text);
  // Chosen from the list (not while it is typed).
  std::function<void(const std::string& number)> onChosen;

  // What takes the keys; for a caption's buddy and for its name.
  QLineEdit* Input() const { return input_; }

  // More are not listed; the search narrows them down.
  static constexpr int kMostListed = 500;

 private:
  void OpenList();
  void Fill(QDialog& dialog, const CartTable& carts);

  Desk& desk_;
  QLineEdit* const input_;
};

}  // namespace zeb
