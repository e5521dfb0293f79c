// StoredHive: a settings hive that the machine keeps.
#pragma once

#include <chrono>
#include <functional>

#include "platform/SettingsHive.h"

namespace zeb {

class StoredHive : public SettingsHive {
 public:
  // Called each time after this object has stored something, when all of it is kept for good.
  std::function<void()> onStored;
  // From now on a store that somebody else has locked is waited for this long.
  virtual void SetPatience(std::chrono::milliseconds patience) = 0;
};

}  // namespace zeb
