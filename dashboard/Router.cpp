#include "dashboard/Router.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "text/Lines.h"

namespace zeb {

namespace {

bool IsName(const std::string& part) {
  return part.size() > 2 && part.front() == '{' && part.back() == '}';
}

bool Matches(const std::vector<std::string>& pattern, const std::vector<std::string>& path) {
  return std::equal(pattern.begin(), pattern.end(), path.begin(), path.end(),
                    [](const std::string& wanted, const std::string& part) {
                      return IsName(wanted) ? !part.empty() : wanted == part;
                    });
}

// At the first part in which they differ, one of the two is written out.
bool GoesBefore(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  for (std::size_t i = 0; i < a.size(); ++i)
    if (IsName(a[i]) != IsName(b[i])) return IsName(b[i]);
  return false;
}

}  // namespace

void Router::Add(std::string method, std::string_view pattern, Need need, bool inTask, Handler handler) {
  std::vector<std::string> parts;
  for (const std::string_view part : SplitAt(pattern.substr(1), "/")) parts.emplace_back(part);
  routes_.push_back({std::move(method), std::move(parts), need, inTask, std::move(handler)});
}

void Router::Add(std::string method, std::string_view pattern, Need need, Plain handler) {
  Add(std::move(method), pattern, need, false,
      [handler = std::move(handler)](const HttpRequest& request, const HttpReply& reply) {
        reply.Send(handler(request));
      });
}

void Router::AddTask(std::string method, std::string_view pattern, Need need, Plain handler) {
  Add(std::move(method), pattern, need, true,
      [handler = std::move(handler)](const HttpRequest& request, const HttpReply& reply) {
        reply.Send(handler(request));
      });
}

void Router::AddLater(std::string method, std::string_view pattern, Need need, Handler handler) {
  Add(std::move(method), pattern, need, false, std::move(handler));
}

Router::Found Router::Find(HttpRequest& request) const {
  const std::string_view method = request.method == "HEAD" ? "GET" : std::string_view(request.method);
  Found found;
  for (const Route& route : routes_) {
    if (!Matches(route.pattern, request.path)) continue;
    if (route.method == method) {
      if (!found.route || GoesBefore(route.pattern, found.route->pattern)) found.route = &route;
    } else if (found.allow.find(route.method) == std::string::npos) {
      found.allow +=
          (found.allow.empty() ? "" : ", ") + route.method + (route.method == "GET" ? ", HEAD" : "");
    }
  }
  if (!found.route) return found;
  for (std::size_t i = 0; i < request.path.size(); ++i) {
    const std::string& part = found.route->pattern[i];
    if (IsName(part)) request.arguments[part.substr(1, part.size() - 2)] = request.path[i];
  }
  return found;
}

}  // namespace zeb
