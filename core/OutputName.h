// OutputName: an output as people write it: its type's name and its number, "File1".
#pragma once

#include <string>
#include <string_view>

#include "core/OutputTypes.h"
#include "platform/Result.h"

namespace zeb {

struct OutputName {
  OutputType type = OutputType::kFile;
  int number = 1;  // from 1

  std::string Text() const { return std::string(NameOf(type)) + std::to_string(number); }
};

// Letter case does not matter. The reasons say what there is.
Result<OutputType> ParseOutputType(std::string_view text);
Result<OutputName> ParseOutputName(std::string_view text);

}  // namespace zeb
