// PageDigest: the SHA-256 of a page's bytes, as sha256sum writes it; worked out at once, or when somebody
// asks.
//
// Made on any thread and then asked by one thread only. Copies are one digest.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace zeb {

class PageDigest {
 public:
  // Until somebody asks, a page up to kMostKept is kept whole; the digest of a larger one is worked out at
  // once.
  enum class When { kNow, kWhenAsked };
  static constexpr std::size_t kMostKept = 16 * 1024;

  PageDigest() = default;        // ""
  PageDigest(std::string text);  // known already
  PageDigest(std::string_view bytes, When when);

  const std::string& Text() const;
  // Whether anybody has asked for it.
  bool Asked() const { return state_ && state_->asked; }

 private:
  struct State {
    std::string bytes;  // of the page, until the text is there
    std::string text;
    bool asked = false;
  };
  std::shared_ptr<State> state_;
};

}  // namespace zeb
