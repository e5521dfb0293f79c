#include "dashboard/StationEvents.h"

#include <boost/json/serialize.hpp>
#include <chrono>
#include <functional>
#include <string_view>
#include <utility>

#include "dashboard/StationJson.h"
#include "dashboard/StationList.h"

namespace zeb {

namespace {

using namespace std::chrono_literals;

constexpr Duration kTogether = 20ms;
constexpr Duration kAlive = 10s;
constexpr std::size_t kMostListBytes = 256 * 1024;
constexpr std::size_t kMostUnread = 256 * 1024;
constexpr Duration kReading = 60s;  // how long a reader may take none of what waits
constexpr std::size_t kMostNotes = 50;

}  // namespace

StationEvents::StationEvents(EventLoop& loop, Stations& stations, JournalTail& journal)
    : loop_(loop),
      stations_(stations),
      journal_(journal),
      hub_([this](const std::shared_ptr<EventStream>& reader) { Greet(reader); }) {
  stations_.onChanged = [this](int number) { Changed(number); };
  // What is noted while events are sent must not come in between.
  journal_.onLine = [this](const JournalTail::Line& line) {
    if (hub_.ReaderCount() == 0) return;
    loop_.Post([this, line, mark = epoch_.Now()] {
      if (mark.Holds()) hub_.Publish("note", boost::json::serialize(JsonOf(line, loop_.UtcOffset())));
    });
  };
  alive_ = loop_.Every(kAlive, [this] { hub_.Publish("alive", boost::json::serialize(TimeJson(loop_))); });
}

StationEvents::~StationEvents() {
  stations_.onChanged = nullptr;
  journal_.onLine = nullptr;
  hub_.CloseAll();
}

// `sent`: how many stations are in it, from the first on.
std::string StationEvents::ListText(int& sent) {
  std::string services;
  for (sent = 0; sent < stations_.Count() && services.size() < kMostListBytes; ++sent) {
    if (sent > 0) services += ',';
    services += boost::json::serialize(JsonOf(stations_.State(sent + 1), loop_.UtcOffset()));
  }
  std::string head = boost::json::serialize(ListHeadJson(loop_));
  head.pop_back();
  return head + ",\"services\":[" + services + "]}";
}

void StationEvents::Greet(const std::shared_ptr<EventStream>& reader) {
  int sent = 0;
  hub_.Send(*reader, "services", ListText(sent));
  std::size_t skipped = journal_.Lines().size() - std::min(journal_.Lines().size(), kMostNotes);
  for (const JournalTail::Line& line : journal_.Lines()) {
    if (skipped > 0 && skipped-- > 0) continue;
    hub_.Send(*reader, "note", boost::json::serialize(JsonOf(line, loop_.UtcOffset())));
  }
  if (sent == stations_.Count()) return;
  loop_.Start("events", [this, reader, sent, mark = epoch_.Now()] { SendRest(reader, sent + 1, mark); });
}

void StationEvents::SendRest(const std::shared_ptr<EventStream>& reader, int from, const Epoch::Mark& mark) {
  for (int number = from; mark.Holds() && reader->Open() && number <= stations_.Count(); ++number) {
    hub_.Send(*reader, "service", boost::json::serialize(JsonOf(stations_.State(number), loop_.UtcOffset())));
    loop_.Wait(Duration::zero());  // others have their turn
    if (reader->Unread() > kMostUnread &&
        !loop_.WaitUntil([&] { return !reader->Open() || reader->Unread() <= kMostUnread; }, kReading))
      return reader->Close();
  }
}

void StationEvents::Changed(int number) {
  if (hub_.ReaderCount() == 0) {
    told_.clear();
    return;
  }
  changed_.insert(number);
  if (telling_ || soon_.Running()) return;
  soon_ = loop_.After(kTogether, [this] {
    telling_ = true;
    loop_.Start("tell changes", [this, mark = epoch_.Now()] {
      while (mark.Holds() && !changed_.empty()) {
        TellChanges();
        loop_.Wait(kTogether);
      }
      if (mark.Holds()) telling_ = false;
    });
  });
}

void StationEvents::TellChanges() {
  const Epoch::Mark mark = epoch_.Now();
  for (const int number : std::exchange(changed_, {})) {
    if (number == 0) {
      told_.clear();
      int sent = 0;
      hub_.Publish("services", ListText(sent));
      for (int rest = sent + 1; rest <= stations_.Count(); ++rest) changed_.insert(rest);
    } else if (number <= stations_.Count()) {
      TellService(number);
    }
    loop_.Wait(Duration::zero());  // others have their turn
    if (!mark.Holds()) return;
  }
}

void StationEvents::TellService(int number) {
  const std::string text = boost::json::serialize(JsonOf(stations_.State(number), loop_.UtcOffset()));
  const std::size_t hash = std::hash<std::string>()(text);
  const auto [told, isNew] = told_.try_emplace(number, hash);
  if (!isNew && std::exchange(told->second, hash) == hash) return;
  hub_.Publish("service", text);
}

}  // namespace zeb
