// What an open file is. Private to platform/windows.
#pragma once

#include <optional>

#include "platform/FileSystem.h"
#include "platform/windows/WinHandle.h"

namespace zeb {

// Nothing when the system does not say.
std::optional<FileInfo> InfoOf(const WinHandle& file);
// The file or folder of that name, links followed.
std::optional<FileInfo> InfoOfPath(const std::string& path);
// The path of an open file, without the marks of a long one; "" when there is none.
std::string PathOf(const WinHandle& file);

constexpr const char* kNotRegular = "it is not a regular file";

}  // namespace zeb
