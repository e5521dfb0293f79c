// JournalView: the last lines of the journal, of this service or of all, following what is added.
#pragma once

#include <QWidget>
#include <cstdint>
#include <string>

#include "app/desktop/service/GridModel.h"
#include "dashboard/JournalTail.h"

class QCheckBox;

namespace zeb {

class GridView;

class JournalView : public QWidget {
 public:
  explicit JournalView(const JournalTail& journal, QWidget* parent = nullptr);
  // What is new since the last time; cheap when nothing is.
  void Draw(const std::string& serviceName);

 private:
  void BeginAnew();
  bool IsWanted(const std::string& line) const;

  const JournalTail& journal_;
  GridModel model_;
  GridView* grid_;
  QCheckBox *all_, *follow_;
  std::string name_;
  bool atEnd_ = true;        // the last line was seen when somebody last scrolled
  std::uint64_t drawn_ = 0;  // lines of the journal, as it counts them
};

}  // namespace zeb
