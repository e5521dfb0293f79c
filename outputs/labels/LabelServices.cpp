#include "outputs/labels/LabelServices.h"

#include "text/Encodings.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {

Result<std::vector<LabelService>> ReadLabelServices(std::string_view iniBytes) {
  const std::string text = DecodeFile(iniBytes, DetectFileEncoding(iniBytes));
  std::vector<LabelService> services;
  int number = 0;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = TrimBlanks(TakeLine(rest));
    const std::string where = "line " + std::to_string(++number) + ": ";
    if (line.empty() || line[0] == ';' || line[0] == '#') continue;
    if (line[0] == '[') {
      if (line.back() != ']') return Failure{where + "a section's name has no ]"};
      const std::string name(TrimBlanks(line.substr(1, line.size() - 2)));
      for (const LabelService& service : services)
        if (EqualIgnoringCase(service.name, name))
          return Failure{std::string(where).append("the service '").append(name).append("' is there twice")};
      services.push_back({name, "", ""});
      continue;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return Failure{where + "neither [service] nor key=value"};
    if (services.empty()) return Failure{where + "a key before the first [service]"};
    const std::string_view key = TrimBlanks(line.substr(0, equals));
    const std::string value(TrimBlanks(line.substr(equals + 1)));
    if (EqualIgnoringCase(key, "Password"))
      services.back().password = value;
    else if (EqualIgnoringCase(key, "FileName"))
      services.back().fileName = value;
    else
      return Failure{where + "there is no key '" + std::string(key) + "'"};
  }
  if (services.empty()) return Failure{"no service is named"};
  for (const LabelService& service : services)
    if (service.name.empty() || service.password.empty() || service.fileName.empty())
      return Failure{"the service '" + service.name + "' needs a name, a Password and a FileName"};
  return services;
}

}  // namespace zeb
