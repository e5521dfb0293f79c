// SourcePreview: what a playout system's file holds, told while it is being chosen. The file is read by a
// worker, a moment after the last change of its name; a share that hangs leaves everything else alone.
//
// Owned by whoever shows it. Calls `tell` on the loop's thread, not after its end.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/Environment.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"

namespace zeb {

class SourcePreview {
 public:
  SourcePreview(Environment& environment, std::function<void(const std::string& text)> tell);

  // `name` "": there is nothing to tell. The same type and name again: as it stands.
  void Show(std::int32_t type, const std::string& name);

 private:
  void Read();

  Environment& environment_;
  const std::function<void(const std::string&)> tell_;
  std::int32_t type_ = 0;
  std::string name_;
  Timer delay_;
  Epoch epoch_;  // of the name that is shown
};

}  // namespace zeb
