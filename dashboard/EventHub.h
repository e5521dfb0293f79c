// EventHub: one source of server-sent events and its readers.
//
// A reader first gets the present state, also when it comes again with a Last-Event-ID: what it missed is in
// there. Then it gets what is published, as long as it reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "dashboard/HttpReply.h"

namespace zeb {

class EventHub {
 public:
  struct Event {
    std::string name, data;  // `data` is UTF-8, of any number of lines
  };
  using Present = std::function<std::vector<Event>()>;

  explicit EventHub(Present present) : present_(std::move(present)) {}

  // Answers with the stream; `still` as HttpReply::BeginEvents has it.
  void Add(const HttpReply& reply, std::function<bool()> still = nullptr);
  void Publish(std::string_view name, std::string_view data);
  void CloseAll();
  std::size_t ReaderCount();

 private:
  std::string NextId() { return std::to_string(++lastId_); }

  Present present_;
  std::vector<std::shared_ptr<EventStream>> readers_;
  std::uint64_t lastId_ = 0;
};

}  // namespace zeb
