#include "platform/Markup.h"

#include <unordered_map>

namespace zeb {

std::vector<std::size_t> MarkupDocument::Select(std::string_view path, std::size_t from) const {
  // The elements that the path has led to so far; the document itself stands for kNone.
  std::unordered_map<std::size_t, bool> reached{{path.substr(0, 1) == "/" ? kNone : from, true}};
  std::vector<std::size_t> found;
  std::size_t start = 0;
  while (start < path.size()) {
    std::size_t end = path.find('/', start);
    if (end == std::string_view::npos) end = path.size();
    const std::string_view name = path.substr(start, end - start);
    start = end + 1;
    if (name.empty() || name == ".") continue;
    found.clear();
    // Children stand behind their parent.
    const std::size_t first = from == kNone || path.front() == '/' ? 0 : from + 1;
    for (std::size_t i = first; i < elements.size(); ++i) {
      if (from != kNone && first != 0 && elements[i].parent != kNone && elements[i].parent < from) break;
      if (elements[i].name == name && reached.count(elements[i].parent) != 0) found.push_back(i);
    }
    reached.clear();
    for (const std::size_t element : found) reached.emplace(element, true);
  }
  return found;
}

}  // namespace zeb
