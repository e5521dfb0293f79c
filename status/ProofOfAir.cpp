#include "status/ProofOfAir.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <utility>

#include "status/PublicLook.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

// A server may need a moment, caches in between some more.
constexpr std::array<Duration, 7> kPauses = {1s, 2s, 3s, 5s, 10s, 10s, 30s};
constexpr Duration kLasting = 30s;

}  // namespace

bool ProofOfAir::Place::IsProblem(MonotonicTime now) const {
  return wrongFrom && now - *wrongFrom >= kLasting;
}

struct ProofOfAir::Looks {
  Looks(Environment& givenEnvironment, std::function<void()> givenChanged)
      : environment(givenEnvironment), changed(std::move(givenChanged)) {}

  Environment& environment;
  std::function<void()> changed;
  Epoch epoch;  // ends with the owner
  Epoch::Mark mine = epoch.Now();
  std::vector<Place> places;
  std::size_t pause = 0;  // which comes before the next round
  bool looking = false;
  Timer next;
  MonotonicTime nextAt{};
};

ProofOfAir::ProofOfAir(Environment& environment, std::function<void()> changed)
    : looks_(std::make_shared<Looks>(environment, std::move(changed))) {}

ProofOfAir::~ProofOfAir() {
  looks_->epoch.Next();
  looks_->next.Stop();
}

// ---- What is to be seen

void ProofOfAir::Published(std::vector<PublicPlace> places, MonotonicTime arrived) {
  std::vector<Place> before = std::exchange(looks_->places, {});
  bool isNew = false;
  for (PublicPlace& wanted : places) {
    const auto known = std::find_if(before.begin(), before.end(),
                                    [&](const Place& place) { return place.wanted.url == wanted.url; });
    Place place;
    if (known != before.end()) place = std::move(*known);
    if (known == before.end() || place.wanted != wanted) {
      isNew = true;
      place.wanted = std::move(wanted);
      place.arrived = arrived;
      place.published = looks_->environment.loop.Monotonic();
      place.onAir.reset();
    }
    looks_->places.push_back(std::move(place));
  }
  if (!isNew) return;
  looks_->pause = 0;
  LookSoon(looks_);
}

std::optional<Duration> ProofOfAir::OnAir() const {
  std::optional<Duration> last;
  for (const Place& place : looks_->places) {
    if (!place.onAir) return std::nullopt;
    last = std::max(last.value_or(Duration::zero()), *place.onAir);
  }
  return last;
}

std::string ProofOfAir::Problem() const {
  const MonotonicTime now = looks_->environment.loop.Monotonic();
  for (const Place& place : looks_->places)
    if (place.IsProblem(now)) return place.wrong;
  return {};
}

std::optional<WallTime> ProofOfAir::Since() const {
  const MonotonicTime now = looks_->environment.loop.Monotonic();
  std::optional<WallTime> since;
  for (const Place& place : looks_->places)
    if (place.IsProblem(now)) since = std::min(since.value_or(place.wrongSince), place.wrongSince);
  return since;
}

// ---- Looking

void ProofOfAir::LookSoon(const std::shared_ptr<Looks>& looks) {
  if (looks->looking) return;  // the round under way goes on to it
  const Duration pause = kPauses[std::min(looks->pause, kPauses.size() - 1)];
  const MonotonicTime at = looks->environment.loop.Monotonic() + pause;
  if (looks->next.Running() && looks->nextAt <= at) return;
  looks->nextAt = at;
  looks->next = looks->environment.loop.After(pause, [weak = std::weak_ptr<Looks>(looks)] {
    const auto self = weak.lock();
    if (!self || !self->mine.Holds()) return;
    ++self->pause;
    self->looking = true;
    self->environment.loop.Start("looking at what is on air", [self] { LookRound(self); });
  });
}

// Each place that is not proved yet, one after the other.
void ProofOfAir::LookRound(const std::shared_ptr<Looks>& looks) {
  for (std::size_t i = 0; i < looks->places.size(); ++i) {
    if (looks->places[i].onAir) continue;
    const auto wanted = [&looks, i, url = looks->places[i].wanted.url]() -> const PublicPlace* {
      const bool there = i < looks->places.size() && looks->places[i].wanted.url == url;
      return there ? &looks->places[i].wanted : nullptr;
    };
    const MonotonicTime began = looks->environment.loop.Monotonic();
    std::optional<std::string> wrong;
    try {
      wrong = LookAt(looks->environment, wanted, looks->mine);
    } catch (const std::exception& fault) {
      wrong = std::string("the public address could not be looked at: ") + fault.what();
    }
    if (!looks->mine.Holds()) return;
    if (wrong && wanted()) Judge(*looks, i, began, *wrong);
  }
  looks->looking = false;
  const bool left = std::any_of(looks->places.begin(), looks->places.end(),
                                [](const Place& place) { return !place.onAir; });
  if (left) LookSoon(looks);
  if (const auto tell = looks->changed) tell();
}

void ProofOfAir::Judge(Looks& looks, std::size_t index, MonotonicTime began, const std::string& wrong) {
  Place& place = looks.places[index];
  EventLoop& loop = looks.environment.loop;
  const MonotonicTime now = loop.Monotonic();
  place.wrong = wrong;
  if (wrong.empty()) {
    place.onAir = now - place.arrived;
    place.wrongFrom.reset();
  } else if (!place.wrongFrom) {
    place.wrongFrom = std::max(began, place.published);
    place.wrongSince =
        loop.Now() - std::chrono::duration_cast<std::chrono::milliseconds>(now - *place.wrongFrom);
  }
}

}  // namespace zeb
