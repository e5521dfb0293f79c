#include "app/desktop/frame/TroubleWatch.h"

#include <algorithm>

namespace zeb {

TroubleWatch::News TroubleWatch::Look(const frmMain& main, MonotonicTime now) {
  News news;
  std::set<std::shared_ptr<frmService>> present;
  for (int number = 1; number <= main.NumberServices(); ++number) present.insert(main.Window(number));
  std::erase_if(known_, [&](const auto& entry) { return !present.contains(entry.first); });
  for (const auto& [service, outputs] : known_)
    if (std::any_of(outputs.begin(), outputs.end(), [](const auto& entry) { return !entry.second.told; }))
      changed_.insert(service);
  for (const auto& service : std::exchange(changed_, {}))
    if (present.contains(service)) {
      ByOutput& known = known_[service];
      LookAt(known, service->Board().Troubles(), now, news);
      if (known.empty()) known_.erase(service);
    }
  return news;
}

void TroubleWatch::LookAt(ByOutput& known, std::vector<Trouble> troubles, MonotonicTime now, News& news) {
  for (Trouble& trouble : troubles) {
    Known& one = known.try_emplace(trouble.output, Known{{}, now, false}).first->second;
    one.trouble = trouble;
    if (one.told || now - one.since < kLasts) continue;
    one.told = true;
    news.begun.push_back(trouble);
  }
  std::erase_if(known, [&](const auto& entry) {
    const bool lasts = std::any_of(troubles.begin(), troubles.end(),
                                   [&](const Trouble& one) { return one.output == entry.first; });
    if (!lasts && entry.second.told) news.ended.push_back(entry.second.trouble);
    return !lasts;
  });
}

std::size_t TroubleWatch::Count() const {
  std::size_t count = 0;
  for (const auto& [service, outputs] : known_)
    for (const auto& [name, known] : outputs) count += known.told ? 1 : 0;
  return count;
}

std::vector<Trouble> TroubleWatch::Worst(std::size_t most) const {
  std::vector<Trouble> worst;
  std::map<int, const ByOutput*> ordered;
  for (const auto& [service, outputs] : known_) ordered[service->service().ServiceNumber()] = &outputs;
  for (const auto& [number, outputs] : ordered)
    for (const auto& [name, known] : *outputs)
      if (known.told && worst.size() < most) worst.push_back(known.trouble);
  return worst;
}

}  // namespace zeb
