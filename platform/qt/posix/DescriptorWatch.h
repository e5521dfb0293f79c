// DescriptorWatch: calls somebody, as an event of the loop, while a descriptor can be read from or written
// to. Private to platform/qt.
//
// Destroying it, also from inside its callback, ends the calls; that must be done before the descriptor is
// closed. What the callback throws is reported as the loop's other events are.
#pragma once

#include <functional>

class QSocketNotifier;

namespace zeb {

class QtLoop;

class DescriptorWatch {
 public:
  enum Kind { kRead, kWrite };
  DescriptorWatch(QtLoop& loop, int descriptor, Kind kind, std::function<void()> callback);
  ~DescriptorWatch();
  DescriptorWatch(const DescriptorWatch&) = delete;
  DescriptorWatch& operator=(const DescriptorWatch&) = delete;

 private:
  QSocketNotifier* notifier_;
};

}  // namespace zeb
