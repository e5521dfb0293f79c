// NearestNames: what somebody may have meant by a name that there is not.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zeb {

// Those of `names` that `name` differs little from, letter case aside, or is a part of; nearest first,
// three at most. Names are ASCII.
std::vector<std::string_view> NearestNames(std::string_view name, const std::vector<std::string_view>& names);

// "A, B or C".
std::string JoinedWithOr(const std::vector<std::string_view>& words);

}  // namespace zeb
