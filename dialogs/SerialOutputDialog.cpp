#include "dialogs/SerialOutputDialog.h"

#include <cstdint>

#include "text/Numbers.h"

namespace zeb {
namespace {

constexpr std::int32_t kHighestPort = 16;

}  // namespace

std::string CheckSerialProperties(std::string_view commPort, std::string_view settings) {
  const std::int32_t port = LeadingInteger(commPort);
  if (port < 1 || port > kHighestPort) return "You must enter a Com Port number from 1 to 16";
  if (TrimBlanks(settings).empty()) return "You must enter a set of Serial Settings such as '9600,n,8,1'";
  return {};
}

}  // namespace zeb
