#include "sources/RingCheck.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <utility>

#include "text/LetterCase.h"
#include "text/Lines.h"
#include "text/Numbers.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr std::string_view kCheck = "ZEB_RELAY_CHECK ";
constexpr Duration kCheckInterval = 1min;
// A check that is still on its way is not sent again for as long.
constexpr Duration kOnItsWay = 5s;
constexpr std::size_t kLinesKept = 32;
// A check whose sender is gone must not go round for ever.
constexpr std::int32_t kMostHops = 32;

std::string NewId() {
  std::random_device random;
  return std::to_string(random()) + "-" + std::to_string(random()) + "-" + std::to_string(random());
}

std::size_t HashOf(std::string_view line) {
  return std::hash<std::string_view>()(line);
}

}  // namespace

RingCheck::RingCheck(EventLoop& loop, Events events) : loop_(loop), events_(std::move(events)) {}

void RingCheck::Begin() {
  Stop();
  Check();
}

void RingCheck::Stop() {
  again_.Stop();
  inRing_ = cameBack_ = false;
  checked_.reset();
  lately_.clear();
}

void RingCheck::Check() {
  checked_ = loop_.Monotonic();
  cameBack_ = false;
  if (id_.empty()) id_ = NewId();
  events_.Send(std::string(kCheck) + id_ + " 1");
}

void RingCheck::CheckAgain() {
  if (cameBack_) return Check();
  Stop();
  events_.RingEnded();
}

void RingCheck::Relayed(std::string_view line) {
  lately_.push_back(HashOf(line));
  if (lately_.size() > kLinesKept) lately_.pop_front();
}

std::optional<std::string> RingCheck::LineToPassOn(std::string_view line) {
  if (StartsWithIgnoringCase(line, kCheck)) return PassCheckOn(line);
  if (inRing_) return std::nullopt;
  const bool seen = std::find(lately_.begin(), lately_.end(), HashOf(line)) != lately_.end();
  if (seen && (!checked_ || loop_.Monotonic() - *checked_ >= kOnItsWay)) Check();
  return std::string(line);
}

std::optional<std::string> RingCheck::PassCheckOn(std::string_view line) {
  const FirstWord words = CutFirstWord(line.substr(kCheck.size()));
  if (!id_.empty() && words.word == id_) {
    CameBack();
    return std::nullopt;
  }
  const std::int32_t hops = LeadingInteger(words.rest);
  if (hops < 1 || hops >= kMostHops) return std::nullopt;
  return std::string(kCheck) + std::string(words.word) + " " + std::to_string(hops + 1);
}

void RingCheck::CameBack() {
  cameBack_ = true;
  if (std::exchange(inRing_, true)) return;
  again_ = loop_.Every(kCheckInterval, [this] { CheckAgain(); });
  events_.RingFound();
}

}  // namespace zeb
