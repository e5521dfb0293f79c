#include "core/PageDigest.h"

#include <utility>

#include "text/Sha256.h"

namespace zeb {

PageDigest::PageDigest(std::string text) : state_(std::make_shared<State>()) {
  state_->text = std::move(text);
}

PageDigest::PageDigest(std::string_view bytes, When when) : state_(std::make_shared<State>()) {
  if (when == When::kWhenAsked && bytes.size() <= kMostKept)
    state_->bytes = bytes;
  else
    state_->text = Sha256Text(bytes);
}

const std::string& PageDigest::Text() const {
  static const std::string kNone;
  if (!state_) return kNone;
  state_->asked = true;
  if (state_->text.empty()) {
    state_->text = Sha256Text(state_->bytes);
    state_->bytes = {};
  }
  return state_->text;
}

}  // namespace zeb
