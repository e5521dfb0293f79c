// ProofOfAir: whether the public sees what an output has published: the output's public addresses are asked
// as a listener's browser or player would ask them.
//
// One for each output that has such addresses, owned by its service's board; on the loop's thread. Looking is
// a task of its own, one connection at a time, so that no update ever waits for it. What is not right is
// looked at again, and is a problem once it has lasted for half a minute.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/PublicPlace.h"
#include "platform/Environment.h"
#include "platform/Epoch.h"
#include "platform/EventLoop.h"

namespace zeb {

class ProofOfAir {
 public:
  // `changed` is told when one of the results below may be another one.
  ProofOfAir(Environment& environment, std::function<void()> changed);
  ~ProofOfAir();

  // The output has published something; `arrived` is when the information for it came.
  void Published(std::vector<PublicPlace> places, MonotonicTime arrived);

  // From the information's arrival to the moment at which all of it was seen; nothing until then.
  std::optional<Duration> OnAir() const;
  std::string Problem() const;  // one line that says what is seen in place of what; "" while nothing is wrong
  std::optional<WallTime> Since() const;  // when what is a problem now was first seen

 private:
  struct Place {
    PublicPlace wanted;
    MonotonicTime arrived{}, published{};
    std::optional<Duration> onAir;
    std::optional<MonotonicTime> wrongFrom;  // since then, without a time at which it was right
    WallTime wrongSince{};
    std::string wrong;  // what was seen last instead
    bool IsProblem(MonotonicTime now) const;
  };
  struct Looks;
  static void LookSoon(const std::shared_ptr<Looks>& looks);
  static void LookRound(const std::shared_ptr<Looks>& looks);
  static void Judge(Looks& looks, std::size_t place, MonotonicTime began, const std::string& wrong);

  std::shared_ptr<Looks> looks_;  // shared with the task that looks
};

}  // namespace zeb
