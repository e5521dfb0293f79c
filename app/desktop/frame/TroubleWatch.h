// TroubleWatch: which outputs are in trouble, for the status bar, the tray's menu and its balloons. Asks only
// the services of which something has changed. What passes by itself within a few seconds, as every update
// does, is no trouble.
//
// Owned by the frame; no widget.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/frmMain.h"
#include "platform/Time.h"

namespace zeb {

class TroubleWatch {
 public:
  static constexpr Duration kLasts = std::chrono::seconds(3);

  struct News {
    std::vector<Trouble> begun, ended;
  };

  // Something of it may be otherwise. Cheap: asked is later.
  void Changed(const std::shared_ptr<frmService>& service) { changed_.insert(service); }
  // Looks at what has changed, and at what has not lasted long enough yet.
  News Look(const frmMain& main, MonotonicTime now);

  std::size_t Count() const;                         // outputs in trouble
  bool AllIsWell() const { return known_.empty(); }  // nor is there one that may become so
  // In the order of services; at most so many.
  std::vector<Trouble> Worst(std::size_t most) const;

 private:
  struct Known {
    Trouble trouble;
    MonotonicTime since{};
    bool told = false;
  };
  using ByOutput = std::map<std::string, Known>;
  void LookAt(ByOutput& known, std::vector<Trouble> troubles, MonotonicTime now, News& news);

  std::set<std::shared_ptr<frmService>> changed_;
  std::map<std::shared_ptr<frmService>, ByOutput> known_;
};

}  // namespace zeb
