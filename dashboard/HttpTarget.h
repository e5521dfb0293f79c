// HttpTarget: what a request asks for, taken apart: "/api/v1/services/3?full=1".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dashboard/HttpMessage.h"
#include "platform/Result.h"

namespace zeb {

struct HttpTarget {
  std::vector<std::string> path;
  NamedTexts query;
};

// Fails on what no link of ours has: another form than "/path?query", "." and ".." as parts, escapes that are
// none, control characters, bytes that are not UTF-8, more than 32 parts or 64 query values.
Result<HttpTarget> ReadHttpTarget(std::string_view target);

// "name=value&..." as forms are sent, with the same bounds.
Result<NamedTexts> ReadForm(std::string_view text);

}  // namespace zeb
