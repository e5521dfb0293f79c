// ServiceEditor: settings of a running service, changed by a person while it is on air.
//
// Each change is stored first, all of it or nothing, and then taken over: only what is set otherwise is
// stopped and started. Before anything is written, what others (zebctl, an import) have stored meanwhile is
// taken over too, so that neither is lost. Nothing here waits for an output: a new one starts in a task of
// its own, and tells by its status how that went. Nothing here asks or shows: the reasons are for whoever
// called. On a failure nothing is stored and everything goes on as it was, unless the reason says otherwise.
//
// A dialog edits a draft: an output that publishes nothing, with the settings of the one that runs.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "app/frmService.h"
#include "core/OutputName.h"
#include "core/StoredServices.h"
#include "platform/Result.h"

namespace zeb {

class ServiceEditor {
 public:
  explicit ServiceEditor(std::shared_ptr<frmService> window);

  // `before` is what the person saw, `after` what became of it; only where the two differ is anything
  // changed. `intervals`: those of the periodic updates that are others now, in seconds.
  using UpdateIntervals = std::map<OutputType, std::int32_t>;
  Outcome ApplySettings(const ServiceSettings& before, const ServiceSettings& after,
                        const UpdateIntervals& intervals = {});

  // Null for a type that is not built, and for an output that is not the service's.
  OutputPtr NewDraft(OutputType type) const;
  OutputPtr DraftOf(const OutputPtr& running) const;

  // Behind the last of its type; where it stands.
  Result<OutputName> AddOutput(OutputType type, clsZEBTemplate& draft);
  // `running` is the very output that the draft was made of; a failure when it has been changed or removed by
  // somebody else meanwhile.
  Outcome ReplaceOutput(const OutputPtr& running, clsZEBTemplate& draft);
  Outcome RemoveOutput(const OutputPtr& running);
  // 0: no updates without new information.
  Outcome SetUpdateInterval(OutputType type, std::int32_t seconds);

 private:
  // `write` changes what is stored and gives the line for the journal; or why it cannot.
  Outcome Change(const std::function<Result<std::string>(StoredServices&)>& write);
  Result<OutputName> Place(const OutputPtr& running) const;
  int Number() const { return window_->service().ServiceNumber(); }

  const std::shared_ptr<frmService> window_;
};

}  // namespace zeb
