// ServiceEntry: services and outputs made and removed by hand, with settings as a person enters them: by the
// names of the manual, without the output's number ("URL", "SourceFileName1").
//
// Each operation is one transaction of the hive: what is entered is checked first, and nothing is stored
// unless all of it is right. They block as files and the hive do, so they are for programs that do nothing
// else meanwhile. What the hive cannot do throws SettingsError.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "core/OutputName.h"
#include "core/StoredServices.h"
#include "platform/FileSystem.h"
#include "platform/Result.h"
#include "platform/SettingsHive.h"

namespace zeb {

struct EnteredSetting {
  std::string name, value;
};
// "name=value"; the value may hold "=".
Result<EnteredSetting> SplitEntered(const std::string& text);

// Why a service cannot be called so.
Outcome CheckServiceName(const std::string& name);

class ServiceEntry {
 public:
  // All outlive this object. Files with relative names are looked for in the data folder.
  ServiceEntry(SettingsHive& hive, FileSystem& files, std::string dataFolder, std::string settingsRoot);

  using Settings = std::vector<EnteredSetting>;
  Result<int> AddService(const std::string& name, const Settings& settings);  // its number
  Outcome RenameService(int service, const std::string& name);
  Outcome RemoveService(int service);
  Result<OutputName> AddOutput(int service, OutputType type, const Settings& settings);
  Outcome RemoveOutput(int service, const OutputName& output);

 private:
  struct Value;
  Result<std::vector<Value>> CheckService(const std::string& name, const Settings& settings) const;
  Result<std::vector<Value>> CheckOutput(OutputType type, const Settings& settings) const;
  Outcome CheckFile(const Value& value) const;
  Outcome CheckControlPort(const std::vector<Value>& values) const;
  template <class Given>
  Given Together(const std::function<Given()>& work);

  SettingsHive& hive_;
  FileSystem& files_;
  const std::string dataFolder_;
  StoredServices stored_;
};

}  // namespace zeb
