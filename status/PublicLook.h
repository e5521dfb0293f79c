// PublicLook: one look at a public address, as a browser or a player takes it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "core/PublicPlace.h"
#include "platform/Environment.h"
#include "platform/Epoch.h"
#include "platform/Time.h"

namespace zeb {

inline constexpr Duration kPageLookLimit = std::chrono::seconds(5);
// A player hears of a new title a few seconds after the server.
inline constexpr Duration kStreamLookLimit = std::chrono::seconds(30);
inline constexpr std::size_t kMostPageBytes = 1024 * 1024;

// What is to be seen there at the moment of the call, which may change during a look; null: nothing any more.
using WantedPlace = std::function<const PublicPlace*()>;

// "" when what is wanted is to be seen there, else one line that says what is seen instead; nothing when the
// look has told neither, since something else is wanted now. In a task; comes back at once when `mine` ends.
std::optional<std::string> LookAt(Environment& environment, const WantedPlace& wanted,
                                  const Epoch::Mark& mine);

}  // namespace zeb
