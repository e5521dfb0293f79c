// Sessions: who has logged on. At most 100; each ends 12 h after its last request, and after 7 days.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Secrets.h"
#include "platform/Time.h"

namespace zeb {

class Sessions {
 public:
  static constexpr std::size_t kMost = 100;  // one more ends the one that was used longest ago
  static constexpr Duration kUnused = std::chrono::hours(12);
  static constexpr Duration kWhole = std::chrono::hours(7 * 24);

  explicit Sessions(Secrets& secrets) : secrets_(secrets) {}

  std::string Begin(MonotonicTime now);  // its token
  bool Use(std::string_view token, MonotonicTime now);
  // Whether it lasts; not a use.
  bool Lasts(std::string_view token, MonotonicTime now);
  void End(std::string_view token);
  void EndAll() { sessions_.clear(); }
  std::size_t Count() const { return sessions_.size(); }

 private:
  struct Session {
    std::string token;
    MonotonicTime begun, used;
  };
  Session* Find(std::string_view token, MonotonicTime now);

  Secrets& secrets_;
  std::vector<Session> sessions_;
};

}  // namespace zeb
