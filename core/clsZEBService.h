// clsZEBService: one broadcast service (one station): its items, presenter and show, its settings, its
// outputs by type, and the update cycle that pushes the items through the outputs.
//
// Owned by the service's window (app/frmService), which feeds it and decides when to update. It knows outputs
// only through clsZEBTemplate and makes them through the factory that it is given. UpdateOutputs,
// UpdateOutputType and the cue operations must be called inside a task, since outputs may wait; the service
// must stay alive until they return (the window sees to it).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/OutputTypes.h"
#include "core/clsZEBItemInfo.h"
#include "core/clsZEBTemplate.h"
#include "platform/Environment.h"
#include "platform/Time.h"

namespace zeb {

inline constexpr int kMaxNextItems = 50;  // and previous items

// What the owning window is told. All on the loop's thread; 3 to 6 come from inside an update's task.
class ServiceEvents {
 public:
  virtual ~ServiceEvents() = default;
  virtual void ServiceOpened() {}
  virtual void ServiceClosed() {}
  virtual void OutputUpdateStarting(int /*index*/, OutputType) {}
  virtual void OutputUpdateUpdating(int /*index*/, OutputType) {}
  virtual void OutputUpdateUpdated(int /*index*/, OutputType) {}
  virtual void OutputUpdateFinished(int /*index*/, OutputType) {}
  virtual void UpdateStarted() {}
  virtual void UpdateFinished() {}
};

// The service-level settings, named as in the store; defaults are those of a service never saved.
struct ServiceSettings {
  std::string ServiceName = "Unknown Service";
  std::string NoPictureFileName = "nopicture.jpg";
  std::string LoggingPath;
  std::string TravelFlagActivateString;
  std::int32_t TravelFlagDeactivateTimeout = 60;  // seconds
  bool InstantUpdate = false;
  std::int32_t UpdateDisplayInterval = 10;  // seconds
  bool UpdateOnTimingChange = false;
  bool ProcessPresenterUpdates = true;
  bool ProcessShowUpdates = true;
  std::int32_t NumberUpdatesOnServer = 25;
  std::int32_t LastUpdateOnServerIndex = 0;
  std::int32_t InfoSourceType = 0;
  std::int32_t TolvanTCPControlPort = 0;  // port 6900 + this; kept when the store has no value
  std::string InfoSourceFileName;
  std::int32_t CartItemNameLine = 1, CartArtist1Line = 2, CartArtist2Line = 3;
  bool UseBounce = false;
  std::string BounceServer;
  std::int32_t BouncePort = 1;
};

// Makes an output of a type; null for a type that is not built. Settings of such types are kept as they are.
using OutputFactory = std::function<std::shared_ptr<clsZEBTemplate>(OutputType)>;
using OutputPtr = std::shared_ptr<clsZEBTemplate>;

class clsZEBService {
 public:
  clsZEBService(Environment& environment, OutputFactory makeOutput, ServiceEvents& events);
  ~clsZEBService();
  clsZEBService(const clsZEBService&) = delete;
  clsZEBService& operator=(const clsZEBService&) = delete;

  // Setting the number loads the service's settings and outputs. They are not started.
  int ServiceNumber() const { return serviceNumber_; }
  void SetServiceNumber(int number);
  // True when the service is stored; when it could not be, nothing is changed and the operator has been told.
  bool StoreServiceInformation();
  // Stores the service under another number; its key under the old one is deleted, with what it held of types
  // that are not built carried along. As StoreServiceInformation; on failure it keeps its number.
  bool MoveToServiceNumber(int number);
  void ClearService();

  ServiceSettings settings;
  std::string PresenterReference, PresenterFullName, ShowReference, ShowTitle;

  // Items. Setting stores a Copy. Next and previous items have indexes 1 to ItemCount; outside that range
  // reading gives null and setting does nothing.
  int ItemCount() const { return itemCount_; }
  void SetItemCount(int count);  // held within 1..kMaxNextItems
  const clsZEBItemInfo& CurrentItem() const { return currentItem_; }
  void SetCurrentItem(const clsZEBItemInfo& item);  // moves the previous items down when one was playing
  const clsZEBItemInfo& ComingSoonItem() const { return comingSoonItem_; }
  void SetComingSoonItem(const clsZEBItemInfo& item);
  const clsZEBItemInfo* NextItem(int index) const;
  void SetNextItem(int index, const clsZEBItemInfo& item);
  const clsZEBItemInfo* PreviousItem(int index) const;
  void SetPreviousItem(int index, const clsZEBItemInfo& item);

  // Outputs, numbered from 1 within their type. Adding, removing and replacing neither starts nor stops one.
  int AddOutput(OutputType type, OutputPtr output);  // its index
  void RemoveOutput(OutputType type, int index);
  OutputPtr Output(OutputType type, int index) const;  // null above the count
  void SetOutput(OutputType type, int index, OutputPtr output);
  int OutputCount(std::int32_t typeCode) const;
  int TotalNumberOutputs() const;
  std::int32_t OutputUpdateInterval(std::int32_t typeCode) const;  // seconds; 0: no periodic update
  void SetOutputUpdateInterval(std::int32_t typeCode, std::int32_t seconds);
  static constexpr int NumberOutputTypes() { return kNumberOutputTypes; }

  // The update cycle (tasks only). A type whose outputs are busy with a cue is waited for, and the reverse,
  // so that no output is ever used twice at a time; other types go on. One that waits for five minutes, and a
  // cue for which 16 are waiting already, is dropped. An output that is removed meanwhile is not called
  // again.
  void UpdateOutputs(bool full);
  void UpdateOutputType(std::int32_t typeCode);
  bool UpdateInProgress() const { return updatesInProgress_ > 0; }
  // Whether a periodic pass would update anything now; so an idle service needs no task.
  bool PeriodicUpdateDue() const;

  void CurrentItemNearEnd();
  void SetTravelFlagActivated();
  void SetTravelFlagCleared();

  // Presenter, show, service name, dates; "Unknown tag " and the name for anything else.
  std::string GetSpecialElementByName(std::string_view name) const;

  Environment& environment() const { return environment_; }

 private:
  struct TypeState {
    std::vector<OutputPtr> outputs;
    std::int32_t interval = 0;
    std::optional<MonotonicTime> lastUpdate;
    bool busy = false;                   // an update or cue is running over these outputs
    std::vector<std::uint64_t> waiting;  // tickets of those that wait for it, in the order they came
  };

  class Turn;
  using OutputWork = std::function<void(clsZEBTemplate&)>;
  using OutputEvent = void (ServiceEvents::*)(int, OutputType);
  struct Phase {
    std::string_view verb;  // in log lines
    OutputWork work;
    OutputEvent before, after;  // null: not told
  };

  static constexpr bool IsTypeCode(std::int32_t code) { return code >= 1 && code <= kNumberOutputTypes; }
  bool HasSlot(int index) const { return index >= 1 && index <= itemCount_; }
  const TypeState* FindState(std::int32_t typeCode) const;  // null for a code outside the range
  TypeState* FindState(std::int32_t typeCode);

  TypeState& StateOf(OutputType type) { return types_[static_cast<std::size_t>(type)]; }
  const TypeState& StateOf(OutputType type) const { return types_[static_cast<std::size_t>(type)]; }
  bool TypeIsDue(const TypeState& state) const;
  void UpdateInTurn(OutputType type, TypeState& state);
  void SendCue(OutputType type, std::string_view logName, bool updateEvents, const OutputWork& send);
  // Prepare all, `update` all, finish all, with log lines that begin with `logName`. Events 4 and 5 are told
  // when asked for, 3 and 6 always.
  void RunThreePhases(OutputType type, std::string_view logName, const OutputWork& update, bool updateEvents);
  void RunPhase(OutputType type, std::string_view logName, const Phase& phase, const OutputPtr& output,
                std::size_t formerPlace);
  void Tell(OutputEvent event, int index, OutputType type) const;
  // Where the output stands now; 0 when it was removed.
  int IndexOf(OutputType type, const OutputPtr& output, std::size_t formerPlace) const;
  void ClearOutputs(OutputType type);
  // False when the work threw; reported then.
  bool Guarded(std::string_view what, const std::function<void()>& work) const;
  void NoteGivenUp(std::string_view what, OutputType type) const;
  void LoadSettings(const std::string& key);
  void LoadOutputs(const std::string& key);
  void WriteAll(const std::string& key);

  Environment& environment_;
  OutputFactory makeOutput_;
  ServiceEvents& events_;
  int serviceNumber_ = 0;
  clsZEBItemInfo currentItem_, comingSoonItem_;
  std::array<clsZEBItemInfo, kMaxNextItems> nextItems_, previousItems_;
  int itemCount_ = 1;
  std::array<TypeState, kNumberOutputTypes + 1> types_;
  int updatesInProgress_ = 0;
  std::uint64_t generation_ = 0;  // of the outputs; a new one begins when they are cleared
  std::uint64_t lastTicket_ = 0;
};

}  // namespace zeb
