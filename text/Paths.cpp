#include "text/Paths.h"

#include <utf8proc.h>

#include "text/Utf8.h"

namespace zeb {
namespace {

constexpr std::string_view kSeparators = "\\/";

bool IsAsciiLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// A drive or a server share counts everywhere: settings move between machines, and an error should show such
// a path as the user wrote it.
bool IsAbsolute(std::string_view path) {
  if (path.empty()) return false;
  if (path[0] == '/' || path.substr(0, 2) == "\\\\") return true;
#ifdef _WIN32
  if (path[0] == '\\') return true;
#endif
  return path.size() >= 3 && IsAsciiLetter(path[0]) && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

bool IsLetterOrDigit(char32_t c) {
  switch (utf8proc_category(static_cast<utf8proc_int32_t>(c))) {
    case UTF8PROC_CATEGORY_LU:
    case UTF8PROC_CATEGORY_LL:
    case UTF8PROC_CATEGORY_LT:
    case UTF8PROC_CATEGORY_LM:
    case UTF8PROC_CATEGORY_LO:
    case UTF8PROC_CATEGORY_ND:
      return true;
    default:
      return false;
  }
}

}  // namespace

std::string_view FileNamePart(std::string_view path) {
  const std::size_t last = path.find_last_of(kSeparators);
  return last == std::string_view::npos ? path : path.substr(last + 1);
}

std::string_view FolderPart(std::string_view path) {
  const std::size_t last = path.find_last_of(kSeparators);
  return last == std::string_view::npos ? std::string_view() : path.substr(0, last + 1);
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  if (folder.empty() || IsAbsolute(name)) return std::string(name);
  std::string path(folder);
  if (path.back() != '/' && path.back() != kPathSeparator) path += kPathSeparator;
  path += name;
  return path;
}

std::string CleanForFileName(std::string_view text) {
  std::string name;
  name.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    const char32_t c = NextCharacter(text, at);
    if (c == '-' || c == '_' || c == '.' || IsLetterOrDigit(c))
      AppendCharacter(name, c);
    else
      name += '_';
  }
  return name;
}

}  // namespace zeb
