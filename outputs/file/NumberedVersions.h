// The chronologically numbered versions of a file: "now.html" leaves "now.000001.html", "now.000002.html" ...
// beside itself. Names sort in time order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

std::string NumberedVersion(std::string_view path, std::int64_t number);
// The highest number among a folder's plain names that are versions of `fileName`; 0 when there is none.
std::int64_t HighestVersion(std::string_view fileName, const std::vector<std::string>& names);
// "now.html" for "now.000001.html"; "" when the plain name is that of no version.
std::string PageOfVersion(std::string_view name);

}  // namespace zeb
