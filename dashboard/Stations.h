// Stations: the running publisher as requests see it: pictures of its services, and what can be done to them.
//
// Whoever runs the publisher implements it (app/RunningStations). Numbers run from 1 to Count.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/OutputName.h"
#include "core/clsZEBService.h"
#include "outputs/test/OutputTest.h"
#include "platform/CartStore.h"
#include "platform/Result.h"
#include "status/StationState.h"

namespace zeb {

class Stations {
 public:
  virtual ~Stations() = default;

  virtual int Count() const = 0;
  virtual StationState State(int number) const = 0;
  virtual SnapshotPtr Present(int number) const = 0;  // its items at this moment
  virtual const ServiceSettings& Settings(int number) const = 0;
  virtual CartStore& Carts() = 0;

  // A message as a playout system sends it, whoever has control.
  virtual void Take(int number, const std::string& message) = 0;
  virtual void Update(int number) = 0;  // its outputs show what is on, new or not
  virtual void Reload() = 0;            // reads the settings again, soon
  // In a task. Nothing: there is no such output. Fails while another test of it is under way.
  virtual std::optional<Result<std::vector<TestStep>>> Test(int number, const OutputName& output) = 0;
  // The service goes, and later ones move down one number.
  virtual Outcome Remove(int number) = 0;

  // A service's picture is another; with 0 the list of services is. Called often.
  std::function<void(int number)> onChanged;
};

}  // namespace zeb
