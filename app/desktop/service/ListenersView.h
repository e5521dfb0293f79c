// ListenersView: what listeners see of each output, and of the chosen one as a whole, with what its character
// set lacks marked and a counter against the room that it has.
#pragma once

#include <QWidget>
#include <optional>

#include "app/desktop/service/GridModel.h"
#include "app/desktop/service/ListenersText.h"
#include "app/frmService.h"

class QLabel;
class QTextEdit;

namespace zeb {

class GridView;

class ListenersView : public QWidget {
 public:
  explicit ListenersView(QWidget* parent = nullptr);
  void Take(const StationState& state, const clsZEBService& service);
  void Choose(std::uint64_t key);  // the output that is chosen elsewhere

 private:
  // What is shown of the chosen output; drawn again only when it differs.
  struct Detail {
    QString caption, pages;
    ListenersText text;
    bool operator==(const Detail&) const = default;
  };
  void ShowChosen();
  void Draw(const Detail& detail);

  GridModel model_;
  GridView* grid_;
  QLabel* caption_;
  QTextEdit* text_;
  std::vector<std::pair<std::uint64_t, Detail>> details_;
  std::optional<Detail> drawn_;
};

}  // namespace zeb
