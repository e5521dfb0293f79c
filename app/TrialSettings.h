// TrialSettings: finds out what settings a service or an output has, and whether it takes given values, by
// letting one read and write them in a store of their own. So nothing here knows a setting by name, except
// for the few that only the service reads.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "core/OutputTypes.h"
#include "platform/Environment.h"
#include "platform/Result.h"
#include "platform/SettingsHive.h"

namespace zeb {

using NamedValues = std::vector<std::pair<std::string, std::string>>;  // name and value, as they are given

class TrialSettings {
 public:
  // `scratch` is an empty store. Both outlive this object.
  TrialSettings(const Environment& environment, SettingsHive& scratch);

  // What is to be stored in the key of a service that is set so. Fails on a name that there is not, and on a
  // value that would be taken for another one.
  Result<std::vector<SettingsValue>> Service(const NamedValues& given);
  // What is to be stored in the type's key of a service for output `number` that is set so. `given` has names
  // without the output's number; those of pairs end with the pair's. A template must be there.
  Result<std::vector<SettingsValue>> Output(OutputType type, int number, const NamedValues& given);

 private:
  Environment environment_;
  SettingsHive& scratch_;
};

}  // namespace zeb
