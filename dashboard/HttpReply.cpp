#include "dashboard/HttpReply.h"

#include <string>
#include <utility>

#include "dashboard/HttpConnection.h"
#include "text/Lines.h"

namespace zeb {

struct HttpReply::Owed {
  std::weak_ptr<HttpConnection> connection;
  std::uint64_t request;

  ~Owed() {
    // Does nothing when the request has been answered.
    if (const auto open = connection.lock())
      open->Answer(request, ErrorAnswer(500, "the request was given up"));
  }
};

HttpReply::HttpReply(std::weak_ptr<HttpConnection> connection, std::uint64_t request)
    : owed_(new Owed{std::move(connection), request}) {}

void HttpReply::Send(const HttpAnswer& answer) const {
  if (const auto open = owed_->connection.lock()) open->Answer(owed_->request, answer);
}

std::shared_ptr<EventStream> HttpReply::BeginEvents(std::function<bool()> still) const {
  const auto open = owed_->connection.lock();
  if (!open || !open->BeginEvents(owed_->request, std::move(still))) return nullptr;
  return std::make_shared<EventStream>(open, owed_->request);
}

void EventStream::Send(std::string_view event, std::string_view id, std::string_view data) const {
  const auto open = connection_.lock();
  if (!open) return;
  std::string text;
  const auto addLine = [&](std::string_view name, std::string_view value) {
    text.append(name).append(": ").append(value).append("\n");
  };
  if (!event.empty()) addLine("event", event);
  if (!id.empty()) addLine("id", id);
  ForEachLine(data, [&](std::string_view line) { addLine("data", line); });
  open->SendEvent(request_, text + "\n");
}

bool EventStream::Open() const {
  const auto open = connection_.lock();
  return open && open->Streams(request_);
}

std::size_t EventStream::Unread() const {
  const auto open = connection_.lock();
  return open ? open->UnsentBytes() : 0;
}

void EventStream::Close() const {
  if (const auto open = connection_.lock()) open->EndEvents(request_);
}

}  // namespace zeb
