// clsZEBDABOutput: sends the now-playing text as a dynamic label to a DAB multiplex's label server.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/SettingFields.h"
#include "core/clsZEBTemplate.h"
#include "outputs/wire/CandidateChooser.h"
#include "outputs/wire/WireLog.h"
#include "platform/DABClientControl.h"
#include "platform/Epoch.h"
#include "text/Encodings.h"

namespace zeb {

struct DABSettings : WireFormats {
  std::string ServerName;
  std::string ServerPort = "4000";
  std::string ServiceName, ServicePassword;
  std::int32_t PollSeconds = 20;  // kept for the settings; the type's update interval decides
  std::string DefaultText;
  std::string MaxNumberChars;  // "": as many as a label holds
  CharacterSet characterSet = CharacterSet::kUtf8;
};

SettingTable<DABSettings> DABSettingTable();

class clsZEBDABOutput : public clsZEBTemplate {
 public:
  explicit clsZEBDABOutput(Environment& environment)
      : clsZEBTemplate(environment), chooser_(environment, lane_), log_(environment) {}
  ~clsZEBDABOutput() override;

  bool StartOutput(std::shared_ptr<Control> control) override;
  bool StopOutput() override;
  bool PrepareOutput(const SnapshotPtr& snapshot) override;
  bool UpdateOutput(const SnapshotPtr& snapshot) override;
  bool FinishOutput(const SnapshotPtr& snapshot) override;
  void StoreOutputInformation(int serviceNumber, int outputIndex) override;
  void GetOutputInformation(int serviceNumber, int outputIndex) override;
  std::string SettingsText() const override;
  std::string GetShortTypeDescription() const override { return "DAB"; }
  std::string GetInformationString() const override;

  std::uint16_t PortNumber() const;  // 0: none
  void ConnectToDABServer();
  void LoginToDABServer();

  DABSettings settings;

 private:
  std::string Detail() const;  // of log names and the information string
  // Waits until the state has got so far; false when the control disappeared.
  bool WaitForState(std::int32_t state, Duration limit);
  void NoteNotLoggedOn();
  // The text with what is put behind it, as one line that a label holds.
  std::string LabelOf(const ServiceSnapshot& snapshot, std::string text) const;
  // True once the server has taken it.
  bool SendLabel(const ServiceSnapshot& snapshot, const std::string& label);
  void OnConnectionLost();
  void Fail(std::string problem);

  std::shared_ptr<DABClientControl> client_;
  CandidateChooser chooser_;
  WireLog log_;
  Epoch run_;  // from a start to the stop
};

}  // namespace zeb
