#include "core/OutputName.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "text/LetterCase.h"
#include "text/NearestNames.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

std::string OfferedTypes() {
  std::vector<std::string_view> names;
  names.reserve(std::size(kOutputTypesOffered));
  for (const OutputType type : kOutputTypesOffered) names.push_back(NameOf(type));
  return JoinedWithOr(names);
}

}  // namespace

Result<OutputType> ParseOutputType(std::string_view text) {
  for (const OutputType type : kOutputTypesOffered)
    if (EqualIgnoringAsciiCase(NameOf(type), text)) return type;
  return Failure{"'" + std::string(text) + "' is no type of output: there are " + OfferedTypes()};
}

Result<OutputName> ParseOutputName(std::string_view text) {
  const std::size_t end = std::min(text.find_first_of("0123456789"), text.size());
  const auto number = WholeNumber<int>(text.substr(end));
  const Result<OutputType> type = ParseOutputType(text.substr(0, end));
  if (!type || !number || *number < 1)
    return Failure{"'" + std::string(text) + "' is no output: write its type (" + OfferedTypes() +
                   ") and its number, as in File1"};
  return OutputName{type.Value(), *number};
}

}  // namespace zeb
