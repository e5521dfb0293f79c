#include "dashboard/AccessRules.h"

#include <algorithm>

#include "sources/PeerRanges.h"
#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

// Of "[::1]:6980" and "radio.lan:6980"; a text that is no such thing stays as it is, and is nobody's name.
std::string_view WithoutPort(std::string_view host) {
  const std::size_t colon = host.starts_with('[') ? host.find("]:") : host.find(':');
  if (colon == std::string_view::npos) return host;
  return host.substr(0, host.starts_with('[') ? colon + 1 : colon);
}

std::string_view HostOf(std::string_view hostAndPort) {
  std::string_view host = WithoutPort(hostAndPort);
  if (host.ends_with('.')) host.remove_suffix(1);
  return host;
}

bool IsAddress(std::string_view host) {
  if (host.size() > 2 && host.starts_with('[') && host.ends_with(']')) {
    host = host.substr(1, host.size() - 2);
    return host.find(':') != std::string_view::npos && ParseIpAddress(host).has_value();
  }
  return ParseIpAddress(host).has_value();
}

}  // namespace

AccessRules::AccessRules(std::string_view names) {
  for (const std::string_view piece : SplitAt(names, ","))
    if (const std::string_view name = TrimBlanks(piece); !name.empty()) names_.push_back(LowerCase(name));
}

bool AccessRules::IsNamed(std::string_view host) const {
  return std::any_of(names_.begin(), names_.end(),
                     [&](const std::string& name) { return EqualIgnoringAsciiCase(host, name); });
}

bool AccessRules::IsOurs(std::string_view hostAndPort) const {
  const std::string_view host = HostOf(hostAndPort);
  return IsAddress(host) || EqualIgnoringAsciiCase(host, "localhost") || IsNamed(host);
}

WayIn AccessRules::WayOf(const HttpRequest& request) const {
  if (request.way != WayIn::kLoopback) return request.way;
  const bool proxied = request.HasHeader("x-forwarded-for") || request.HasHeader("forwarded") ||
                       request.HasHeader("x-real-ip") || IsNamed(HostOf(request.Header("host")));
  return proxied ? WayIn::kNetwork : WayIn::kLoopback;
}

// Programs other than browsers send none of these headers.
bool AccessRules::IsOurPage(const HttpRequest& request) const {
  if (request.HasHeader("sec-fetch-site")) {
    const std::string& site = request.Header("sec-fetch-site");
    if (site != "same-origin" && site != "none") return false;
  }
  if (!request.HasHeader("origin")) return true;
  std::string_view origin = request.Header("origin");
  const std::size_t scheme = origin.find("://");
  if (scheme == std::string_view::npos) return false;
  if (origin.substr(0, scheme) != "http" && origin.substr(0, scheme) != "https") return false;
  origin.remove_prefix(scheme + 3);
  if (EqualIgnoringAsciiCase(origin, request.Header("host"))) return true;
  // A proxy that asks us under an address of its own.
  return IsNamed(HostOf(origin));
}

AccessRules::Verdict AccessRules::Check(const HttpRequest& request, Need need, bool hasSession) const {
  if (request.way == WayIn::kLocal) return {};
  if (request.way == WayIn::kLoopback && !IsOurs(request.Header("host")))
    return {403, "the dashboard is not reached under this name: see DashboardNames"};
  const bool reads = request.method == "GET" || request.method == "HEAD";
  if (!reads && !IsOurPage(request)) return {403, "the request comes from a page of elsewhere"};
  if (need == Need::kLocal) return {403, "this is for zebctl on the publisher's machine"};
  if (need == Need::kNothing || hasSession) return {};
  if (need == Need::kRead && request.way == WayIn::kLoopback) return {};
  return {401, "log on first"};
}

}  // namespace zeb
