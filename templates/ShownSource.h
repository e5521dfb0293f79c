// ShownSource: says of a text that an output shows what it was made of.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "core/Shown.h"
#include "templates/ZEB_Class_Functions.h"

namespace zeb {

inline Shown::Source ShownSource(std::string templateText, std::string simpleText,
                                 const ValueEncoding& values) {
  return {std::make_shared<const std::string>(std::move(templateText)), std::move(simpleText), values.escape,
          values.urlEncode};
}

}  // namespace zeb
