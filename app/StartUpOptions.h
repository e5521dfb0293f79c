// The options of the command line, as zebd and zeb take them: the old ones ("/MINIMISED", in any case,
// anywhere in the line) and the GNU style ones.
#pragma once

#include <string>
#include <vector>

#include "app/CommandTable.h"
#include "platform/Result.h"

namespace zeb {

// Where the data folder is looked for when nobody names it, for helps.
#ifdef _WIN32
#define ZEB_USUAL_DATA_FOLDERS "%ZEB_HOME%, %ProgramData%\\ZEB, %LOCALAPPDATA%\\ZEB"
#else
#define ZEB_USUAL_DATA_FOLDERS "$ZEB_HOME, /var/lib/zeb, ~/.local/share/zeb"
#endif

struct StartUpOptions {
  bool preserveTempFiles = false;
  bool minimised = false;
  bool noPreviousCheck = false;
  bool silent = false;
  bool schedule = false;
  std::string importFile;   // /IMPORT=FILE
  std::string commandLine;  // the whole line, for the debug level
  std::string home;         // --home
  bool showVersion = false;
  bool showHelp = false;
};

// Fails on an unknown option, naming it.
Result<StartUpOptions> ReadStartUpOptions(const std::vector<std::string>& arguments);

// What `program` (zebd or zeb) takes, for shells that complete it.
CommandTable StartUpTable(const std::string& program);

}  // namespace zeb
