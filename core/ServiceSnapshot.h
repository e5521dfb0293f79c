// ServiceSnapshot: what an update publishes: a service's items, presenter, show and special elements as they
// stood at one moment.
//
// Made by the service (clsZEBService::TakeSnapshot), never changed afterwards, and shared by pointer, so that
// outputs may expand templates against it on any thread and show it late or again. An item that did not
// change is the same record in the next snapshot.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/clsZEBItemInfo.h"
#include "platform/Time.h"

namespace zeb {

struct ServiceSnapshot {
  WallTime moment{};
  std::uint64_t information = 0;  // goes up with each update for new information, from 1
  MonotonicTime arrived{};        // when that information came
  int serviceNumber = 0;
  std::string ServiceName, NoPictureFileName, LoggingPath;
  std::string PresenterReference, PresenterFullName, ShowReference, ShowTitle;
  clsZEBItemInfo currentItem, comingSoonItem;
  std::vector<clsZEBItemInfo> nextItems, previousItems;  // from slot 1 on

  // Null for a slot that the service does not have; the first is 1.
  const clsZEBItemInfo* NextItem(int slot) const;
  const clsZEBItemInfo* PreviousItem(int slot) const;

  // Presenter, show, service name, dates; "Unknown tag " and the name for anything else.
  std::string GetSpecialElementByName(std::string_view name) const;
};

using SnapshotPtr = std::shared_ptr<const ServiceSnapshot>;

}  // namespace zeb
