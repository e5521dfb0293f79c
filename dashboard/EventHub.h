// EventHub: one source of server-sent events and its readers.
//
// A reader is first given the present state, also when it comes again with a Last-Event-ID: what it missed is
// in there. Then it gets what is published, as long as it reads.
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
  // Sends the present state to a reader that has come; it is among the readers already.
  using Greet = std::function<void(const std::shared_ptr<EventStream>& reader)>;

  explicit EventHub(Greet greet) : greet_(std::move(greet)) {}

  // Answers with the stream; `still` as HttpReply::BeginEvents has it.
  void Add(const HttpReply& reply, std::function<bool()> still = nullptr);
  // `data` is UTF-8, of any number of lines.
  void Publish(std::string_view name, std::string_view data);
  void Send(const EventStream& reader, std::string_view name, std::string_view data);
  void CloseAll();
  std::size_t ReaderCount();

 private:
  std::string NextId() { return std::to_string(++lastId_); }

  Greet greet_;
  std::vector<std::shared_ptr<EventStream>> readers_;
  std::uint64_t lastId_ = 0;
};

}  // namespace zeb
