// LabelServices: the services that a label server takes labels for, as its ini file names them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Result.h"

namespace zeb {

struct LabelService {
  std::string name, password, fileName;
};

// A section each, keys Password and FileName. The reason names the line.
Result<std::vector<LabelService>> ReadLabelServices(std::string_view iniBytes);

}  // namespace zeb
