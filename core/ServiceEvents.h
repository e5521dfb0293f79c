// ServiceEvents: what the window that owns a service is told. All on the loop's thread; those about one
// output come from inside its task. Whoever is told must not wait.
#pragma once

#include "core/OutputTypes.h"

namespace zeb {

struct UpdateRecord;
struct UpdateRun;

class ServiceEvents {
 public:
  virtual ~ServiceEvents() = default;
  virtual void ServiceOpened() {}
  virtual void ServiceClosed() {}
  virtual void OutputUpdateStarting(int /*index*/, OutputType) {}
  virtual void OutputUpdateUpdating(int /*index*/, OutputType) {}
  virtual void OutputUpdateUpdated(int /*index*/, OutputType) {}
  virtual void OutputUpdateFinished(int /*index*/, OutputType) {}
  virtual void UpdateStarted() {}  // of one type
  virtual void UpdateFinished() {}

  virtual void OutputStarted(int /*index*/, OutputType) {}  // or failed to

  // An output has ended its run in an update.
  virtual void OutputRunEnded(const UpdateRecord&, const UpdateRun&) {}
  // Every output of an update has ended its run.
  virtual void UpdateThrough(const UpdateRecord&) {}
  // An update has taken ten seconds and is not through. Told once.
  virtual void UpdateWaits(const UpdateRecord&) {}
};

}  // namespace zeb
