#include "outputs/http/HttpAddress.h"

#include <algorithm>

#include "text/LetterCase.h"
#include "text/Numbers.h"
#include "text/OneLine.h"

namespace zeb {
namespace {

constexpr std::size_t kLongest = 2048;
constexpr std::int32_t kHttpPort = 80, kHttpsPort = 443, kHighestPort = 65535;

Failure Wrong(std::string_view text, const std::string& why) {
  return {"'" + OneLine(text) + "' " + why + "; write an address such as http://www.station.fm/now.html"};
}

bool IsPort(std::string_view text) {
  return !text.empty() && text.size() <= 5 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::string HttpAddress::Host() const {
  const std::int32_t usual = target.tls ? kHttpsPort : kHttpPort;
  return target.port == usual ? HostForHeader(target.host) : ServerText(target);
}

Result<HttpAddress> ParseHttpAddress(std::string_view text) {
  const auto written = text;
  if (text.size() > kLongest) return Wrong(written, "is too long");
  if (WithoutControls(text) != text || text.find(' ') != std::string_view::npos)
    return Wrong(written, "holds blanks or control characters");
  HttpAddress address;
  const std::size_t scheme = text.find("://");
  const std::string name = LowerCase(text.substr(0, scheme == std::string_view::npos ? 0 : scheme));
  if (name != "http" && name != "https") return Wrong(written, "begins with neither http:// nor https://");
  address.target.tls = name == "https";
  address.target.port = address.target.tls ? kHttpsPort : kHttpPort;
  text.remove_prefix(scheme + 3);
  text = text.substr(0, text.find('#'));
  std::string_view host = text.substr(0, text.find_first_of("/?"));
  const std::string_view rest = text.substr(host.size());
  if (host.find('@') != std::string_view::npos)
    return Failure{"an address has a user and perhaps a password in it, which are not sent; leave them out"};
  const std::size_t bracket = host.rfind(']');
  const std::size_t colon = host.rfind(':');
  if (colon != std::string_view::npos && (bracket == std::string_view::npos || colon > bracket)) {
    const std::string_view port = host.substr(colon + 1);
    address.target.port = IsPort(port) ? LeadingDigits(port) : 0;
    if (address.target.port < 1 || address.target.port > kHighestPort)
      return Wrong(written, "has no port from 1 to 65535");
    host = host.substr(0, colon);
  }
  if (host.empty()) return Wrong(written, "names no server");
  address.target.host = std::string(host);
  address.path = (rest.empty() || rest.front() != '/' ? "/" : "") + std::string(rest);
  return address;
}

}  // namespace zeb
