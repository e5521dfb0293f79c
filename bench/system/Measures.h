// What is measured of a publisher. The driver never sleeps while it waits for a page: it looks again and
// again, on a core of its own. Every measure throws when a page does not come within 60 s.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/system/Publisher.h"

namespace zeb::bench {

// Lets the publisher end what it does after its last page, so that the next item meets it idle.
void LetRest(Publisher& publisher, double seconds = 0.002);

// Seconds from an item's line to service 1 until all of its pages are in place.
double LineToFiles(Publisher& publisher);

// With ZEB_BENCH_QUICK set, every row does little: enough to see that it works, too little for figures.
bool IsQuick();
inline int Times(int often, int quick) {
  return IsQuick() ? quick : often;
}

// Both publish so many items to each service, after a first one and a wait: a template that has just been
// made is read anew at each use until two seconds have passed, and a station's is older than that.
void WarmUp(Rivals& rivals, int items);

// One item to each service at once.
struct Everywhere {
  double all = 0;           // seconds from the first line until the last page
  double half = 0;          // median of the seconds from a service's own line to its page
  std::size_t threads = 0;  // the most that the program had meanwhile
};
Everywhere SendEverywhere(Publisher& publisher);

// Items to service 1 one after another, each so many seconds behind the one before, whether that is published
// or not. Seconds from each line until a page of that item or of a later one is in place.
std::vector<double> SendInARow(Publisher& publisher, const std::vector<double>& gaps);

// Both in turns, with who begins changing too; each measure of a round is one number of each.
struct Compared {
  double zeb = 0, bare = 0;  // medians of the rounds
  double ratio = 0;          // median of the rounds' ratios
};
using Numbers = std::vector<double>;
std::vector<Compared> InTurns(Rivals& rivals, int rounds, const std::function<Numbers(Publisher&)>& measure);

// System calls for each of so many items, counted by strace: by name, the most frequent first. Throws when
// strace is not there or may not look.
struct Calls {
  double all = 0;
  std::string byName;
};
Calls CountCalls(Publisher& publisher, int items);

}  // namespace zeb::bench
