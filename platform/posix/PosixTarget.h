// PosixTarget: how a POSIX machine puts a file in its place, in folders that others may write in as well.
//
// Nothing is decided by a name that somebody could give another meaning afterwards: mode and owner are set on
// the open work file, and behind a link everything happens in the folder that was looked at. A work file that
// this process does not create itself is never written.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/FileSystem.h"

namespace zeb {

// As FileSystem::FindTarget. What was changed before `startedAt` (nanoseconds since 1970) is of an earlier
// run.
Result<std::unique_ptr<FileTarget>> FindPosixTarget(const std::string& path, const LinkRules& rules,
                                                    std::int64_t startedAt);

}  // namespace zeb
