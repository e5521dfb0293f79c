#include "outputs/file/NumberedVersions.h"

#include <algorithm>
#include <charconv>

#include "text/Numbers.h"
#include "text/Paths.h"

namespace zeb {
namespace {

constexpr std::size_t kDigits = 6;
// More would not fit the number, and no program has written them.
constexpr std::size_t kMaxDigits = 18;

// The offset of the extension's dot in a plain name; its size when it has none (".htaccess" is a name).
std::size_t ExtensionOffset(std::string_view fileName) {
  std::size_t dot = fileName.rfind('.');
  return dot == std::string_view::npos || dot == 0 ? fileName.size() : dot;
}

}  // namespace

std::string NumberedVersion(std::string_view path, std::int64_t number) {
  std::string_view fileName = FileNamePart(path);
  std::size_t dot = path.size() - fileName.size() + ExtensionOffset(fileName);
  std::string version(path.substr(0, dot));
  version += '.';
  version += PaddedNumber(number, kDigits);
  version += path.substr(dot);
  return version;
}

std::int64_t HighestVersion(std::string_view fileName, const std::vector<std::string>& names) {
  std::size_t dot = ExtensionOffset(fileName);
  std::string start = std::string(fileName.substr(0, dot)) + '.';
  std::string_view end = fileName.substr(dot);
  std::int64_t highest = 0;
  for (std::string_view name : names) {
    if (name.size() < start.size() + kDigits + end.size() || name.substr(0, start.size()) != start ||
        name.substr(name.size() - end.size()) != end)
      continue;
    std::string_view digits = name.substr(start.size(), name.size() - start.size() - end.size());
    if (digits.size() > kMaxDigits || digits.find_first_not_of("0123456789") != std::string_view::npos)
      continue;
    std::int64_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    highest = std::max(highest, number);
  }
  return highest;
}

std::string PageOfVersion(std::string_view name) {
  // The number is the last part, or stands before the extension.
  for (const std::size_t end : {name.size(), ExtensionOffset(name)}) {
    const std::size_t dot = name.substr(0, end).rfind('.');
    if (dot == std::string_view::npos) continue;
    std::string page = std::string(name.substr(0, dot)).append(name.substr(end));
    if (HighestVersion(page, {std::string(name)}) > 0) return page;
  }
  return {};
}

}  // namespace zeb
