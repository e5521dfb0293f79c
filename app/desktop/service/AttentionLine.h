// AttentionLine: one line that says which outputs fail, and tells it to screen readers when one begins to.
// Not there while all is well.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <vector>

#include "app/desktop/service/ElidedLabel.h"
#include "app/desktop/service/GridModel.h"

namespace zeb {

class AttentionLine : public ElidedLabel {
 public:
  explicit AttentionLine(QWidget* parent = nullptr);
  void Take(const std::vector<GridRow>& outputs);  // as OutputRows makes them
  // An output began to fail; tells screen readers, unless somebody else is to be told.
  std::function<void()> onBegins;

 private:
  std::set<std::uint64_t> failing_;  // keys
};

}  // namespace zeb
