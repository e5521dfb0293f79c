// Names and folders in paths. Both "\" and "/" separate, on every system: settings move between machines, and
// what is refused by its name must not slip through behind the other one.
#pragma once

#include <string>
#include <string_view>

namespace zeb {

#ifdef _WIN32
inline constexpr char kPathSeparator = '\\';
#else
inline constexpr char kPathSeparator = '/';
#endif

// The characters after the last separator; the whole path when it holds none.
std::string_view FileNamePart(std::string_view path);
// Everything up to and including the last "\" or "/"; "" when there is neither.
std::string_view FolderPart(std::string_view path);
// `name` itself when it is absolute, else below `folder`.
std::string JoinPath(std::string_view folder, std::string_view name);
// Only letters, digits, "-", "_" and "." stay; others become "_".
std::string CleanForFileName(std::string_view text);

}  // namespace zeb
