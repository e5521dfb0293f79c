#include "bench/system/Measures.h"

#include <cstdlib>
#include <stdexcept>

namespace zeb::bench {
namespace {

constexpr double kLimit = 60;
constexpr double kThreadsEach = 0.005;
constexpr double kTemplateSettles = 2.2;

// Calls `look` again and again until it says that all has come.
template <class Look>
void Spin(Publisher& publisher, Look look) {
  const Moment start = Now();
  for (int turn = 1; !look(); ++turn) {
    if (turn % 1000 != 0) continue;
    publisher.Program().MustRun();
    if (Seconds(start, Now()) > kLimit) throw std::runtime_error("pages are missing after 60 s");
  }
}

}  // namespace

void LetRest(Publisher& publisher, double seconds) {
  for (const Moment end = Later(Now(), seconds); Now() < end;) continue;
  publisher.Program().Listen();
}

double LineToFiles(Publisher& publisher) {
  const auto pairs = static_cast<std::size_t>(publisher.Planned().pairs);
  std::vector<Arrival> arrivals;
  const Moment start = Now();
  publisher.Send(1);
  Spin(publisher, [&] {
    publisher.Look(arrivals);
    return arrivals.size() >= pairs;
  });
  return Seconds(start, arrivals.back().at);
}

bool IsQuick() {
  return std::getenv("ZEB_BENCH_QUICK") != nullptr;
}

void WarmUp(Rivals& rivals, int items) {
  for (int i = 0; i <= items; ++i) {
    for (Publisher* publisher : {&rivals.zeb, &rivals.bare}) {
      SendEverywhere(*publisher);
      LetRest(*publisher);
    }
    if (i == 0) Sleep(kTemplateSettles);
  }
}

Everywhere SendEverywhere(Publisher& publisher) {
  const auto pages = static_cast<std::size_t>(publisher.Planned().services * publisher.Planned().pairs);
  std::vector<Moment> sent;
  std::vector<Arrival> arrivals;
  Everywhere result;
  for (int service = 1; service <= publisher.Planned().services; ++service) {
    sent.push_back(Now());
    publisher.Send(service);
    publisher.Look(arrivals);
  }
  Moment counted = sent.front();
  Spin(publisher, [&] {
    publisher.Look(arrivals);
    if (Seconds(counted, Now()) > kThreadsEach) {
      counted = Now();
      publisher.Program().Listen();
      result.threads = std::max(result.threads, publisher.Program().Threads().size());
    }
    return arrivals.size() >= pages;
  });
  std::vector<double> times;
  for (const Arrival& arrival : arrivals)
    times.push_back(Seconds(sent.at(static_cast<std::size_t>(arrival.service) - 1), arrival.at));
  result.all = Seconds(sent.front(), arrivals.back().at);
  result.half = Median(times);
  return result;
}

std::vector<double> SendInARow(Publisher& publisher, const std::vector<double>& gaps) {
  std::vector<Moment> sent;
  std::vector<double> times;
  std::vector<Arrival> arrivals;
  int before = 0;  // the number of the last item before these
  Moment next = Now();
  Spin(publisher, [&] {
    if (sent.size() < gaps.size() && Now() >= next) {
      next = Later(Now(), gaps[sent.size()]);
      sent.push_back(Now());
      before = publisher.Send(1) - static_cast<int>(sent.size());
      publisher.Program().Listen();
    }
    publisher.Look(arrivals);
    if (!arrivals.empty()) {
      const auto shown = static_cast<std::size_t>(std::max(publisher.Shown(1) - before, 0));
      while (times.size() < std::min(shown, sent.size()))
        times.push_back(Seconds(sent[times.size()], arrivals.back().at));
      arrivals.clear();
    }
    return times.size() == gaps.size();
  });
  return times;
}

std::vector<Compared> InTurns(Rivals& rivals, int rounds, const std::function<Numbers(Publisher&)>& measure) {
  std::vector<Numbers> zeb, bare, ratios;  // of each measure, round by round
  for (int round = 0; round < rounds; ++round) {
    Numbers ofBare;
    if (round % 2 != 0) ofBare = measure(rivals.bare);
    const Numbers ofZeb = measure(rivals.zeb);
    if (round % 2 == 0) ofBare = measure(rivals.bare);
    zeb.resize(ofZeb.size()), bare.resize(ofZeb.size()), ratios.resize(ofZeb.size());
    for (std::size_t i = 0; i < ofZeb.size(); ++i) {
      zeb[i].push_back(ofZeb[i]);
      bare[i].push_back(ofBare.at(i));
      if (ofBare[i] > 0) ratios[i].push_back(ofZeb[i] / ofBare[i]);
    }
  }
  std::vector<Compared> compared;
  for (std::size_t i = 0; i < zeb.size(); ++i)
    compared.push_back({Median(zeb[i]), Median(bare[i]), Median(ratios[i])});
  return compared;
}

}  // namespace zeb::bench
