// HttpMessage: a request as handlers see it, and the answer that they give.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zeb {

// Of one request, header and body together; what is longer is refused.
inline constexpr std::size_t kMostRequestBytes = 64 * 1024;
inline constexpr std::size_t kMostTargetBytes = 8 * 1024;
inline constexpr std::size_t kMostHeaderFields = 100;
inline constexpr std::size_t kMostAnswerBytes = 16 * 1024 * 1024;

using NamedTexts = std::vector<std::pair<std::string, std::string>>;

// Where a request came in. The local socket is protected by its access rights.
enum class WayIn { kLocal, kLoopback, kNetwork };

struct HttpRequest {
  std::string method;             // "GET", "POST" ...; HEAD comes as it is
  std::vector<std::string> path;  // what stands between the "/", decoded; "/" is one empty part
  std::map<std::string, std::string> arguments;  // of the route: "n" for "{n}"; never empty texts
  NamedTexts query;                              // decoded, in their order
  NamedTexts headers;                            // names in small letters
  std::string body;
  bool keepAlive = true;
  WayIn way = WayIn::kLocal;
  std::string peerAddress;

  // "" when there is none; of several the first.
  const std::string& Header(std::string_view nameInSmallLetters) const;
  const std::string& Query(std::string_view name) const;
  bool HasHeader(std::string_view nameInSmallLetters) const;
  bool HasQuery(std::string_view name) const;
  const std::string& Argument(const std::string& name) const { return arguments.at(name); }
  std::string Cookie(std::string_view name) const;
};

struct HttpAnswer {
  int status = 200;
  std::string type = "application/json";
  std::string body;
  // Further ones; one that is set by everybody ("Cache-Control") takes the place of the usual.
  NamedTexts headers;
};

// {"error": reason}. `reason` is UTF-8.
HttpAnswer ErrorAnswer(int status, std::string_view reason);

}  // namespace zeb
