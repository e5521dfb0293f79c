#include "dialogs/DABOutputDialog.h"

#include <cstdint>

#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::int32_t kMaxLabelCharacters = 128;

}  // namespace

std::string CheckDABProperties(std::string_view simpleTextFormat, std::string_view maxNumberChars) {
  if (simpleTextFormat.find_first_of("\r\n") != std::string_view::npos)
    return "The Eureka 147 DAB protocol that ZEB uses does not allow Carriage Returns inside DLS messages";
  const std::int32_t most = LeadingInteger(maxNumberChars);
  if (most < 0 || most > kMaxLabelCharacters) return "The maximum number of characters must be from 1 to 128";
  return {};
}

}  // namespace zeb
