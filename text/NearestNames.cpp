#include "text/NearestNames.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "text/LetterCase.h"

namespace zeb {
namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::size_t kLongestName = 100;  // of a name that is looked at at all

// How many characters must be put in, left out or replaced.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (AsciiLower(a[i - 1]) != AsciiLower(b[j - 1]) ? 1 : 0);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j - 1] + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::vector<std::string_view> NearestNames(std::string_view name,
                                           const std::vector<std::string_view>& names) {
  if (name.empty() || name.size() > kLongestName) return {};
  const std::size_t most = std::max<std::size_t>(2, name.size() / 3);
  std::vector<std::pair<std::size_t, std::string_view>> found;
  for (const std::string_view one : names) {
    const std::size_t distance = Distance(name, one);
    const bool contained = name.size() >= 3 && FindIgnoringAsciiCase(one, name) != std::string_view::npos;
    if (distance <= most || contained) found.emplace_back(distance, one);
  }
  std::stable_sort(found.begin(), found.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<std::string_view> nearest;
  for (std::size_t i = 0; i < std::min(found.size(), kMostNames); ++i) nearest.push_back(found[i].second);
  return nearest;
}

std::string JoinedWithOr(const std::vector<std::string_view>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " or " : ", ";
    text += words[i];
  }
  return text;
}

}  // namespace zeb
