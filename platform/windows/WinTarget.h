// WinTarget: a place where a file is to be put. Private to platform/windows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/FileSystem.h"

namespace zeb {

// As FileSystem::FindTarget. What was changed before `startedAt` (nanoseconds since 1970) is of an earlier
// run. Links are followed whoever made them: making one takes an administrator's right here.
Result<std::unique_ptr<FileTarget>> FindWinTarget(const std::string& path, const LinkRules& rules,
                                                  std::int64_t startedAt);

}  // namespace zeb
