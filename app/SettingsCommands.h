// SettingsCommands: `zebctl settings ...`: shows and changes settings from a shell.
//
//   list [KEY] | get KEY NAME | set KEY NAME DATA [--number] | delete KEY [NAME] | import FILE.reg |
//   export [KEY]
//
// KEY is a path below the machine-wide hive when it begins with "Software\" (in any case), else below the
// settings root; "/" is taken for "\".
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/SettingsHive.h"

namespace zeb {

// `arguments` are those behind the word "settings". The exit status: 0, 1 when it failed, 2 for wrong usage.
// A failure is one line on `err` that begins with "zebctl: ". Nothing is thrown.
int RunSettingsCommand(SettingsHive& hive, FileSystem& files, const std::vector<std::string>& arguments,
                       std::ostream& out, std::ostream& err);

// The command's part of the help text.
extern const char kSettingsUsage[];

}  // namespace zeb
