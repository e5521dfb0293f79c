#include "dashboard/EventHub.h"

namespace zeb {

void EventHub::Add(const HttpReply& reply, std::function<bool()> still) {
  const auto reader = reply.BeginEvents(std::move(still));
  if (!reader) return;
  (void)ReaderCount();
  readers_.push_back(reader);
  greet_(reader);
}

void EventHub::Publish(std::string_view name, std::string_view data) {
  if (ReaderCount() == 0) return;
  const std::string id = NextId();
  for (const auto& reader : readers_) reader->Send(name, id, data);
}

void EventHub::Send(const EventStream& reader, std::string_view name, std::string_view data) {
  reader.Send(name, NextId(), data);
}

void EventHub::CloseAll() {
  for (const auto& reader : std::exchange(readers_, {})) reader->Close();
}

std::size_t EventHub::ReaderCount() {
  std::erase_if(readers_, [](const auto& reader) { return !reader->Open(); });
  return readers_.size();
}

}  // namespace zeb
