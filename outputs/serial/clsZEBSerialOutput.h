// clsZEBSerialOutput: sends one line an update out of a serial port, typically to an RDS encoder, and fixed
// strings when the travel flag goes on or off.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/SettingFields.h"
#include "core/clsZEBTemplate.h"
#include "outputs/wire/CandidateChooser.h"
#include "outputs/wire/WireLog.h"
#include "platform/Epoch.h"
#include "platform/Result.h"
#include "platform/SerialPortControl.h"
#include "text/Encodings.h"

namespace zeb {

struct SerialSettings : WireFormats {
  std::int32_t CommPort = 1;
  std::string Settings = "9600,n,8,1";
  std::int32_t Handshaking = 0;
  std::string TravelActivateFormat = "TA=1{0D}{0A}", TravelDeactivateFormat = "TA=0{0D}{0A}";
  std::int32_t MaxNumberChars = 0;  // 0: no limit
  bool UseSlowSend = false;
  CharacterSet characterSet = CharacterSet::kWindows1252;
};

SettingTable<SerialSettings> SerialSettingTable();

class clsZEBSerialOutput : public clsZEBTemplate, public StringOutput {
 public:
  explicit clsZEBSerialOutput(Environment& environment)
      : clsZEBTemplate(environment), chooser_(environment, lane_), log_(environment) {}
  ~clsZEBSerialOutput() override;

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;
  bool PrepareOutput(const SnapshotPtr& snapshot) override;
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  bool FinishOutput(const SnapshotPtr& snapshot) override;
  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::string SettingsText() const override;
  std::string GetShortTypeDescription() const override { return "Serial"; }
  std::string GetInformationString() const override { return "Port: " + std::to_string(settings.CommPort); }

  // A text that is sent slowly is given up after the present character.
  void Cancel() override { sending_.Next(); }

  // A cue's text, which is sent whole whatever waits. True once every byte has left.
  bool SendString(const ServiceSnapshot& snapshot, const std::string& text) override;
  bool SetTravelFlagActivated(const ServiceSnapshot& snapshot) override;
  bool SetTravelFlagCleared(const ServiceSnapshot& snapshot) override;

  SerialPortControl::Line Line() const;  // what it opens
  // It has the port, or is just opening it.
  bool HasPort() const { return port_ && (port_->PortOpen() || port_->Opening()); }

  SerialSettings settings;

 private:
  using PortPtr = std::shared_ptr<SerialPortControl>;
  Outcome OpenPort();
  Outcome TryToOpen(const PortPtr& port, const Epoch::Mark& mine);
  // What a text is; it decides what is reason enough to give its rest up when it is sent slowly.
  enum class Purpose { kUpdate, kNearEnd, kTravel };
  enum class Sent { kWhole, kGivenUp, kNot };
  Sent Send(const ServiceSnapshot& snapshot, const std::string& text, Purpose purpose);
  struct SlowSend;
  Outcome Transmit(const PortPtr& port, const std::string& text, SlowSend& slow);
  Outcome SendSlowly(const PortPtr& port, const std::string& bytes, const std::string& text, SlowSend& slow);
  bool IsOvertaken(SlowSend& slow) const;
  bool ShowsOther(const ServiceSnapshot& now, const ServiceSnapshot& newer) const;
  bool SendTravelFormat(const ServiceSnapshot& snapshot, const std::string& format);
  // Waits until everything has left; the reason says that the line takes nothing, or that the port was
  // closed.
  Outcome Drain(const PortPtr& port);
  void Fail(std::string problem);
  void OnComm(std::int32_t event, std::string_view data) const;
  void OnPortLost();

  PortPtr port_;
  // Of the port's number, when the settings were read; and that number.
  std::string device_;
  std::int32_t devicePort_ = 0;
  CandidateChooser chooser_;
  WireLog log_;
  Epoch run_;      // from a start to the stop
  Epoch sending_;  // until what is being sent is cancelled
};

}  // namespace zeb
