#include "app/LintCommand.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include "dialogs/TemplateLint.h"

namespace zeb {

int RunLintCommand(FileSystem& files, const LintOptions& options, std::ostream& out, std::ostream& err) {
  bool clean = true;
  boost::json::array list;
  for (const std::string& path : options.templates) {
    const Result<std::string> bytes = files.Read(path, kMaxFileBytes);
    if (!bytes) {
      clean = false;
      err << "zebctl: " << bytes.Reason() << std::endl;
      continue;
    }
    for (const LintFinding& found :
         LintTemplate(bytes.Value(), options.as.empty() ? path : options.as, options.escape)) {
      clean = false;
      if (options.json)
        list.push_back(
            {{"file", path}, {"line", found.line}, {"column", found.column}, {"text", found.text}});
      else
        out << path << ':' << found.line << ':' << found.column << ": " << found.text << '\n';
    }
  }
  if (options.json) out << boost::json::serialize(boost::json::object{{"findings", std::move(list)}}) << '\n';
  out.flush();
  if (out) return clean ? 0 : 1;
  err << "zebctl: cannot write to standard output" << std::endl;
  return 1;
}

}  // namespace zeb
