// RunningStations: the services of frmMain, as requests see them (dashboard/Stations.h).
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/frmMain.h"
#include "dashboard/Stations.h"
#include "platform/Environment.h"

namespace zeb {

class RunningStations : public Stations {
 public:
  // Both outlive this object. `reload` reads all settings again.
  RunningStations(Environment& environment, frmMain& main, std::function<void()> reload);
  ~RunningStations() override;

  int Count() const override;
  StationState State(int number) const override;
  SnapshotPtr Present(int number) const override;
  const ServiceSettings& Settings(int number) const override;
  CartStore& Carts() override;
  void Take(int number, const std::string& message) override;
  void Update(int number) override;
  void Reload() override;
  std::optional<Result<std::vector<TestStep>>> Test(int number, const OutputName& output) override;
  Outcome Remove(int number) override;

 private:
  Environment& environment_;
  frmMain& main_;
  std::function<void()> reload_;
  using Tested = std::set<OutputPtr>;
  const std::shared_ptr<Tested> tested_ = std::make_shared<Tested>();  // those whose test is under way
};

}  // namespace zeb
