// Epoch: "is what I waited for still mine?" Work that waits takes a mark before and asks it afterwards.
//
// A new epoch begins with Next (the output was stopped, the pairs were changed, the connection is another
// one) and with the end of the owner, so a mark may outlive it.
#pragma once

#include <cstdint>
#include <memory>

namespace zeb {

class Epoch {
 public:
  class Mark {
   public:
    bool Holds() const { return *number_ == mine_; }

   private:
    friend class Epoch;
    explicit Mark(std::shared_ptr<const std::uint64_t> number)
        : number_(std::move(number)), mine_(*number_) {}
    std::shared_ptr<const std::uint64_t> number_;
    std::uint64_t mine_;
  };

  Epoch() = default;
  ~Epoch() { Next(); }
  Epoch(const Epoch&) = delete;
  Epoch& operator=(const Epoch&) = delete;

  Mark Now() const { return Mark(number_); }
  void Next() { ++*number_; }

 private:
  std::shared_ptr<std::uint64_t> number_ = std::make_shared<std::uint64_t>(0);
};

}  // namespace zeb
