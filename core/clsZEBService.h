// clsZEBService: one broadcast service (one station): its items, presenter and show, its settings, its
// outputs by type, and the update cycle that pushes the items through the outputs.
//
// Owned by the service's window (app/frmService), which feeds it and decides when to update. It knows outputs
// only through clsZEBTemplate and makes them through the factory that it is given. Nothing here waits:
// updates and cues begin runs of the outputs, which go on by themselves.
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

#include "core/OutputName.h"
#include "core/OutputTypes.h"
#include "core/ServiceEvents.h"
#include "core/ServiceSnapshot.h"
#include "core/SettingFields.h"
#include "core/UpdateCycle.h"
#include "core/clsZEBItemInfo.h"
#include "core/clsZEBTemplate.h"
#include "platform/Environment.h"
#include "platform/Result.h"
#include "platform/Time.h"

namespace zeb {

// More outputs of a type than any station has; a damaged count must not make the program build millions.
inline constexpr std::int32_t kMaxOutputsOfType = 1000;
inline constexpr int kMaxNextItems = 50;  // and previous items
// Of the periodic updates, in seconds: a day; above it, it was never meant.
inline constexpr std::int32_t kLongestUpdateInterval = 24 * 3600;

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
  bool TravelFlagActive = false;  // the flag was on and has not been seen to end
};

// Where `after` differs from `before`, setting by setting, `to` becomes as `after`.
void TakeChanges(const ServiceSettings& before, const ServiceSettings& after, ServiceSettings& to);

// What can be set for a service, and for an output of any type.
SettingTable<ServiceSettings> ServiceSettingTable();
SettingList ServiceSettingList();
SettingList CommonOutputSettings();

// Makes an output of a type; null for a type that is not built. Settings of such types are kept as they are.
using OutputFactory = std::function<OutputPtr(OutputType)>;

class clsZEBService {
 public:
  clsZEBService(Environment& environment, OutputFactory makeOutput, ServiceEvents& events);
  ~clsZEBService();
  clsZEBService(const clsZEBService&) = delete;
  clsZEBService& operator=(const clsZEBService&) = delete;

  // What reading the settings again has changed. Outputs that are set as before go on running.
  struct Changes {
    struct Place {
      OutputType type;
      int index;
    };
    std::vector<Place> added;  // to be started
    bool any = false;
  };
  // Reads the settings again, all of them or (with the reason) none.
  Result<Changes> ReadAgain();

  // Setting the number loads the service's settings and outputs. They are not started.
  int ServiceNumber() const { return serviceNumber_; }
  void SetServiceNumber(int number);
  // True when the service is stored; when it could not be, nothing is changed and the operator has been told.
  bool StoreServiceInformation();
  // Stores the service under another number; its key under the old one is deleted, with what it held of types
  // that are not built carried along. As StoreServiceInformation; on failure it keeps its number.
  bool MoveToServiceNumber(int number);
  void ClearService();

  // For changes made by a person while the service runs (app/ServiceEditor.h): what is stored becomes
  // another, what runs does not, until ReadAgain. Inside a transaction; they throw SettingsError.
  void WriteStored();  // as StoreServiceInformation: the whole service as it runs
  void WriteStored(const ServiceSettings& wanted);
  void WriteStored(OutputType type, int index, clsZEBTemplate& wanted);
  void WriteStoredInterval(OutputType type, std::int32_t seconds);
  // An output that is none of the service's: with the settings stored at the place, or, above the count, new.
  // Null for a type that is not built.
  OutputPtr MakeDraft(OutputType type, int index) const;

  ServiceSettings settings;
  std::string PresenterReference, PresenterFullName, ShowReference, ShowTitle;

  // Items. Setting stores a Copy. Next and previous items have indexes 1 to ItemCount; outside that range
  // reading gives null and setting does nothing.
  int ItemCount() const { return itemCount_; }
  // Goes up whenever an item is set, or how many there are.
  std::uint64_t ItemsVersion() const { return itemsVersion_; }
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
  // Nothing for one that is not, or no longer, the service's.
  std::optional<OutputName> PlaceOf(const OutputPtr& output) const;
  int OutputCount(std::int32_t typeCode) const;
  int TotalNumberOutputs() const;
  std::int32_t OutputUpdateInterval(std::int32_t typeCode) const;  // seconds; 0: no periodic update
  void SetOutputUpdateInterval(std::int32_t typeCode, std::int32_t seconds);
  static constexpr int NumberOutputTypes() { return kNumberOutputTypes; }

  // Starts the output with the control through which it works. It takes part in updates once it is started.
  void StartOutput(OutputType type, int index, const std::shared_ptr<Control>& control) {
    if (Output(type, index)) cycle_.Start(type, index, control);
  }

  // The update cycle (core/UpdateCycle.h). A full update is for new information; else the types are updated
  // whose interval has passed. Types run side by side, begun in ascending order.
  void UpdateOutputs(bool full);
  void UpdateOutputType(std::int32_t typeCode);
  bool UpdateInProgress() const { return cycle_.UpdateInProgress(); }
  // Whether a periodic pass would update anything now; so an idle service needs no task.
  bool PeriodicUpdateDue() const;
  // Shows an output that has just been started what the others show; nothing when there was no update yet.
  void ShowPresentTo(OutputType type, int index);
  SnapshotPtr TakeSnapshot() const;  // of this moment
  // What the last update published; null before the first.
  const SnapshotPtr& LastSnapshot() const { return lastSnapshot_; }
  // When the information came that the next full update is for; without it, the update's own moment counts.
  void NoteInformationMoment(MonotonicTime moment) { informationMoment_ = moment; }
  // A run of the output is under way, or it is being started.
  bool OutputBusy(OutputType type, int index) const;
  // How many snapshots and cues wait for the output to be free, or for their time.
  int WaitingFor(OutputType type, int index) const;

  void CurrentItemNearEnd();
  void SetTravelFlagActivated();
  void SetTravelFlagCleared();
  bool TravelCueOwed() const { return cycle_.TravelCueOwed(); }  // it has not left on every output
  // The service is about to be cleared: what failed is not tried again, and cues go out undelayed.
  void BeginStopping() { cycle_.BeginStopping(); }
  void CancelOutputs() { cycle_.CancelAll(); }  // what is under way is given up

  // Presenter, show, service name, dates; "Unknown tag " and the name for anything else.
  std::string GetSpecialElementByName(std::string_view name) const;

  Environment& environment() const { return environment_; }

 private:
  static constexpr bool IsTypeCode(std::int32_t code) { return code >= 1 && code <= kNumberOutputTypes; }
  bool HasSlot(int index) const { return index >= 1 && index <= itemCount_; }
  void SendCue(OutputType type, Cue::Kind kind);
  void Publish(const std::vector<OutputType>& types, UpdateCause cause);
  // False when the work threw; reported then.
  static bool Guarded(std::string_view what, const std::function<void()>& work);
  struct Stored;
  // What cannot be read: it is reported and has its default, or all is a failure.
  enum class Unreadable { kDefault, kThrow };
  static void Try(Unreadable unreadable, const std::string& what, const std::function<void()>& work);
  Stored ReadStored(Unreadable unreadable) const;
  void TakeOver(OutputType type, std::vector<OutputPtr> stored, Changes& changes);
  int StoredOutputCount(const OutputTypeInfo& info, const std::string& typeKey) const;
  void ReadOutput(const OutputTypeInfo& info, int index, clsZEBTemplate& output) const;
  std::string StoredKey() const { return environment_.ServiceKey(serviceNumber_); }
  void WriteAll(const std::string& key);
  void WriteOutput(const std::string& typeKey, int index, clsZEBTemplate& output) const;

  Environment& environment_;
  OutputFactory makeOutput_;
  ServiceEvents& events_;
  int serviceNumber_ = 0;
  clsZEBItemInfo currentItem_, comingSoonItem_;
  std::array<clsZEBItemInfo, kMaxNextItems> nextItems_, previousItems_;
  int itemCount_ = 1;
  std::uint64_t itemsVersion_ = 0;
  UpdateCycle cycle_;
  SnapshotPtr lastSnapshot_;
  std::uint64_t information_ = 0;  // full updates so far
  MonotonicTime informationArrived_{};
  std::optional<MonotonicTime> informationMoment_;
};

}  // namespace zeb
