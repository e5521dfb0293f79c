// HttpAddress: an address of the web as an operator writes it ("https://www.station.fm/now.html"), taken
// apart for a request.
#pragma once

#include <string>
#include <string_view>

#include "outputs/http/RequestExchange.h"
#include "platform/Result.h"

namespace zeb {

struct HttpAddress {
  RequestTarget target;
  std::string path;  // with its query, from "/" on; what is behind "#" is no server's

  // For a request's Host line.
  std::string Host() const;
};

// The reason names the address and says what is wrong with it.
Result<HttpAddress> ParseHttpAddress(std::string_view text);

}  // namespace zeb
