// DescriptorBudget: how many of the process's descriptors the sockets of a network may take. Private to
// QtNetwork.
//
// Without it, the first stations' listeners would take every descriptor, and the pages of none could be
// written. A part is kept for files, workers and whatever else opens something; half of that is lent to
// connections, so that a controller whose old connection is dead can come again. A listener counts for two
// from the start: who may listen can also be logged on to.
#pragma once

#include <cstddef>
#include <string>

namespace zeb {

class DescriptorBudget {
 public:
  // Of the limit that the process has now. 0: there is none.
  DescriptorBudget();
  explicit DescriptorBudget(std::size_t limit) : limit_(limit) {}

  // Whether one more may be opened, and `descriptor`, which has just been, may stay: descriptors are given
  // from the lowest on, so a high one says that others have taken theirs.
  bool AllowsListener(int descriptor) const { return Fits(2, descriptor, Reserve()); }
  bool AllowsConnection(int descriptor) const { return Fits(1, descriptor, Reserve() / 2); }
  // One that is about to be opened: a connection of ours to a server.
  bool AllowsClient() const { return AllowsConnection(0); }
  // Why not, and what to do.
  std::string Reason() const;

  void Take(std::size_t count) { taken_ += count; }
  void GiveBack(std::size_t count) { taken_ -= count; }
  std::size_t Reserve() const;

 private:
  bool Fits(std::size_t more, int descriptor, std::size_t kept) const {
    return limit_ == 0 ||
           (taken_ + more + kept <= limit_ && static_cast<std::size_t>(descriptor) + kept < limit_);
  }

  std::size_t limit_;
  std::size_t taken_ = 0;
};

}  // namespace zeb
