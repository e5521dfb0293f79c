#include "dialogs/HTTPOutputDialog.h"

namespace zeb {

std::string CheckHTTPProperties(std::optional<HTTPRequestType> chosen) {
  return chosen ? std::string() : "You musy choose a Request Type";
}

}  // namespace zeb
