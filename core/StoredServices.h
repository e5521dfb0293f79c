// StoredServices: services and outputs in the store, added and removed there: by number, with what follows
// moved down. For commands; a publisher that runs on the store takes the changes over when it reads it again.
//
// Called inside a transaction of the hive, so that what is read and what is written belong together. The
// failures are found before anything is written; what the hive cannot do throws SettingsError.
#pragma once

#include <cstdint>
#include <string>

#include "core/OutputName.h"
#include "platform/Result.h"
#include "platform/SettingsHive.h"

namespace zeb {

class StoredServices {
 public:
  StoredServices(SettingsHive& hive, std::string settingsRoot);

  int Count() const;
  // A failure, which says what there is, for a number that no service has.
  Outcome Check(int service) const;
  std::string Key(int service) const;
  std::string KeyOf(int service, OutputType type) const;

  // A failure when another service than `except` has the control port: one of the two would stay silent.
  Outcome CheckControlPort(std::int32_t port, int except = 0) const;

  // Makes the number of a further service, without any values.
  Result<int> Add();
  Outcome Remove(int service);

  int OutputCount(int service, OutputType type) const;
  // As for a service.
  Outcome Check(int service, const OutputName& output) const;
  Result<OutputName> AddOutput(int service, OutputType type);
  Outcome RemoveOutput(int service, const OutputName& output);
  // Removes its values, so that it can be stored anew at its place.
  Outcome EmptyOutput(int service, const OutputName& output);

 private:
  void RemoveValues(const std::string& typeKey, int number, bool moveLater);

  SettingsHive& hive_;
  const std::string root_;
};

}  // namespace zeb
