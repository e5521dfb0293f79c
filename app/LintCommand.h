// LintCommand: `zebctl lint`: what would surprise in templates (dialogs/TemplateLint.h), a line for each.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

namespace zeb {

struct LintOptions {
  std::vector<std::string> templates;  // files
  std::string escape;                  // a word of text/ValueEscapes.h
  std::string as;                      // the page's name; "": the template's own
  bool json = false;
};

// "FILE:LINE:COLUMN: text" on `out`; a file that cannot be read is named on `err`. The exit status: 0 when
// nothing was found, else 1.
int RunLintCommand(FileSystem& files, const LintOptions& options, std::ostream& out, std::ostream& err);

}  // namespace zeb
