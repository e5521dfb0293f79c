// HttpReply: the answer that a request is owed. A handler is given one and answers at once, or keeps it (in a
// task, in a list) and answers later; only the first answer counts. When the last copy goes without one, the
// peer is told of a fault. The connection may be gone by then: nothing happens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "dashboard/HttpMessage.h"

namespace zeb {

class HttpConnection;

// Events to one reader, until it goes. It gets as much as it reads: one that has 1 MiB unread is dropped, not
// waited for, as is one that has read nothing for half a minute.
class EventStream {
 public:
  EventStream(std::weak_ptr<HttpConnection> connection, std::uint64_t request)
      : connection_(std::move(connection)), request_(request) {}
  // One event; line ends in `data` are taken care of. `id` comes back as Last-Event-ID.
  void Send(std::string_view event, std::string_view id, std::string_view data) const;
  bool Open() const;
  std::size_t Unread() const;  // bytes that wait for the reader
  void Close() const;

 private:
  std::weak_ptr<HttpConnection> connection_;
  std::uint64_t request_;
};

class HttpReply {
 public:
  HttpReply(std::weak_ptr<HttpConnection> connection, std::uint64_t request);
  void Send(const HttpAnswer& answer) const;
  // Answers with a stream of events. `still` is asked every 15 s whether the reader may go on; none: always.
  // Null when there are too many readers already, which the peer has been told then, or when it is gone.
  std::shared_ptr<EventStream> BeginEvents(std::function<bool()> still = nullptr) const;

 private:
  struct Owed;
  std::shared_ptr<Owed> owed_;
};

}  // namespace zeb
