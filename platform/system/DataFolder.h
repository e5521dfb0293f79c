// DataFolder: where the programs keep their settings and files: --home, else $ZEB_HOME, else /var/lib/zeb
// when it exists and is writable, else $XDG_DATA_HOME/zeb, else ~/.local/share/zeb.
#pragma once

#include <string>

#include "platform/Result.h"

namespace zeb {

// What the choice depends on; empty texts count as not given.
struct DataFolderPlaces {
  std::string home;         // --home
  std::string zebHome;      // $ZEB_HOME
  std::string system;       // /var/lib/zeb when it can be used
  std::string xdgDataHome;  // $XDG_DATA_HOME
  std::string userHome;     // the user's home folder
};

// Reads the environment of this process and the user's entry in the password file.
DataFolderPlaces FindDataFolderPlaces(const std::string& home);
// The folder's absolute path, without a separator at its end. It may not exist yet.
Result<std::string> ChooseDataFolder(const DataFolderPlaces& places);

}  // namespace zeb
